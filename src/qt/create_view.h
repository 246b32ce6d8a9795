// The one place that knows which view shows which kind of toolkit control.
#pragma once

#include <QWidget>

#include <velmora/toolkit/control.h>

namespace velmora::qt {

// The widget for any toolkit control, placed at its geometry inside parent, which owns
// it; nullptr for a form, which is shown as a dialog instead.
QWidget* createView(toolkit::Control& control, QWidget* parent);

}  // namespace velmora::qt
