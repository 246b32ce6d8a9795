// The screen services of the control on Qt: the question box, the modal show of a
// form, and the mouse pointer of the screen.
#pragma once

#include <velmora/export.h>

#include <memory>

#include <QWidget>

#include <velmora/toolkit/services.h>

namespace velmora::qt {

// What the control asks of the screen, answered with real Qt boxes and dialogs: the
// control calls these from its event procedures and waits for the planner's answer.
//
// Thread: the GUI thread only; each box and dialog runs a nested event loop.
//
// Ownership: the control that is given the services holds them (a shared pointer), and
// may outlive the widget that made them. The owner window is watched, not owned: once it
// is gone, boxes open over the active window. One QtServices per control; the override
// cursor it sets is the application's, shared with everything else on screen.
class VELMORA_EXPORT QtServices : public toolkit::Services {
 public:
  // Boxes and dialogs open over the window of owner, or over the active window.
  explicit QtServices(QWidget* owner = nullptr);
  // Gives back the cursor if a pointer shape still overrides it.
  ~QtServices() override;
  QtServices(const QtServices&) = delete;
  QtServices& operator=(const QtServices&) = delete;

  // Shows prompt under title in a modal box and returns the code of the button chosen.
  // The style code is the host platform's: buttons in its lowest bits (4 Yes and No),
  // the icon in 16 to 64 (32 the question), the default button in 256 and 512. The
  // answer is the platform's code of the button chosen (6 Yes, 7 No); Escape or the
  // close box answer with the second button (No), or with the only one. Captions are
  // French whatever the locale.
  int MsgBox(TextView prompt, int style, TextView title) override;
  // Shows form as a modal dialog of fixed size, centred; returns once the form has
  // unloaded (its close box and Escape ask the form, which may refuse).
  void ShowModal(toolkit::Form& form) override;
  // Overrides the application's cursor with shape (11 the hourglass); 0 gives the
  // pointer back to the widgets.
  void setMousePointer(int shape) override;

 private:
  class Private;
  std::unique_ptr<Private> const d;
};

}  // namespace velmora::qt
