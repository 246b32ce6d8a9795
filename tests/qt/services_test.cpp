// The screen services on Qt: the question box answers with the host platform's codes,
// however it is closed, and the mouse pointer overrides the application's cursor until
// shape 0.
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <functional>
#include <vector>

#include <velmora/qt/qt_services.h>
#include <velmora/toolkit/form.h>
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::QtServices;

TEST(QtServices, TheBoxShowsItsButtonsInFrenchAndAnswersHoweverItIsClosed) {
  using Close = std::function<void(QMessageBox&)>;
  const Close yes = [](QMessageBox& b) { click(b.button(QMessageBox::Yes)); };
  const Close no = [](QMessageBox& b) { click(b.button(QMessageBox::No)); };
  const Close ok = [](QMessageBox& b) { click(b.button(QMessageBox::Ok)); };
  const Close escape = [](QMessageBox& b) { QTest::keyClick(&b, Qt::Key_Escape); };
  const Close enter = [](QMessageBox& b) { QTest::keyClick(&b, Qt::Key_Return); };
  const Close reject = [](QMessageBox& b) { b.reject(); };
  struct Case {
    int style;
    Close close;
    int code;
    QMessageBox::Icon icon;
    QStringList captions;  // sorted, the default last; none when not looked at
  };
  const int yesNo = toolkit::kStyleYesNoQuestion;
  const auto question = QMessageBox::Question;
  const std::vector<Case> cases{
      {yesNo, yes, toolkit::kMsgBoxYes, question, {QStringLiteral("&Non"), QStringLiteral("&Oui")}},
      {yesNo, no, toolkit::kMsgBoxNo, question, {}},
      {yesNo, enter, toolkit::kMsgBoxYes, question, {}},
      // Escape, or a box closed without a button, answers No, never Yes.
      {yesNo, escape, toolkit::kMsgBoxNo, question, {}},
      {yesNo, reject, toolkit::kMsgBoxNo, question, {}},
      // A box of one button answers with it, however it is closed.
      {64, ok, 1, QMessageBox::Information, {QStringLiteral("OK")}},
      {16, escape, 1, QMessageBox::Critical, {}},
      {48, reject, 1, QMessageBox::Warning, {}},
  };
  QtServices services;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const Case& c = cases[i];
    SCOPED_TRACE(i);
    whenModal([&c](QWidget& modal) {
      auto* box = qobject_cast<QMessageBox*>(&modal);
      ASSERT_NE(box, nullptr);
      EXPECT_EQ(box->windowTitle(), QStringLiteral("Message TALVERANE"));
      EXPECT_EQ(box->text(), QStringLiteral("Etes-vous sûr ?"));
      EXPECT_EQ(box->icon(), c.icon);
      if (!c.captions.isEmpty()) {
        QStringList captions;
        for (QAbstractButton* b : box->buttons()) captions << b->text();
        captions.sort();
        EXPECT_EQ(captions, c.captions);
        ASSERT_NE(box->defaultButton(), nullptr);
        EXPECT_EQ(box->defaultButton()->text(), c.captions.back());
      }
      c.close(*box);
    });
    EXPECT_EQ(services.MsgBox(u"Etes-vous sûr ?", c.style, u"Message TALVERANE"), c.code);
  }
}

// Escape, like the close box, asks the form to close: a form that lets itself be closed
// is unloaded and its dialog goes.
TEST(QtServices, EscapeClosesTheDialogOfAFormThatLetsItselfBeClosed) {
  toolkit::Form form("Frm_Essai", 3000, 2000, u"Essai");
  form.Load();
  QtServices services;
  bool stillOpen = true;
  whenModal([&](QWidget& dialog) {
    QTest::keyClick(&dialog, Qt::Key_Escape);
    stillOpen = dialog.isVisible();
    if (stillOpen) {
      form.Unload();
      static_cast<QDialog&>(dialog).done(0);
    }
  });
  services.ShowModal(form);
  EXPECT_FALSE(stillOpen);
  EXPECT_FALSE(form.isLoaded());
}

TEST(QtServices, PointerShapesOverrideTheCursorUntilShapeZero) {
  ASSERT_EQ(QGuiApplication::overrideCursor(), nullptr);
  {
    QtServices services;
    services.setMousePointer(11);
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    services.setMousePointer(13);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::BusyCursor);
    services.setMousePointer(0);
    services.setMousePointer(0);  // twice gives nothing back twice
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
    services.setMousePointer(11);
  }
  // Services that go take their override with them.
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

}  // namespace
}  // namespace velmora::testing
