// The keyboard alone: the focus is drawn, it is where the planner's next key goes, and
// each key is its button's gesture, doing nothing while the button is disabled.
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>

#include "qt_support.h"

namespace velmora::testing {
namespace {

class Focus : public WidgetTest {
 protected:
  void SetUp() override {
    WidgetTest::SetUp();
    ASSERT_TRUE(shown(true));
    initClient(c, account);
  }

  // A key to whatever has the focus, as the planner's keyboard sends it.
  static void press(Qt::Key key) {
    QWidget* focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QTest::keyClick(focus, key);
    QCoreApplication::processEvents();
  }
  static QWidget* focused() { return QApplication::focusWidget(); }
};

TEST_F(Focus, TheFocusedCheckBoxIsDrawnFromTheStart) {
  QWidget* box = w.view(c.Cac_TouteTache);
  box->setFocus(Qt::OtherFocusReason);
  const QImage focusedImage = box->grab().toImage();
  w.view(c.Lst_Possible)->setFocus(Qt::OtherFocusReason);
  EXPECT_NE(focusedImage, box->grab().toImage());
}

TEST_F(Focus, EachKeyIsItsButtonAndTheFocusGoesWhereTheNextKeyIsTyped) {
  auto& possible = listOf(c.Lst_Possible);
  auto& selection = listOf(c.Lst_Selectionne);
  auto* duration = viewOf<QLineEdit>(c.Txt_DureeSoin);
  w.view(c.Cac_TouteTache)->setFocus(Qt::TabFocusReason);
  press(Qt::Key_Space);  // all four tasks
  possible.setFocus(Qt::TabFocusReason);
  press(Qt::Key_Return);  // Sélectionner is disabled: nothing
  EXPECT_EQ(c.Lst_Selectionne.ListCount(), 0);
  press(Qt::Key_Space);
  press(Qt::Key_Down);
  press(Qt::Key_Down);
  press(Qt::Key_Space);
  press(Qt::Key_Return);  // Aspirateur and Repassage selected
  EXPECT_EQ(c.Lst_Selectionne.ListCount(), 2);
  EXPECT_EQ(focused(), &possible);

  selection.setFocus(Qt::TabFocusReason);
  press(Qt::Key_Delete);  // no current row, Supprimer is disabled: no question
  press(Qt::Key_Return);  // the caret is on Aspirateur: its edit
  EXPECT_EQ(focused(), duration);
  EXPECT_EQ(duration->selectedText(), QStringLiteral("20"));
  QTest::keyClicks(duration, QStringLiteral("25"));
  press(Qt::Key_Return);  // OK
  EXPECT_EQ(c.Lst_Selectionne.List(0).substr(80), u"   25");
  EXPECT_EQ(focused(), &selection);
  EXPECT_EQ(selection.caretRow(), 0);

  press(Qt::Key_Down);    // Repassage
  press(Qt::Key_Return);  // its edit, then Escape: Annuler
  press(Qt::Key_Escape);
  EXPECT_EQ(c.Cmd_OKVelmora.Enabled(), false);
  EXPECT_EQ(focused(), &selection);
  EXPECT_EQ(selection.caretRow(), 1);

  // The observations of Aspirateur, typed where the dialog puts the focus, give it back to the
  // selection.
  press(Qt::Key_Up);
  whenModal([&](QWidget& dialog) {
    QTest::keyClicks(dialog.focusWidget(), QStringLiteral("fragile"));
    click(dialog.findChild<QPushButton*>(QStringLiteral("Cmd_OkObs")));
  });
  QTest::keyClick(w.view(c.Cmd_Obs), Qt::Key_Space);
  EXPECT_TRUE(QTest::qWaitFor([&] { return focused() == &selection; }));

  // Aspirateur removed: Repassage takes its place under the caret.
  whenModal(
      [](QWidget& modal) { click(qobject_cast<QMessageBox*>(&modal)->button(QMessageBox::Yes)); });
  press(Qt::Key_Delete);
  ASSERT_EQ(c.Lst_Selectionne.ListCount(), 1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return focused() == &selection; }));
  EXPECT_EQ(selection.caretRow(), 0);
  EXPECT_EQ(c.Txt_Duree.getText(), u"0h45");
}

}  // namespace
}  // namespace velmora::testing
