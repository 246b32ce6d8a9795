// The observations dialog on screen: its look, and closing only by its two buttons.
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <vector>

#include "control/module_slots.h"
#include "qt/control_views.h"
#include "qt_support.h"

namespace velmora::testing {
namespace {

class ObservationsDialog : public ::testing::Test {
 protected:
  void SetUp() override {
    Variable::resetAll();
    putTaskCatalogue(account);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    initClient(ctl, account);
    ctl.Cac_TouteTache.toggle();
    // Repassage, the third proposal, is the only row of the selection.
    ctl.Lst_Possible.click(2);
    ctl.Cmd_Select.press();
    ASSERT_EQ(ctl.Lst_Selectionne.ListCount(), 1);
    clickRow(*w.listView(ctl.Lst_Selectionne), 0);
    ASSERT_EQ(ctl.Lst_Selectionne.ListIndex(), 0);
  }
  void TearDown() override { Variable::resetAll(); }

  TempAccount account;
  Ctr_VelmoraNew ctl;
  qt::VelmoraWidget w{ctl};
};

TEST_F(ObservationsDialog, LooksAsDesignedAndClosesOnlyByItsButtons) {
  const Text before = ctl.Lst_Selectionne.List(0);
  bool ran = false;
  whenModal([&](QWidget& dialog) {
    ran = true;
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Observations sur la tâche"));
    EXPECT_EQ(dialog.size(), QSize(401, 281));
    EXPECT_EQ(dialog.minimumSize(), dialog.maximumSize());
    EXPECT_FALSE(dialog.windowFlags() & Qt::WindowMaximizeButtonHint);
    EXPECT_TRUE(dialog.windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_TRUE(dialog.isModal());
    const QRect screen = dialog.screen()->availableGeometry();
    const QPoint offCentre = dialog.frameGeometry().center() - screen.center();
    EXPECT_LE(std::abs(offCentre.x()), 2) << offCentre.x();
    EXPECT_LE(std::abs(offCentre.y()), 2) << offCentre.y();

    struct Case {
      const char* name;
      QRect rect;  // none for the labels, which size themselves to their caption
      const char* caption;
    };
    const std::vector<Case> children{{"Cmd_OkObs", {288, 248, 49, 25}, "Ok"},
                                     {"Cmd_AnnulerObs", {344, 248, 49, 25}, "Annuler"},
                                     {"Txt_Obs", {8, 112, 385, 129}, ""},
                                     {"Txt_Groupe", {72, 40, 321, 19}, "Linge                    "},
                                     {"Txt_Tache", {72, 64, 321, 19}, "Repassage                "},
                                     {"Txt_Type", {72, 16, 321, 19}, "Ménage                   "},
                                     {"Label4", {}, "Observations"},
                                     {"Label3", {}, "Groupe"},
                                     {"Label2", {}, "Tâche"},
                                     {"Label1", {}, "Type"}};
    for (const auto& child : children) {
      auto* view = dialog.findChild<QWidget*>(QString::fromLatin1(child.name));
      ASSERT_NE(view, nullptr) << child.name;
      EXPECT_EQ(view->geometry(),
                child.rect.isNull() ? QRect(view->pos(), view->sizeHint()) : child.rect)
          << child.name;
      QString caption;
      if (auto* label = qobject_cast<QLabel*>(view)) caption = label->text();
      if (auto* button = qobject_cast<QPushButton*>(view)) caption = button->text();
      if (auto* line = qobject_cast<QLineEdit*>(view)) {
        caption = line->text();
        EXPECT_TRUE(line->isReadOnly()) << child.name;
      }
      EXPECT_EQ(caption, QString::fromUtf8(child.caption)) << child.name;
    }
    auto* obs = dialog.findChild<QPlainTextEdit*>(QStringLiteral("Txt_Obs"));
    ASSERT_NE(obs, nullptr);
    EXPECT_FALSE(obs->isReadOnly());
    EXPECT_EQ(dialog.focusWidget(), obs);

    // Two lines typed, then the close box and Escape: the form refuses both.
    QTest::keyClicks(obs, QStringLiteral("Fragile"));
    QTest::keyClick(obs, Qt::Key_Return);
    QTest::keyClicks(obs, QStringLiteral("Repasser doux"));
    EXPECT_FALSE(dialog.close());
    EXPECT_TRUE(dialog.isVisible());
    QTest::keyClick(&dialog, Qt::Key_Escape);
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(QApplication::activeModalWidget(), &dialog);
    click(dialog.findChild<QPushButton*>(QStringLiteral("Cmd_OkObs")));
  });
  click(w.view(ctl.Cmd_Obs));
  EXPECT_TRUE(ran);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  // Lines end as the host platform writes them.
  EXPECT_EQ(toUtf8(Variable::R_Obs->r(1)), "Fragile\r\nRepasser doux");
  EXPECT_EQ(ctl.Lst_Selectionne.List(0), before.substr(0, 78) + u"X " + before.substr(80));

  // Opened again, the dialog shows both lines; Annuler leaves everything as it was.
  whenModal([&](QWidget& dialog) {
    auto* obs = dialog.findChild<QPlainTextEdit*>(QStringLiteral("Txt_Obs"));
    EXPECT_EQ(obs->toPlainText(), QStringLiteral("Fragile\nRepasser doux"));
    obs->selectAll();
    QTest::keyClick(obs, Qt::Key_Delete);
    EXPECT_EQ(obs->toPlainText(), QString());
    click(dialog.findChild<QPushButton*>(QStringLiteral("Cmd_AnnulerObs")));
  });
  click(w.view(ctl.Cmd_Obs));
  EXPECT_EQ(toUtf8(Variable::R_Obs->r(1)), "Fragile\r\nRepasser doux");
  EXPECT_EQ(ctl.Lst_Selectionne.List(0).substr(78, 1), u"X");
}

}  // namespace
}  // namespace velmora::testing
