// The screen services on Qt: the question box answers with the host platform's codes,
// however it is closed, and the mouse pointer overrides the application's cursor until
// shape 0.
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <vector>

#include <velmora/qt/qt_services.h>
#include <velmora/toolkit/form.h>
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::QtServices;

TEST(QtServices, TheBoxShowsItsButtonsInFrenchAndAnswersHoweverItIsClosed) {
  enum class Close { Yes, No, Ok, Escape, Enter, Reject };
  struct Case {
    int style;
    Close close;
    int code;
    QMessageBox::Icon icon;
    QStringList captions;
  };
  const std::vector<Case> cases{
      {toolkit::kStyleYesNoQuestion,
       Close::Yes,
       toolkit::kMsgBoxYes,
       QMessageBox::Question,
       {QStringLiteral("&Non"), QStringLiteral("&Oui")}},
      {toolkit::kStyleYesNoQuestion, Close::No, toolkit::kMsgBoxNo, QMessageBox::Question, {}},
      {toolkit::kStyleYesNoQuestion, Close::Enter, toolkit::kMsgBoxYes, QMessageBox::Question, {}},
      // Escape, or a box closed without a button, answers No, never Yes.
      {toolkit::kStyleYesNoQuestion, Close::Escape, toolkit::kMsgBoxNo, QMessageBox::Question, {}},
      {toolkit::kStyleYesNoQuestion, Close::Reject, toolkit::kMsgBoxNo, QMessageBox::Question, {}},
      // A box of one button answers with it, however it is closed.
      {64, Close::Ok, 1, QMessageBox::Information, {QStringLiteral("OK")}},
      {64, Close::Escape, 1, QMessageBox::Information, {}},
      {64, Close::Reject, 1, QMessageBox::Information, {}},
  };
  QtServices services;
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.style) + " closed by " + std::to_string(int(c.close)));
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
      switch (c.close) {
        case Close::Yes:
          click(box->button(QMessageBox::Yes));
          break;
        case Close::No:
          click(box->button(QMessageBox::No));
          break;
        case Close::Ok:
          click(box->button(QMessageBox::Ok));
          break;
        case Close::Escape:
          QTest::keyClick(box, Qt::Key_Escape);
          break;
        case Close::Enter:
          QTest::keyClick(box, Qt::Key_Return);
          break;
        case Close::Reject:
          box->reject();
          break;
      }
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
    EXPECT_EQ(services.mousePointer(), 11);
  }
  // Services that go take their override with them.
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

}  // namespace
}  // namespace velmora::testing
