// The look that every view takes from its toolkit control, and the subscription by which
// it follows the control's enabled and visible states. Kept apart from the views so that
// each view's file holds only what is particular to its kind.
#include "qt/view_look.h"

#include <velmora/qt/twips.h>

namespace velmora::qt {

using toolkit::Alignment;
using toolkit::Change;
using toolkit::Control;

namespace {

void setRoleColour(QPalette& palette, std::initializer_list<QPalette::ColorRole> roles,
                   const QColor& colour) {
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    for (const auto role : roles) palette.setColor(group, role, colour);
  }
}

}  // namespace

Qt::Alignment horizontal(Alignment alignment) {
  switch (alignment) {
    case Alignment::Right:
      return Qt::AlignRight;
    case Alignment::Center:
      return Qt::AlignHCenter;
    case Alignment::Left:
      break;
  }
  return Qt::AlignLeft;
}

void applyLook(QWidget& widget, const Control& control) {
  widget.setObjectName(QString::fromStdString(control.name()));
  widget.setGeometry(toPixels(control.geometry()));
  if (control.font) widget.setFont(toQFont(*control.font));
  QPalette palette = widget.palette();
  if (control.foreground) {
    setRoleColour(palette, {QPalette::WindowText, QPalette::Text, QPalette::ButtonText},
                  toQColor(*control.foreground));
  }
  if (control.background) {
    setRoleColour(palette, {QPalette::Window, QPalette::Base, QPalette::Button},
                  toQColor(*control.background));
    widget.setAutoFillBackground(true);
  }
  widget.setPalette(palette);
  if (!control.tabStop) widget.setFocusPolicy(Qt::ClickFocus);
  widget.setEnabled(control.Enabled());
  widget.setVisible(control.Visible());
}

std::shared_ptr<void> follow(QWidget& widget, Control& control,
                             std::function<void(Change, int)> rest) {
  const toolkit::ChangeMask heard =
      rest ? toolkit::kEveryChange
           : toolkit::maskOf(Change::Enabled) | toolkit::maskOf(Change::Visible);
  return control.subscribe(
      [&widget, &control, rest = std::move(rest)](Change change, int row) {
        if (change == Change::Enabled) {
          widget.setEnabled(control.Enabled());
        } else if (change == Change::Visible) {
          widget.setVisible(control.Visible());
        } else if (rest) {
          rest(change, row);
        }
      },
      heard);
}

}  // namespace velmora::qt
