// The views of a toolkit text box: a line edit for a single-line box, a plain text edit
// for a multi-line one. The toolkit box holds the text; the view shows it and types into it.
#pragma once

#include <memory>

#include <QClipboard>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <velmora/toolkit/widgets.h>

namespace velmora::qt {

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

}  // namespace velmora::qt
