// A failure that an event procedure lets out is shown with its number and message, and
// the control goes on working.
#include <QCheckBox>
#include <QMessageBox>

#include <velmora/qt/failure_display.h>
#include "control/module_slots.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

class FailureOnScreen : public ::testing::Test {
 protected:
  void SetUp() override {
    Variable::resetAll();
    putTaskCatalogue(account);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
  }
  void TearDown() override { Variable::resetAll(); }

  TempAccount account;
  Ctr_VelmoraNew ctl;
  qt::VelmoraWidget w{ctl};
};

TEST_F(FailureOnScreen, AQueryWithoutConnectionIsShownAndTheControlStaysUsable) {
  initClient(ctl, account);
  // The host empties everything, which gives the connection back, and the planner then
  // ticks the switch: the task query has no database to run on.
  ctl.Vider_liste();
  QString shown;
  QMessageBox::Icon icon = QMessageBox::NoIcon;
  whenModal([&](QWidget& modal) {
    auto* box = qobject_cast<QMessageBox*>(&modal);
    ASSERT_NE(box, nullptr);
    shown = box->text();
    icon = box->icon();
    click(box->button(QMessageBox::Ok));
  });
  click(w.view(ctl.Cac_TouteTache));
  EXPECT_EQ(icon, QMessageBox::Warning);
  EXPECT_TRUE(shown.startsWith(QStringLiteral("Erreur 91\n"))) << shown.toStdString();
  EXPECT_TRUE(shown.contains(QStringLiteral("object not set"))) << shown.toStdString();
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 0);

  // Given its connection again, the same control fills on the next tick.
  initClient(ctl, account);
  click(w.view(ctl.Cac_TouteTache));
  EXPECT_EQ(ctl.Cac_TouteTache.Value(), 1);
  EXPECT_TRUE(qobject_cast<QCheckBox*>(w.view(ctl.Cac_TouteTache))->isChecked());
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 4);
}

TEST(FailureText, CarriesTheNumberAndTheMessage) {
  EXPECT_EQ(qt::failureText(Failure(errors::kRecordNotFound, "record not found: 00001")),
            QStringLiteral("Erreur -2147221493\nrecord not found: 00001"));
}

TEST(FailurePresenter, GuardedGesturesHandTheFailureToThePresenter) {
  std::vector<long> numbers;
  qt::setFailurePresenter([&](QWidget*, const Failure& f) { numbers.push_back(f.number()); });
  qt::guarded(nullptr, [] { throw Failure(errors::kTypeMismatch, "type mismatch"); });
  qt::guarded(nullptr, [] {});
  qt::setFailurePresenter({});
  EXPECT_EQ(numbers, (std::vector<long>{errors::kTypeMismatch}));
}

}  // namespace
}  // namespace velmora::testing
