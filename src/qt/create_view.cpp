// Makes the view of one toolkit control by its kind: a label, a frame, a button, a check
// box, a single- or multi-line text box, or a list. The surface and the dialogs call it
// for each of their children.
#include "qt/create_view.h"

#include "qt/basic_views.h"
#include "qt/list_box_view.h"
#include "qt/text_views.h"
#include "qt/view_look.h"

namespace velmora::qt {

using toolkit::Control;

QWidget* createView(Control& control, QWidget* parent) {
  switch (control.kind()) {
    case toolkit::Kind::Label:
      return makeChild<LabelView>(parent, static_cast<toolkit::Label&>(control));
    case toolkit::Kind::Frame:
      return makeChild<FrameView>(parent, static_cast<toolkit::Frame&>(control));
    case toolkit::Kind::CommandButton:
      return makeChild<ButtonView>(parent, static_cast<toolkit::CommandButton&>(control));
    case toolkit::Kind::CheckBox:
      return makeChild<CheckBoxView>(parent, static_cast<toolkit::CheckBox&>(control));
    case toolkit::Kind::TextBox: {
      auto& box = static_cast<toolkit::TextBox&>(control);
      if (box.multiLine) return makeChild<TextAreaView>(parent, box);
      return makeChild<TextLineView>(parent, box);
    }
    case toolkit::Kind::ListBox:
      return makeChild<ListBoxView>(parent, static_cast<toolkit::ListBox&>(control));
    case toolkit::Kind::Form:
      break;
  }
  return nullptr;
}

}  // namespace velmora::qt
