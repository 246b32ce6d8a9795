// The control's screen services on Qt: the question box with the host platform's style
// and answer codes and French captions, a form shown as a modal dialog, and the mouse
// pointer as the application's override cursor.
#include <velmora/qt/qt_services.h>

#include <array>
#include <utility>
#include <vector>

#include <QApplication>
#include <QCursor>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

#include <velmora/qt/twips.h>
#include "qt/form_dialog.h"

namespace velmora::qt {

namespace {

constexpr int kOk = 1;
constexpr int kCancel = 2;
constexpr int kAbort = 3;
constexpr int kRetry = 4;
constexpr int kIgnore = 5;

struct Answer {
  QMessageBox::StandardButton button;
  int code;
};

std::vector<Answer> buttonsOf(int style) {
  switch (style & 7) {
    case 1:
      return {{QMessageBox::Ok, kOk}, {QMessageBox::Cancel, kCancel}};
    case 2:
      return {{QMessageBox::Abort, kAbort},
              {QMessageBox::Retry, kRetry},
              {QMessageBox::Ignore, kIgnore}};
    case 3:
      return {{QMessageBox::Yes, toolkit::kMsgBoxYes},
              {QMessageBox::No, toolkit::kMsgBoxNo},
              {QMessageBox::Cancel, kCancel}};
    case 4:
      return {{QMessageBox::Yes, toolkit::kMsgBoxYes}, {QMessageBox::No, toolkit::kMsgBoxNo}};
    case 5:
      return {{QMessageBox::Retry, kRetry}, {QMessageBox::Cancel, kCancel}};
    default:
      return {{QMessageBox::Ok, kOk}};
  }
}

QMessageBox::Icon iconOf(int style) {
  switch (style & 0x70) {
    case 16:
      return QMessageBox::Critical;
    case 32:
      return QMessageBox::Question;
    case 48:
      return QMessageBox::Warning;
    case 64:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

// The captions of the host platform's French question boxes, whatever the locale and
// whatever translations Qt has.
QString frenchCaption(QMessageBox::StandardButton button) {
  switch (button) {
    case QMessageBox::Cancel:
      return QStringLiteral("Annuler");
    case QMessageBox::Abort:
      return QStringLiteral("&Abandonner");
    case QMessageBox::Retry:
      return QStringLiteral("&Recommencer");
    case QMessageBox::Ignore:
      return QStringLiteral("&Ignorer");
    case QMessageBox::Yes:
      return QStringLiteral("&Oui");
    case QMessageBox::No:
      return QStringLiteral("&Non");
    default:
      return QStringLiteral("OK");
  }
}

int defaultButtonOf(int style) {
  return (style & 0x300) >> 8;
}

Qt::CursorShape cursorOf(int shape) {
  static constexpr std::array<Qt::CursorShape, 16> kShapes{
      Qt::ArrowCursor,     Qt::ArrowCursor,   Qt::CrossCursor,     Qt::IBeamCursor,
      Qt::ArrowCursor,     Qt::SizeAllCursor, Qt::SizeBDiagCursor, Qt::SizeVerCursor,
      Qt::SizeFDiagCursor, Qt::SizeHorCursor, Qt::UpArrowCursor,   Qt::WaitCursor,
      Qt::ForbiddenCursor, Qt::BusyCursor,    Qt::WhatsThisCursor, Qt::SizeAllCursor};
  if (shape < 0 || shape >= static_cast<int>(kShapes.size())) return Qt::ArrowCursor;
  return kShapes[static_cast<size_t>(shape)];
}

}  // namespace

class QtServices::Private {
 public:
  explicit Private(QWidget* owner) : owner(owner) {}

  QWidget* dialogParent() const {
    if (owner) return owner->window();
    return QApplication::activeWindow();
  }
  void restorePointer() {
    if (!overriding) return;
    QGuiApplication::restoreOverrideCursor();
    overriding = false;
  }

  QPointer<QWidget> owner;
  bool overriding = false;  // the application's cursor is overridden by this
};

QtServices::QtServices(QWidget* owner) : d(std::make_unique<Private>(owner)) {}

QtServices::~QtServices() {
  d->restorePointer();
}

int QtServices::MsgBox(TextView prompt, int style, TextView title) {
  QMessageBox box(iconOf(style), toQString(title), toQString(prompt), QMessageBox::NoButton,
                  d->dialogParent());
  const std::vector<Answer> answers = buttonsOf(style);
  std::vector<std::pair<QAbstractButton*, int>> codes;
  codes.reserve(answers.size());
  for (const Answer& answer : answers) {
    QAbstractButton* button = box.addButton(answer.button);
    button->setText(frenchCaption(answer.button));
    codes.emplace_back(button, answer.code);
  }
  const auto chosenDefault = static_cast<size_t>(defaultButtonOf(style));
  if (chosenDefault < codes.size()) {
    box.setDefaultButton(static_cast<QPushButton*>(codes[chosenDefault].first));
  }
  box.exec();
  // Escape or the close box count as the button that Qt makes the escape button.
  const QAbstractButton* clicked = box.clickedButton();
  for (const auto& [button, code] : codes) {
    if (button == clicked) return code;
  }
  return codes.size() > 1 ? codes[1].second : codes.front().second;
}

void QtServices::ShowModal(toolkit::Form& form) {
  FormDialog dialog(form, d->dialogParent());
  dialog.runModal();
}

void QtServices::setMousePointer(int shape) {
  if (shape == 0) {
    d->restorePointer();
    return;
  }
  const QCursor cursor(cursorOf(shape));
  if (d->overriding) {
    QGuiApplication::changeOverrideCursor(cursor);
    return;
  }
  QGuiApplication::setOverrideCursor(cursor);
  d->overriding = true;
}

}  // namespace velmora::qt
