// The routes of the keyboard across views: a key of one view bound to a button, and the
// tab order of the views by the controls' tab indexes.
#pragma once

#include <utility>
#include <vector>

#include <QAbstractButton>
#include <QWidget>

namespace velmora::qt {

// A key pressed in view (without modifiers) is a press of button, when and only when the
// button is enabled; otherwise the key goes its usual way. Return also catches Enter.
void bindKeyToButton(QWidget& view, Qt::Key key, QAbstractButton& button);

// Applies the tab order of the tab indexes to the views given, lowest index first;
// returns the first view that takes the focus by tabbing, or nullptr.
QWidget* applyTabOrder(const std::vector<std::pair<int, QWidget*>>& viewsByTabIndex);

}  // namespace velmora::qt
