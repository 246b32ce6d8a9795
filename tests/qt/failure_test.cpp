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
  bool shown = false;
  whenModal([&](QWidget& modal) {
    auto* box = qobject_cast<QMessageBox*>(&modal);
    ASSERT_NE(box, nullptr);
    shown = true;
    // All in French: the title, the number, the message and the button.
    EXPECT_EQ(box->icon(), QMessageBox::Warning);
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Erreur"));
    EXPECT_EQ(box->text(),
              QStringLiteral("Erreur n° 91 :\nobjet non défini : la référence est vide"));
    EXPECT_EQ(box->button(QMessageBox::Ok)->text(), QStringLiteral("OK"));
    click(box->button(QMessageBox::Ok));
  });
  click(w.view(ctl.Cac_TouteTache));
  EXPECT_TRUE(shown);
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 0);

  // Given its connection again, the same control fills on the next tick.
  initClient(ctl, account);
  click(w.view(ctl.Cac_TouteTache));
  EXPECT_EQ(ctl.Cac_TouteTache.Value(), 1);
  EXPECT_TRUE(qobject_cast<QCheckBox*>(w.view(ctl.Cac_TouteTache))->isChecked());
  EXPECT_EQ(ctl.Lst_Possible.ListCount(), 4);
}

}  // namespace
}  // namespace velmora::testing
