// A toolkit form shown as a modal QDialog: its children made into views at their places,
// centred at a fixed size, with the form's caption. The dialog closes only once the form
// has unloaded, so the close box and Escape ask the form first.
#include "qt/form_dialog.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/twips.h>
#include "qt/accessibility.h"
#include "qt/create_view.h"
#include "qt/key_routes.h"

namespace velmora::qt {

FormDialog::FormDialog(toolkit::Form& form, QWidget* parent) : QDialog(parent), form_(form) {
  setObjectName(QString::fromStdString(form.name()));
  setWindowTitle(toQString(form.Caption()));
  setModal(true);
  Qt::WindowFlags flags =
      Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;
  if (form.maximizeButton) flags |= Qt::WindowMaximizeButtonHint;
  if (form.fixedSingleBorder) flags |= Qt::MSWindowsFixedSizeDialogHint;
  setWindowFlags(flags);
  const QRect client = toPixels(form.geometry());
  if (form.fixedSingleBorder) {
    setFixedSize(client.size());
  } else {
    resize(client.size());
  }
  setSizeGripEnabled(false);

  std::vector<std::pair<int, QWidget*>> tabOrder;
  for (toolkit::Control* child : form.children()) {
    QWidget* view = createView(*child, this);
    if (!view) continue;
    // Labels are drawn beneath the other controls, as windowless controls are.
    if (child->kind() == toolkit::Kind::Label) view->lower();
    tabOrder.emplace_back(child->tabIndex(), view);
  }
  firstFocus_ = applyTabOrder(tabOrder);
  nameForAssistiveTechnology(*this);

  subscription_ = form.subscribe([this](toolkit::Change change, int) {
    if (change == toolkit::Change::Visible && !form_.isLoaded()) done(QDialog::Accepted);
  });
}

void FormDialog::centreOnScreen() {
  const QScreen* screen =
      parentWidget() ? parentWidget()->screen() : QGuiApplication::primaryScreen();
  if (!screen) return;
  QRect frame = frameGeometry();
  frame.moveCenter(screen->availableGeometry().center());
  move(frame.topLeft());
}

void FormDialog::runModal() {
  if (!form_.isLoaded()) return;
  if (form_.centreOnScreen) centreOnScreen();
  // The lowest tab index takes the focus first, as on opening the form.
  if (firstFocus_) firstFocus_->setFocus(Qt::TabFocusReason);
  exec();
}

void FormDialog::closeEvent(QCloseEvent* event) {
  if (form_.isLoaded()) guarded(this, [this] { form_.requestClose(); });
  if (form_.isLoaded()) {
    event->ignore();
    return;
  }
  event->accept();
}

void FormDialog::reject() {
  if (form_.isLoaded()) guarded(this, [this] { form_.requestClose(); });
  if (!form_.isLoaded()) QDialog::reject();
}

}  // namespace velmora::qt
