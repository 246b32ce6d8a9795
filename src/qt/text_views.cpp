// The text box views: a single-line box whose every key, paste and composed character is
// typed through the toolkit's key filter, and a multi-line box edited in place whose whole
// text is handed to the toolkit after each edit. Neither holds a text of its own: each
// shows what its toolkit box holds once the box has decided.
#include "qt/text_views.h"

#include <algorithm>
#include <array>

#include <QClipboard>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalBlocker>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/twips.h>
#include "qt/view_look.h"

namespace velmora::qt {

using toolkit::Change;

namespace {

bool leavesByTheUser(Qt::FocusReason reason) {
  // Switching windows or opening a menu does not leave the box.
  return reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason;
}

QString toDisplayLines(TextView text) {
  return toQString(text).replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

Text fromDisplayLines(QString text) {
  return fromQString(text.replace(QStringLiteral("\n"), QStringLiteral("\r\n")));
}

// A disabled box keeps its text legible, in the grey of the host platform's disabled
// text, also on a coloured background such as the total's.
void greyWhenDisabled(QWidget& widget) {
  QPalette palette = widget.palette();
  palette.setColor(QPalette::Disabled, QPalette::Text, QColor(109, 109, 109));
  widget.setPalette(palette);
}

// Keys that only move the caret or choose a stretch, or copy it: Qt does them, and the
// box learns the new caret. Every key that changes the text goes to the box instead.
bool movesTheCaret(const QKeyEvent& event) {
  static constexpr std::array kMoves{
      QKeySequence::MoveToNextChar,
      QKeySequence::MoveToPreviousChar,
      QKeySequence::MoveToNextWord,
      QKeySequence::MoveToPreviousWord,
      QKeySequence::MoveToStartOfLine,
      QKeySequence::MoveToEndOfLine,
      QKeySequence::MoveToStartOfBlock,
      QKeySequence::MoveToEndOfBlock,
      QKeySequence::MoveToStartOfDocument,
      QKeySequence::MoveToEndOfDocument,
      QKeySequence::SelectNextChar,
      QKeySequence::SelectPreviousChar,
      QKeySequence::SelectNextWord,
      QKeySequence::SelectPreviousWord,
      QKeySequence::SelectStartOfLine,
      QKeySequence::SelectEndOfLine,
      QKeySequence::SelectStartOfBlock,
      QKeySequence::SelectEndOfBlock,
      QKeySequence::SelectStartOfDocument,
      QKeySequence::SelectEndOfDocument,
      QKeySequence::SelectAll,
      QKeySequence::Copy,
  };
  return std::any_of(kMoves.begin(), kMoves.end(),
                     [&event](QKeySequence::StandardKey key) { return event.matches(key); });
}

}  // namespace

TextLineView::TextLineView(toolkit::TextBox& box, QWidget* parent) : QLineEdit(parent), box_(box) {
  setAlignment(horizontal(box.alignment) | Qt::AlignVCenter);
  setMaxLength(box.maxLength > 0 ? box.maxLength : 32767);
  setReadOnly(box.readOnly);
  // Text reaches the box only through its gestures; no menu or drop may change it behind
  // the toolkit.
  setContextMenuPolicy(Qt::NoContextMenu);
  setAcceptDrops(false);
  applyLook(*this, box);
  greyWhenDisabled(*this);
  showText();
  subscription_ = follow(*this, box, [this](Change change, int) {
    if (change == Change::Text || (change == Change::Selection && !movingCaret_)) showText();
  });
  connect(this, &QLineEdit::cursorPositionChanged, this, [this] { caretMoved(); });
  connect(this, &QLineEdit::selectionChanged, this, [this] { caretMoved(); });
  connect(this, &QLineEdit::textChanged, this, [this](const QString& text) { textReplaced(text); });
}

// The line edit holds a text that the box does not: the stretch that differs is chosen and
// the new characters typed over it (or deleted), each through the key filter.
void TextLineView::textReplaced(const QString& text) {
  const QString held = toQString(box_.getText());
  if (text == held) return;
  const qsizetype shorter = std::min(text.size(), held.size());
  qsizetype same = 0;
  while (same < shorter && text[same] == held[same]) ++same;
  qsizetype sameEnd = 0;
  while (sameEnd < shorter - same &&
         text[text.size() - 1 - sameEnd] == held[held.size() - 1 - sameEnd]) {
    ++sameEnd;
  }
  const Text typed = fromQString(text.mid(same, text.size() - same - sameEnd));
  const auto start = static_cast<int>(same);
  const auto replaced = static_cast<int>(held.size() - same - sameEnd);
  movingCaret_ = true;
  guarded(this, [&] {
    box_.select(start, replaced);
    if (!typed.empty()) {
      box_.typeText(typed);
    } else if (replaced > 0) {
      box_.typeDelete();
    }
  });
  movingCaret_ = false;
  showText();
}

// The box's text, caret and selected stretch.
void TextLineView::showText() {
  const QSignalBlocker blocker(this);
  const QString text = toQString(box_.getText());
  if (text != this->text()) setText(text);
  if (box_.SelLength() > 0) {
    setSelection(box_.SelStart(), box_.SelLength());
  } else {
    setCursorPosition(box_.SelStart());
  }
}

// Qt moved the caret or chose a stretch (keys, mouse): the box takes it over.
void TextLineView::caretMoved() {
  const int start = hasSelectedText() ? selectionStart() : cursorPosition();
  const int length = hasSelectedText() ? static_cast<int>(selectedText().size()) : 0;
  if (start == box_.SelStart() && length == box_.SelLength()) return;
  movingCaret_ = true;
  guarded(this, [this, start, length] { box_.select(start, length); });
  movingCaret_ = false;
}

void TextLineView::paste(QClipboard::Mode mode) {
  const Text pasted = fromQString(QGuiApplication::clipboard()->text(mode));
  guarded(this, [this, &pasted] { box_.typeText(pasted); });
}

void TextLineView::keyPressEvent(QKeyEvent* event) {
  if (box_.readOnly || movesTheCaret(*event)) {
    QLineEdit::keyPressEvent(event);
    return;
  }
  if (event->matches(QKeySequence::Paste)) {
    paste(QClipboard::Clipboard);
    return;
  }
  if (event->matches(QKeySequence::Cut)) {
    if (box_.SelLength() == 0) return;
    QGuiApplication::clipboard()->setText(toQString(box_.SelText()));
    guarded(this, [this] { box_.typeDelete(); });
    return;
  }
  if (event->key() == Qt::Key_Backspace && event->modifiers() == Qt::NoModifier) {
    guarded(this, [this] { box_.typeKey(8); });
    return;
  }
  if (event->key() == Qt::Key_Delete && event->modifiers() == Qt::NoModifier) {
    guarded(this, [this] { box_.typeDelete(); });
    return;
  }
  const auto modifiers =
      event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
  const QString typed = event->text();
  if (modifiers || typed.isEmpty() || !typed.front().isPrint()) {
    // Enter, Escape and the rest belong to the surface around the box.
    event->ignore();
    return;
  }
  for (const QChar c : typed) {
    guarded(this, [this, c] { box_.typeKey(c.unicode()); });
  }
}

// Composed characters (dead keys, input methods) are typed like keys.
void TextLineView::inputMethodEvent(QInputMethodEvent* event) {
  event->accept();
  if (box_.readOnly || event->commitString().isEmpty()) return;
  const Text committed = fromQString(event->commitString());
  guarded(this, [this, &committed] { box_.typeText(committed); });
}

// The middle button pastes the X11 selection: typed like any paste.
void TextLineView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::MiddleButton) {
    QLineEdit::mouseReleaseEvent(event);
    return;
  }
  event->accept();
  if (!box_.readOnly) paste(QClipboard::Selection);
}

void TextLineView::focusOutEvent(QFocusEvent* event) {
  QLineEdit::focusOutEvent(event);
  if (leavesByTheUser(event->reason())) guarded(this, [this] { box_.leave(); });
}

TextAreaView::TextAreaView(toolkit::TextBox& box, QWidget* parent)
    : QPlainTextEdit(parent), box_(box) {
  setReadOnly(box.readOnly);
  setTabChangesFocus(true);
  applyLook(*this, box);
  showText();
  subscription_ = follow(*this, box, [this](Change change, int) {
    if (change == Change::Text) showText();
  });
  connect(this, &QPlainTextEdit::textChanged, this, [this] { userEdited(); });
}

void TextAreaView::showText() {
  const QString text = toDisplayLines(box_.getText());
  if (text == toPlainText()) return;
  showing_ = true;
  setPlainText(text);
  moveCursor(QTextCursor::End);
  showing_ = false;
}

void TextAreaView::userEdited() {
  if (showing_) return;
  const Text text = fromDisplayLines(toPlainText());
  guarded(this, [this, &text] { box_.replaceText(text); });
  // A refused or shortened edit shows what the box really holds.
  showText();
}

void TextAreaView::focusOutEvent(QFocusEvent* event) {
  QPlainTextEdit::focusOutEvent(event);
  if (leavesByTheUser(event->reason())) guarded(this, [this] { box_.leave(); });
}

}  // namespace velmora::qt
