// The keyboard's routes between views: an event filter that makes a key of one view the
// press of a button, and the tab order set from the controls' tab indexes. The surface
// uses both to give the keyboard alone every gesture the mouse has.
#include "qt/key_routes.h"

#include <algorithm>

#include <QKeyEvent>
#include <QPointer>

#include "qt/view_look.h"

namespace velmora::qt {

namespace {

class KeyToButton : public QObject {
 public:
  KeyToButton(Qt::Key key, QAbstractButton& button, QObject* parent)
      : QObject(parent), key_(key), button_(&button) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::KeyPress || !button_ || !button_->isEnabled()) {
      return QObject::eventFilter(watched, event);
    }
    const auto* keyEvent = static_cast<QKeyEvent*>(event);
    const bool enter = key_ == Qt::Key_Return && keyEvent->key() == Qt::Key_Enter;
    if ((keyEvent->key() != key_ && !enter) ||
        (keyEvent->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
      return QObject::eventFilter(watched, event);
    }
    button_->click();
    return true;
  }

 private:
  Qt::Key key_;
  QPointer<QAbstractButton> button_;
};

}  // namespace

void bindKeyToButton(QWidget& view, Qt::Key key, QAbstractButton& button) {
  view.installEventFilter(makeChild<KeyToButton>(&view, key, button));
}

QWidget* applyTabOrder(const std::vector<std::pair<int, QWidget*>>& viewsByTabIndex) {
  auto ordered = viewsByTabIndex;
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  QWidget* first = nullptr;
  QWidget* previous = nullptr;
  for (const auto& [tab, widget] : ordered) {
    if (widget->focusPolicy() == Qt::NoFocus) continue;
    if (previous) QWidget::setTabOrder(previous, widget);
    if (!first && (widget->focusPolicy() & Qt::TabFocus)) first = widget;
    previous = widget;
  }
  return first;
}

}  // namespace velmora::qt
