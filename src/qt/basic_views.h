// The views of the toolkit's simple controls: a label, a frame, a command button and a
// check box. Each shows its control's state the moment the control notifies a change and
// hands the planner's gesture to the control's gesture method.
#pragma once

#include <memory>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>

#include <velmora/toolkit/widgets.h>

namespace velmora::qt {

class LabelView : public QLabel {
  Q_OBJECT
 public:
  LabelView(toolkit::Label& label, QWidget* parent);

 private:
  toolkit::Label& label_;
  std::shared_ptr<void> subscription_;
};

class FrameView : public QGroupBox {
  Q_OBJECT
 public:
  FrameView(toolkit::Frame& frame, QWidget* parent);

 private:
  std::shared_ptr<void> subscription_;
};

class ButtonView : public QPushButton {
  Q_OBJECT
 public:
  ButtonView(toolkit::CommandButton& button, QWidget* parent);

 private:
  toolkit::CommandButton& button_;
  std::shared_ptr<void> subscription_;
};

// Whatever ticks the box on screen (a click, the space bar, an accessibility action, a
// host's setChecked) asks the toolkit to toggle; the box then shows what it holds.
class CheckBoxView : public QCheckBox {
  Q_OBJECT
 public:
  CheckBoxView(toolkit::CheckBox& box, QWidget* parent);

 private:
  void showValue();

  toolkit::CheckBox& box_;
  std::shared_ptr<void> subscription_;
};

}  // namespace velmora::qt
