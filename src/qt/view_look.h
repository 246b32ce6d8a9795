// What every view of a toolkit control shares: how it is made (Qt's parent owns it), the
// look it takes from its control (place, name, font, colours, focus) and how it follows
// the control's changes.
#pragma once

#include <functional>
#include <memory>

#include <QWidget>

#include <velmora/toolkit/control.h>

namespace velmora::qt {

// Qt's parent owns its children: this is the one place where the binding makes a
// widget, and the parent deletes it.
template <typename W, typename... Args>
W* makeChild(QWidget* parent, Args&&... args) {
  return new W(std::forward<Args>(args)..., parent);  // owned by parent
}

// The Qt alignment of a caption or a text along its line.
Qt::Alignment horizontal(toolkit::Alignment alignment);

// Place, name, font, colours, focus policy, enabled and visible: what every view takes
// from its control when it is made.
void applyLook(QWidget& widget, const toolkit::Control& control);

// Enabled and visible follow the control; the view handles the rest of the changes in
// rest. A view without more to handle is not called for the rest (a list's rows, one by
// one). The subscription lasts as long as the pointer returned.
std::shared_ptr<void> follow(QWidget& widget, toolkit::Control& control,
                             std::function<void(toolkit::Change, int)> rest = {});

}  // namespace velmora::qt
