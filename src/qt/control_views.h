// One Qt widget for each kind of toolkit control. A view shows its control's state the
// moment the control notifies a change, and hands every gesture of the planner to the
// control's gesture methods, so that the logic sees exactly what a headless driver
// would make it see.
#pragma once

#include <memory>

#include <QCheckBox>
#include <QClipboard>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>
#include <QPushButton>

#include <velmora/toolkit/widgets.h>
#include "qt/list_model.h"

namespace velmora::qt {

// Qt's parent owns its children: this is the one place where the binding makes a
// widget, and the parent deletes it.
template <typename W, typename... Args>
W* makeChild(QWidget* parent, Args&&... args) {
  return new W(std::forward<Args>(args)..., parent);  // owned by parent
}

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

// A single-line text box: each key goes through TextBox::typeKey, so the control's
// KeyPress filter decides; the box only shows the toolkit's text. A text written into the
// line edit by anything else (a host's setText, an accessibility edit) is typed over the
// stretch it replaces, as a paste is.
class TextLineView : public QLineEdit {
  Q_OBJECT
 public:
  TextLineView(toolkit::TextBox& box, QWidget* parent);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void showText();
  void caretMoved();
  void paste(QClipboard::Mode mode);
  void textReplaced(const QString& text);

  toolkit::TextBox& box_;
  bool movingCaret_ = false;  // the box is taking the caret from this view
  std::shared_ptr<void> subscription_;
};

// A multi-line text box: edited in place like a dialog's editor, each edit handing the
// whole text to TextBox::replaceText. Lines end in CR LF in the toolkit's text, as the
// host platform writes them.
class TextAreaView : public QPlainTextEdit {
  Q_OBJECT
 public:
  TextAreaView(toolkit::TextBox& box, QWidget* parent);

 protected:
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void showText();
  void userEdited();

  toolkit::TextBox& box_;
  bool showing_ = false;
  std::shared_ptr<void> subscription_;
};

// A list: mouse and keys become ListBox::click and doubleClick. Qt's selection model
// mirrors the toolkit (the marks of a list of marks, the current row of the others), and
// whatever else changes it (an accessibility action, a host's setCurrentIndex or select)
// is made as the clicks that lead to the new state; what the toolkit refuses is put back.
class ListBoxView : public QListView {
  Q_OBJECT
 public:
  ListBoxView(toolkit::ListBox& list, QWidget* parent);

  ListBoxModel& listModel() const { return *model_; }
  // The rectangle of a row, in viewport coordinates, for tests and hosts.
  QRect rowRect(int row) const;
  // The keyboard caret, where the next arrow, Space or Return acts; -1 for none. It is
  // Qt's current index only while the list has the focus, so that a screen reader hears
  // of a focused row only in the focused list.
  int caretRow() const;
  void placeCaret(int row);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  void followCurrentRow();
  void showMarks();
  void routeSelection(const QItemSelection& selected, const QItemSelection& deselected);

  toolkit::ListBox& list_;
  ListBoxModel* model_;
  bool mirroring_ = false;  // the selection model is being set from the toolkit
  int caret_ = -1;
  std::shared_ptr<void> subscription_;
};

// A key pressed in view (without modifiers) is a press of button, when and only when the
// button is enabled; otherwise the key goes its usual way.
void bindKeyToButton(QWidget& view, Qt::Key key, QAbstractButton& button);

// The widget for any toolkit control, placed at its geometry inside parent.
QWidget* createView(toolkit::Control& control, QWidget* parent);

// Applies the tab order of the tab indexes to the views given, lowest index first;
// returns the first view that takes the focus by tabbing, or nullptr.
QWidget* applyTabOrder(const std::vector<std::pair<int, QWidget*>>& viewsByTabIndex);

}  // namespace velmora::qt
