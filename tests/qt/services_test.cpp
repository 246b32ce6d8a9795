// The screen services on Qt: the question box answers with the host platform's codes,
// and the mouse pointer overrides the application's cursor until shape 0.
#include <QMessageBox>
#include <QPushButton>

#include <velmora/qt/qt_services.h>
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::QtServices;

struct Seen {
  QMessageBox::Icon icon = QMessageBox::NoIcon;
  QString title;
  QString text;
  std::vector<QMessageBox::StandardButton> buttons;
  QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
};

// Shows one box, presses the button named, and returns the code with what was seen.
std::pair<int, Seen> ask(QtServices& services, int style, QMessageBox::StandardButton press) {
  Seen seen;
  whenModal([&seen, press](QWidget& modal) {
    auto* box = qobject_cast<QMessageBox*>(&modal);
    ASSERT_NE(box, nullptr);
    seen.icon = box->icon();
    seen.title = box->windowTitle();
    seen.text = box->text();
    for (QAbstractButton* b : box->buttons()) seen.buttons.push_back(box->standardButton(b));
    std::sort(seen.buttons.begin(), seen.buttons.end());
    if (box->defaultButton()) seen.defaultButton = box->standardButton(box->defaultButton());
    if (press == QMessageBox::Escape) {
      QTest::keyClick(box, Qt::Key_Escape);
    } else {
      click(box->button(press));
    }
  });
  const int code = services.MsgBox(u"Etes-vous sûr de vouloir supprimer cet acte ?", style,
                                   u"Message TALVERANE");
  return {code, seen};
}

TEST(QtServicesQuestion, StyleThirtySixIsAQuestionWithYesAndNoYesFirst) {
  QtServices services;
  const auto [yes, seen] = ask(services, toolkit::kStyleYesNoQuestion, QMessageBox::Yes);
  EXPECT_EQ(yes, toolkit::kMsgBoxYes);
  EXPECT_EQ(seen.icon, QMessageBox::Question);
  EXPECT_EQ(seen.title, QStringLiteral("Message TALVERANE"));
  EXPECT_EQ(seen.text, QStringLiteral("Etes-vous sûr de vouloir supprimer cet acte ?"));
  EXPECT_EQ(seen.buttons,
            (std::vector<QMessageBox::StandardButton>{QMessageBox::Yes, QMessageBox::No}));
  EXPECT_EQ(seen.defaultButton, QMessageBox::Yes);

  EXPECT_EQ(ask(services, toolkit::kStyleYesNoQuestion, QMessageBox::No).first, toolkit::kMsgBoxNo);
  // Escape on Yes and No answers No, never Yes.
  EXPECT_EQ(ask(services, toolkit::kStyleYesNoQuestion, QMessageBox::Escape).first,
            toolkit::kMsgBoxNo);
}

TEST(QtServicesQuestion, OtherStylesGiveTheirButtonsIconsAndDefaults) {
  QtServices services;
  // 4 + 48 + 256: Yes and No, the warning icon, the second button by default.
  const auto [no, seen] = ask(services, 4 + 48 + 256, QMessageBox::No);
  EXPECT_EQ(no, toolkit::kMsgBoxNo);
  EXPECT_EQ(seen.icon, QMessageBox::Warning);
  EXPECT_EQ(seen.defaultButton, QMessageBox::No);
  // 3 + 16: Yes, No and Cancel with the critical icon; Cancel answers 2.
  const auto [cancel, seen3] = ask(services, 3 + 16, QMessageBox::Cancel);
  EXPECT_EQ(cancel, 2);
  EXPECT_EQ(seen3.icon, QMessageBox::Critical);
  EXPECT_EQ(seen3.buttons.size(), 3u);
  // 0 + 64: OK alone, the information icon; OK answers 1.
  const auto [ok, seen0] = ask(services, 64, QMessageBox::Ok);
  EXPECT_EQ(ok, 1);
  EXPECT_EQ(seen0.icon, QMessageBox::Information);
  EXPECT_EQ(seen0.buttons, (std::vector<QMessageBox::StandardButton>{QMessageBox::Ok}));
}

TEST(QtServicesPointer, ShapesOverrideTheCursorUntilShapeZero) {
  ASSERT_EQ(QGuiApplication::overrideCursor(), nullptr);
  {
    QtServices services;
    services.setMousePointer(11);
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    services.setMousePointer(13);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::BusyCursor);
    services.setMousePointer(0);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
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
