// The widget as a host sees it: created with a parent only, read through its
// properties, followed through its signals, and failures handed to a listening host
// instead of a message box.
#include <QMessageBox>
#include <QSignalSpy>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/qt_services.h>
#include "control/module_slots.h"
#include "qt/velmora_widget_private.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

class HostWidget : public ::testing::Test {
 protected:
  void SetUp() override { Variable::resetAll(); }
  void TearDown() override { Variable::resetAll(); }

  TempAccount account;
};

// A failure an event procedure lets out (the switch's query with no connection) is shown
// in French, or handed to a listening host with no box; the control goes on working.
TEST_F(HostWidget, FailuresAreShownOrHandedToAListeningHostAndTheControlGoesOn) {
  putTaskCatalogue(account);
  qt::VelmoraWidget w;
  Ctr_VelmoraNew& c = w.control();
  w.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
  initClient(c, account);
  c.Vider_liste();
  int boxes = 0;
  whenModal([&](QWidget& modal) {
    auto* box = qobject_cast<QMessageBox*>(&modal);
    ASSERT_NE(box, nullptr);
    ++boxes;
    EXPECT_EQ(box->icon(), QMessageBox::Warning);
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Erreur"));
    EXPECT_EQ(box->text(),
              QStringLiteral("Erreur n° 91 :\nobjet non défini : la référence est vide"));
    click(box->button(QMessageBox::Ok));
  });
  click(w.view(c.Cac_TouteTache));
  EXPECT_EQ(boxes, 1);
  EXPECT_EQ(c.Lst_Possible.ListCount(), 0);

  QSignalSpy failures(&w, &qt::VelmoraWidget::failed);
  initClient(c, account);
  c.Vider_liste();
  click(w.view(c.Cac_TouteTache));
  qt::guarded(w.view(c.Lst_Possible),
              [] { throw Failure(errors::kTypeMismatch, "type mismatch"); });
  ASSERT_EQ(failures.count(), 2);
  EXPECT_EQ(failures.at(0).at(0).toInt(), errors::kObjectNotSet);
  EXPECT_TRUE(failures.at(0).at(1).toString().contains(QStringLiteral("objet non défini")));
  EXPECT_EQ(failures.at(1).at(0).toInt(), errors::kTypeMismatch);
  EXPECT_EQ(boxes, 1);

  // Given its connection again, the same control fills on the next tick.
  initClient(c, account);
  click(w.view(c.Cac_TouteTache));
  EXPECT_EQ(c.Lst_Possible.ListCount(), 4);
}

TEST_F(HostWidget, ShowsTheHostsControlGivenLater) {
  putTaskCatalogue(account);
  Ctr_VelmoraNew hosts;  // outlives the widget that shows it
  qt::VelmoraWidget w;
  const auto held = std::make_shared<qt::QtServices>();  // by the control the widget made
  w.control().setServices(held);
  const auto views = w.findChildren<QWidget*>().size();
  w.setControl(hosts);
  EXPECT_EQ(&w.control(), &hosts);
  EXPECT_EQ(held.use_count(), 1);  // that control is gone, and what it held let go
  ASSERT_NE(qt::listViewOf(w, hosts.Lst_Possible), nullptr);
  EXPECT_EQ(w.findChildren<QWidget*>().size(), views);  // the old control's views are gone

  initClient(hosts, account);
  hosts.Cac_TouteTache.toggle();
  w.refreshLists();
  EXPECT_EQ(qt::listViewOf(w, hosts.Lst_Possible)->listModel().rowCount(), 4);
}

}  // namespace
}  // namespace velmora::testing
