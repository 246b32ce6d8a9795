#include "qt/control_views.h"

#include <algorithm>
#include <array>

#include <QClipboard>
#include <QFocusEvent>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPixmap>
#include <QPointer>
#include <QScrollBar>
#include <QSignalBlocker>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/twips.h>
#include "qt/select_arrow.h"

namespace velmora::qt {

using toolkit::Alignment;
using toolkit::Change;
using toolkit::Control;

namespace {

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

void setRoleColour(QPalette& palette, std::initializer_list<QPalette::ColorRole> roles,
                   const QColor& colour) {
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    for (const auto role : roles) palette.setColor(group, role, colour);
  }
}

// Place, name, font, colours and focus: what every view takes from its control.
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

// Enabled and visible follow the control; the view handles the rest of the changes. A
// view without more to handle is not called for the rest (a list's rows, one by one).
std::shared_ptr<void> follow(QWidget& widget, Control& control,
                             std::function<void(Change, int)> rest = {}) {
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

}  // namespace

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

namespace {
// A disabled box keeps its text legible, in the grey of the host platform's disabled
// text, also on a coloured background such as the total's.
void greyWhenDisabled(QWidget& widget) {
  QPalette palette = widget.palette();
  palette.setColor(QPalette::Disabled, QPalette::Text, QColor(109, 109, 109));
  widget.setPalette(palette);
}
}  // namespace

namespace {

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

namespace {

// The character cell of Courier New 8.25 pt on a 96-dpi screen, in logical pixels (Qt
// scales them with the device pixel ratio). The headings of the columns are placed for it.
constexpr qreal kListCharacterCell = 7;

// The list's face with letter spacing that makes each character exactly one cell wide:
// the face that stands in for Courier New is narrower (Liberation Mono: 6.59 pixels).
QFont withCharacterCell(QFont font) {
  const qreal advance = QFontMetricsF(font).horizontalAdvance(QLatin1Char('0'));
  font.setLetterSpacing(QFont::AbsoluteSpacing, kListCharacterCell - advance);
  return font;
}

}  // namespace

ListBoxView::ListBoxView(toolkit::ListBox& list, QWidget* parent)
    : QListView(parent), list_(list), model_(makeChild<ListBoxModel>(this, list)) {
  setModel(model_);
  setUniformItemSizes(true);
  setSelectionMode(list.multiSelect() ? QAbstractItemView::MultiSelection
                                      : QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFocusPolicy(Qt::StrongFocus);
  applyLook(*this, list);
  // Rows of fixed-width columns must stand under their headings.
  if (list.font) setFont(withCharacterCell(font()));
  subscription_ = follow(*this, list);
  connect(model_, &ListBoxModel::refreshed, this, [this] {
    followCurrentRow();
    showMarks();
  });
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this,
          [this](const QItemSelection& selected, const QItemSelection& deselected) {
            routeSelection(selected, deselected);
          });
  showMarks();
}

// The selection model shows the marks of a list of marks, the current row of another.
void ListBoxView::showMarks() {
  QItemSelection marks;
  const int count = model_->rowCount();
  const auto mark = [&](int first, int last) {
    marks.select(model_->index(first), model_->index(last));
  };
  if (list_.multiSelect()) {
    for (int row = 0; row < count && row < list_.ListCount(); ++row) {
      if (!list_.Selected(row)) continue;
      const int first = row;
      while (row + 1 < count && row + 1 < list_.ListCount() && list_.Selected(row + 1)) ++row;
      mark(first, row);
    }
  } else if (const int row = list_.ListIndex(); row >= 0 && row < count) {
    mark(row, row);
  }
  if (marks == selectionModel()->selection()) return;
  mirroring_ = true;
  selectionModel()->select(marks, QItemSelectionModel::ClearAndSelect);
  mirroring_ = false;
}

// Something other than the planner's mouse and keys changed the selection model: each row
// whose mark differs from the toolkit's is clicked (a list of marks), or the newly
// selected row is (a list with one current row, which no click can leave without one).
void ListBoxView::routeSelection(const QItemSelection& selected, const QItemSelection& deselected) {
  if (mirroring_) return;
  std::vector<int> clicks;
  const int count = list_.ListCount();
  if (list_.multiSelect()) {
    for (const QModelIndex& index : selected.indexes()) {
      if (index.row() < count && !list_.Selected(index.row())) clicks.push_back(index.row());
    }
    for (const QModelIndex& index : deselected.indexes()) {
      if (index.row() < count && list_.Selected(index.row())) clicks.push_back(index.row());
    }
    std::sort(clicks.begin(), clicks.end());
  } else {
    for (const QModelIndex& index : selected.indexes()) {
      if (index.row() != list_.ListIndex()) clicks = {index.row()};
    }
  }
  for (const int row : clicks) guarded(this, [this, row] { list_.click(row); });
  model_->refreshNow();
  followCurrentRow();
  showMarks();
}

QRect ListBoxView::rowRect(int row) const {
  if (model_->isDirty()) model_->refreshNow();
  return visualRect(model_->index(row));
}

void ListBoxView::followCurrentRow() {
  const int row = list_.ListIndex();
  if (row >= 0 && row < model_->rowCount()) placeCaret(row);
  if (caret_ >= model_->rowCount()) placeCaret(model_->rowCount() - 1);
}

int ListBoxView::caretRow() const {
  if (caret_ >= 0 && caret_ < model_->rowCount()) return caret_;
  if (list_.ListIndex() >= 0) return list_.ListIndex();
  return model_->rowCount() > 0 ? 0 : -1;
}

// Only the caret: the marks and the current row are the toolkit's.
void ListBoxView::placeCaret(int row) {
  if (model_->isDirty()) model_->refreshNow();
  caret_ = row;
  const QModelIndex index = model_->index(row);
  if (hasFocus()) selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  if (index.isValid()) scrollTo(index);
}

void ListBoxView::focusInEvent(QFocusEvent* event) {
  QListView::focusInEvent(event);
  const QModelIndex index = model_->index(caretRow());
  selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  if (index.isValid()) caret_ = index.row();
}

void ListBoxView::focusOutEvent(QFocusEvent* event) {
  QListView::focusOutEvent(event);
  selectionModel()->setCurrentIndex(QModelIndex(), QItemSelectionModel::NoUpdate);
}

void ListBoxView::mousePressEvent(QMouseEvent* event) {
  if (model_->isDirty()) model_->refreshNow();
  if (event->button() != Qt::LeftButton) return;
  setFocus(Qt::MouseFocusReason);
  const QModelIndex index = indexAt(event->position().toPoint());
  if (!index.isValid()) return;
  placeCaret(index.row());
  guarded(this, [this, row = index.row()] { list_.click(row); });
}

void ListBoxView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (model_->isDirty()) model_->refreshNow();
  if (event->button() != Qt::LeftButton) return;
  const QModelIndex index = indexAt(event->position().toPoint());
  if (!index.isValid()) return;
  guarded(this, [this, row = index.row()] { list_.doubleClick(row); });
}

// Dragging does not mark rows: only clicks do.
void ListBoxView::mouseMoveEvent(QMouseEvent* event) {
  event->accept();
}

void ListBoxView::mouseReleaseEvent(QMouseEvent* event) {
  event->accept();
}

void ListBoxView::keyPressEvent(QKeyEvent* event) {
  if (model_->isDirty()) model_->refreshNow();
  const int count = model_->rowCount();
  const int caret = caretRow();
  // With no row under the caret yet, the first arrow lands on the first row.
  const bool placed = (caret_ >= 0 && caret_ < count) || list_.ListIndex() >= 0;
  const int page = std::max(1, viewport()->height() / std::max(1, sizeHintForRow(0)));
  int target = -1;
  switch (event->key()) {
    case Qt::Key_Up:
      target = placed ? caret - 1 : 0;
      break;
    case Qt::Key_Down:
      target = placed ? caret + 1 : 0;
      break;
    case Qt::Key_PageUp:
      target = caret - page;
      break;
    case Qt::Key_PageDown:
      target = caret + page;
      break;
    case Qt::Key_Home:
      target = 0;
      break;
    case Qt::Key_End:
      target = count - 1;
      break;
    case Qt::Key_Space:
      if (caret >= 0) guarded(this, [this, caret] { list_.click(caret); });
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      // In a list of marks Return is the select button's (bound by the surface).
      if (list_.multiSelect()) {
        event->ignore();
        return;
      }
      if (caret >= 0) guarded(this, [this, caret] { list_.doubleClick(caret); });
      return;
    default:
      event->ignore();
      return;
  }
  if (count == 0) return;
  target = std::clamp(target, 0, count - 1);
  placeCaret(target);
  // Moving through a list with one current row chooses the row, as a click does; in a
  // list of marks the caret moves alone and the space bar marks.
  if (!list_.multiSelect()) guarded(this, [this, target] { list_.click(target); });
}

namespace {

class KeyToButton : public QObject {
 public:
  KeyToButton(Qt::Key key, QAbstractButton& button, QObject* parent)
      : QObject(parent), key_(key), button_(&button) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::KeyPress || !button_ || !button_->isEnabled()) {
      return QObject::eventFilter(watched, event);
    }
    const auto* keyEvent = static_cast<QKeyEvent*>(event);
    const bool enter = key_ == Qt::Key_Return && keyEvent->key() == Qt::Key_Enter;
    if ((keyEvent->key() != key_ && !enter) ||
        (keyEvent->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
      return QObject::eventFilter(watched, event);
    }
    button_->click();
    return true;
  }

 private:
  Qt::Key key_;
  QPointer<QAbstractButton> button_;
};

}  // namespace

void bindKeyToButton(QWidget& view, Qt::Key key, QAbstractButton& button) {
  view.installEventFilter(makeChild<KeyToButton>(&view, key, button));
}

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

QWidget* applyTabOrder(const std::vector<std::pair<int, QWidget*>>& viewsByTabIndex) {
  auto ordered = viewsByTabIndex;
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  QWidget* first = nullptr;
  QWidget* previous = nullptr;
  for (const auto& [tab, widget] : ordered) {
    if (widget->focusPolicy() == Qt::NoFocus) continue;
    if (previous) QWidget::setTabOrder(previous, widget);
    if (!first && (widget->focusPolicy() & Qt::TabFocus)) first = widget;
    previous = widget;
  }
  return first;
}

}  // namespace velmora::qt
