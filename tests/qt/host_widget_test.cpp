// The widget as a host sees it: created with a parent only, read through its
// properties, followed through its signals, and failures handed to a listening host
// instead of a message box.
#include <QSignalSpy>

#include <velmora/qt/failure_display.h>
#include "qt_support.h"

namespace velmora::testing {
namespace {

class HostWidget : public ::testing::Test {
 protected:
  void SetUp() override { Variable::resetAll(); }
  void TearDown() override {
    qt::setFailurePresenter({});
    Variable::resetAll();
  }

  // The row of the catalogue whose code is code.
  static int rowOf(const Ctr_VelmoraNew& c, std::u16string_view code) {
    for (int i = 0; i < c.Lst_CodePos.ListCount(); ++i) {
      if (c.Lst_CodePos.List(i) == code) return i;
    }
    ADD_FAILURE() << "no row for " << toUtf8(code);
    return -1;
  }

  TempAccount account;
};

TEST_F(HostWidget, OwnsItsControlAndSignalsTotalSelectionAndMandatoryOncePerGesture) {
  putTaskCatalogue(account);
  qt::VelmoraWidget w;  // as Designer or a .ui form creates it
  Ctr_VelmoraNew& c = w.control();
  QSignalSpy totals(&w, &qt::VelmoraWidget::totalChanged);
  QSignalSpy selections(&w, &qt::VelmoraWidget::selectionChanged);
  QSignalSpy mandatory(&w, &qt::VelmoraWidget::mandatoryChanged);
  EXPECT_EQ(w.property("kind").toString(), QString());

  initClient(c, account);
  c.Cac_TouteTache.toggle();  // the whole catalogue
  QCoreApplication::processEvents();
  EXPECT_EQ(w.property("kind").toString(), QStringLiteral("AUTRE"));
  EXPECT_EQ(totals.count(), 0);  // still 0 minutes
  EXPECT_FALSE(w.property("mandatory").toBool());
  const qsizetype selectionsAfterInit = selections.count();

  // Repassage (45, mandatory) and Vaisselle (15) in one press.
  c.Lst_Possible.click(rowOf(c, u"Repassage"));
  c.Lst_Possible.click(rowOf(c, u"Vaisselle"));
  c.Cmd_Select.press();
  QCoreApplication::processEvents();
  ASSERT_EQ(totals.count(), 1);
  EXPECT_EQ(totals.at(0).at(0).toDouble(), 60.0);
  EXPECT_EQ(w.property("total").toDouble(), 60.0);
  EXPECT_EQ(selections.count(), selectionsAfterInit + 1);
  ASSERT_EQ(mandatory.count(), 1);
  EXPECT_TRUE(mandatory.at(0).at(0).toBool());
  EXPECT_TRUE(w.property("mandatory").toBool());

  c.Vider_Tache();
  QCoreApplication::processEvents();
  EXPECT_EQ(selections.count(), selectionsAfterInit + 2);
  EXPECT_FALSE(w.property("mandatory").toBool());
}

TEST_F(HostWidget, AListeningHostGetsFailuresAndNoBoxOpens) {
  putTaskCatalogue(account);
  qt::VelmoraWidget w;
  std::vector<long> boxes;
  qt::setFailurePresenter([&](QWidget*, const Failure& f) { boxes.push_back(f.number()); });
  initClient(w.control(), account);
  w.control().Vider_liste();

  const auto failingGesture = [] { throw Failure(errors::kTypeMismatch, "type mismatch"); };

  // Nobody listens: the failure is shown.
  qt::guarded(w.view(w.control().Lst_Possible), failingGesture);
  EXPECT_EQ(boxes, (std::vector<long>{errors::kTypeMismatch}));

  // The host listens: it gets the failure of an event procedure (the query of the
  // show-all switch without a connection) and that of a gesture, and nothing is shown.
  QSignalSpy failures(&w, &qt::VelmoraWidget::failed);
  click(w.view(w.control().Cac_TouteTache));
  qt::guarded(w.view(w.control().Lst_Possible), failingGesture);
  ASSERT_EQ(failures.count(), 2);
  EXPECT_EQ(failures.at(0).at(0).toInt(), errors::kObjectNotSet);
  EXPECT_TRUE(failures.at(0).at(1).toString().contains(QStringLiteral("object not set")));
  EXPECT_EQ(failures.at(1).at(0).toInt(), errors::kTypeMismatch);
  EXPECT_EQ(boxes.size(), 1U);
}

TEST_F(HostWidget, ShowsTheHostsControlGivenLater) {
  putTaskCatalogue(account);
  Ctr_VelmoraNew hosts;  // outlives the widget that shows it
  qt::VelmoraWidget w;
  w.setControl(hosts);
  EXPECT_EQ(&w.control(), &hosts);
  ASSERT_NE(w.listView(hosts.Lst_Possible), nullptr);
  EXPECT_EQ(w.findChildren<qt::ListBoxView*>().size(), 4);  // the old control's are gone

  initClient(hosts, account);
  hosts.Cac_TouteTache.toggle();
  w.refreshLists();
  EXPECT_EQ(w.listView(hosts.Lst_Possible)->listModel().rowCount(), 4);
}

}  // namespace
}  // namespace velmora::testing
