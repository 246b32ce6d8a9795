// The screen services on Qt: the question box answers with the host platform's codes,
// however it is closed, and the mouse pointer overrides the application's cursor until
// shape 0.
#include <QMessageBox>
#include <QPushButton>
#include <functional>
#include <memory>
#include <tuple>
#include <vector>

#include <velmora/qt/qt_services.h>
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::QtServices;

TEST(QtServices, TheBoxShowsItsButtonsInFrenchAndAnswersHoweverItIsClosed) {
  using Close = std::function<void(QMessageBox&)>;
  // The question's two buttons in French, Oui the default.
  const Close yes = [](QMessageBox& b) {
    EXPECT_EQ(b.buttons().size(), 2);
    EXPECT_EQ(b.button(QMessageBox::No)->text(), QStringLiteral("&Non"));
    EXPECT_EQ(b.defaultButton(), b.button(QMessageBox::Yes));
    EXPECT_EQ(b.defaultButton()->text(), QStringLiteral("&Oui"));
    click(b.button(QMessageBox::Yes));
  };
  const Close no = [](QMessageBox& b) { click(b.button(QMessageBox::No)); };
  const Close ok = [](QMessageBox& b) {
    EXPECT_EQ(b.buttons().size(), 1);
    click(b.button(QMessageBox::Ok));
  };
  const Close escape = [](QMessageBox& b) { QTest::keyClick(&b, Qt::Key_Escape); };
  const Close reject = [](QMessageBox& b) { b.reject(); };
  const int yesNo = toolkit::kStyleYesNoQuestion;
  const std::vector<std::tuple<int, Close, int, QMessageBox::Icon>> cases{
      {yesNo, yes, toolkit::kMsgBoxYes, QMessageBox::Question},
      {yesNo, no, toolkit::kMsgBoxNo, QMessageBox::Question},
      // Escape, or a box closed without a button, answers No, never Yes.
      {yesNo, escape, toolkit::kMsgBoxNo, QMessageBox::Question},
      {yesNo, reject, toolkit::kMsgBoxNo, QMessageBox::Question},
      // A box of one button answers with it, however it is closed.
      {64, ok, 1, QMessageBox::Information},
      {16, escape, 1, QMessageBox::Critical},
      {48, reject, 1, QMessageBox::Warning},
  };
  QtServices services;
  for (const auto& [style, close, code, icon] : cases) {
    SCOPED_TRACE(style);
    whenModal([&how = close, want = icon](QWidget& modal) {
      auto* box = qobject_cast<QMessageBox*>(&modal);
      ASSERT_NE(box, nullptr);
      EXPECT_EQ(box->windowTitle(), QStringLiteral("Message TALVERANE"));
      EXPECT_EQ(box->text(), QStringLiteral("Etes-vous sûr ?"));
      EXPECT_EQ(box->icon(), want);
      how(*box);
    });
    EXPECT_EQ(services.MsgBox(u"Etes-vous sûr ?", style, u"Message TALVERANE"), code);
  }
}

TEST(QtServices, APointerShapeOverridesTheCursorUntilShapeZeroOrTheServicesGo) {
  auto services = std::make_unique<QtServices>();
  services->setMousePointer(11);
  ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
  EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
  services->setMousePointer(0);
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
  services->setMousePointer(11);
  services.reset();
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

}  // namespace
}  // namespace velmora::testing
