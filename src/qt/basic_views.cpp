// The views of the simple controls: labels and frames that only show, a command button
// whose click is the control's press, and a check box whose tick is the control's toggle.
// A view follows its control through one subscription that lives as long as the view.
#include "qt/basic_views.h"

#include <QPixmap>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/twips.h>
#include "qt/select_arrow.h"
#include "qt/view_look.h"

namespace velmora::qt {

using toolkit::Change;

LabelView::LabelView(toolkit::Label& label, QWidget* parent) : QLabel(parent), label_(label) {
  setTextFormat(Qt::PlainText);
  setText(toQString(label.Caption()));
  setAlignment(horizontal(label.alignment) | Qt::AlignTop);
  applyLook(*this, label);
  if (label.autoSize) adjustSize();
  subscription_ = follow(*this, label, [this](Change change, int) {
    if (change != Change::Caption) return;
    setText(toQString(label_.Caption()));
    if (label_.autoSize) adjustSize();
  });
}

FrameView::FrameView(toolkit::Frame& frame, QWidget* parent) : QGroupBox(parent) {
  applyLook(*this, frame);
  setFocusPolicy(Qt::NoFocus);
  subscription_ = follow(*this, frame);
}

ButtonView::ButtonView(toolkit::CommandButton& button, QWidget* parent)
    : QPushButton(parent), button_(button) {
  if (button.graphical) {
    setIcon(QIcon(QPixmap::fromImage(selectArrowImage())));
    setIconSize(QSize(kArrowSize, kArrowSize));
  } else {
    setText(toQString(button.Caption()));
  }
  setAccessibleName(toQString(button.Caption()));
  setAutoDefault(false);
  applyLook(*this, button);
  subscription_ = follow(*this, button, [this](Change change, int) {
    if (change != Change::Caption) return;
    if (!button_.graphical) setText(toQString(button_.Caption()));
    setAccessibleName(toQString(button_.Caption()));
  });
  connect(this, &QPushButton::clicked, this,
          [this] { guarded(this, [this] { button_.press(); }); });
}

CheckBoxView::CheckBoxView(toolkit::CheckBox& box, QWidget* parent) : QCheckBox(parent), box_(box) {
  setText(toQString(box.Caption()));
  showValue();
  applyLook(*this, box);
  subscription_ = follow(*this, box, [this](Change change, int) {
    if (change == Change::Caption) setText(toQString(box_.Caption()));
    if (change == Change::Value) showValue();
  });
  connect(this, &QCheckBox::toggled, this, [this](bool checked) {
    if (checked != (box_.Value() == 1)) guarded(this, [this] { box_.toggle(); });
    showValue();
  });
}

void CheckBoxView::showValue() {
  if (isChecked() != (box_.Value() == 1)) setChecked(box_.Value() == 1);
}

}  // namespace velmora::qt
