// The screen services of the control on Qt: the question box, the modal show of a
// form, and the mouse pointer of the screen.
#pragma once

#include <velmora/export.h>

#include <QPointer>
#include <QWidget>

#include <velmora/toolkit/services.h>

namespace velmora::qt {

class VELMORA_EXPORT QtServices : public toolkit::Services {
 public:
  // Boxes and dialogs open over the window of owner, or over none.
  explicit QtServices(QWidget* owner = nullptr) : owner_(owner) {}
  ~QtServices() override;
  QtServices(const QtServices&) = delete;
  QtServices& operator=(const QtServices&) = delete;

  // The style code is the host platform's: buttons in its lowest bits (4 Yes and No),
  // the icon in 16 to 64 (32 the question), the default button in 256 and 512. The
  // answer is the platform's code of the button chosen (6 Yes, 7 No).
  int MsgBox(TextView prompt, int style, TextView title) override;
  void ShowModal(toolkit::Form& form) override;
  // 0 gives the pointer back to the widgets; the other shapes override it.
  void setMousePointer(int shape) override;

  int mousePointer() const { return shape_; }

 private:
  QWidget* dialogParent() const;
  void restorePointer();

  QPointer<QWidget> owner_;
  int shape_ = 0;
  bool overriding_ = false;
};

}  // namespace velmora::qt
