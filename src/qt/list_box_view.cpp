// The list view: it draws the rows of one toolkit list in its fixed character cell and
// turns the planner's clicks, double clicks and keys into the list's gestures. It mirrors
// the toolkit's marks and current row in Qt's selection model, and routes any other change
// of that model (an accessibility action, a host's call) back as the clicks it stands for.
#include "qt/list_box_view.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <QCoreApplication>
#include <QFocusEvent>
#include <QFontMetricsF>
#include <QKeyEvent>
#include <QMouseEvent>

#include <velmora/qt/failure_display.h>
#include "qt/view_look.h"

namespace velmora::qt {

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
  // A filter typed or cleared keeps the caret on its row, not on its place in the view.
  connect(model_, &QAbstractItemModel::modelAboutToBeReset, this,
          [this] { caretBeforeReset_ = caret_ >= 0 ? model_->listRow(viewCaret()) : -1; });
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
  // Rows of the view: a mark the filter hides is not drawn (the count beside the filter
  // says it is there).
  const auto marked = [this](int row) {
    const int listRow = model_->listRow(row);
    return listRow < list_.ListCount() && list_.Selected(listRow);
  };
  if (list_.multiSelect()) {
    for (int row = 0; row < count; ++row) {
      if (!marked(row)) continue;
      const int first = row;
      while (row + 1 < count && marked(row + 1)) ++row;
      mark(first, row);
    }
  } else if (const int row = model_->viewRow(list_.ListIndex()); row >= 0) {
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
  const auto rowOf = [this](const QModelIndex& index) { return model_->listRow(index.row()); };
  if (list_.multiSelect()) {
    for (const QModelIndex& index : selected.indexes()) {
      const int row = rowOf(index);
      if (row >= 0 && row < count && !list_.Selected(row)) clicks.push_back(row);
    }
    for (const QModelIndex& index : deselected.indexes()) {
      const int row = rowOf(index);
      if (row >= 0 && row < count && list_.Selected(row)) clicks.push_back(row);
    }
    std::sort(clicks.begin(), clicks.end());
  } else {
    for (const QModelIndex& index : selected.indexes()) {
      if (const int row = rowOf(index); row >= 0 && row != list_.ListIndex()) clicks = {row};
    }
  }
  for (const int row : clicks) guarded(this, [this, row] { list_.click(row); });
  model_->refreshNow();
  followCurrentRow();
  showMarks();
}

QRect ListBoxView::rowRect(int row) const {
  if (model_->isDirty()) model_->refreshNow();
  return visualRect(model_->index(model_->viewRow(row)));
}

void ListBoxView::followCurrentRow() {
  const int before = std::exchange(caretBeforeReset_, -1);
  if (const int row = model_->viewRow(list_.ListIndex()); row >= 0) {
    placeViewCaret(row);
  } else if (const int kept = before >= 0 ? model_->viewRow(before) : -1; kept >= 0) {
    placeViewCaret(kept);
  }
  if (caret_ >= model_->rowCount()) placeViewCaret(model_->rowCount() - 1);
}

int ListBoxView::viewCaret() const {
  if (caret_ >= 0 && caret_ < model_->rowCount()) return caret_;
  if (const int current = model_->viewRow(list_.ListIndex()); current >= 0) return current;
  return model_->rowCount() > 0 ? 0 : -1;
}

int ListBoxView::caretRow() const {
  return model_->listRow(viewCaret());
}

void ListBoxView::placeCaret(int row) {
  if (model_->isDirty()) model_->refreshNow();
  if (const int shown = model_->viewRow(row); shown >= 0 || row < 0) placeViewCaret(shown);
}

// Only the caret: the marks and the current row are the toolkit's.
void ListBoxView::placeViewCaret(int row) {
  caret_ = row;
  const QModelIndex index = model_->index(row);
  if (hasFocus()) selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  if (index.isValid()) scrollTo(index);
}

void ListBoxView::focusInEvent(QFocusEvent* event) {
  QListView::focusInEvent(event);
  const QModelIndex index = model_->index(viewCaret());
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
  placeViewCaret(index.row());
  guarded(this, [this, row = model_->listRow(index.row())] { list_.click(row); });
}

void ListBoxView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (model_->isDirty()) model_->refreshNow();
  if (event->button() != Qt::LeftButton) return;
  const QModelIndex index = indexAt(event->position().toPoint());
  if (!index.isValid()) return;
  guarded(this, [this, row = model_->listRow(index.row())] { list_.doubleClick(row); });
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
  const int caret = viewCaret();
  const int caretListRow = model_->listRow(caret);
  // With no row under the caret yet, the first arrow lands on the first row.
  const bool placed = (caret_ >= 0 && caret_ < count) || model_->viewRow(list_.ListIndex()) >= 0;
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
      if (caretListRow >= 0) guarded(this, [this, caretListRow] { list_.click(caretListRow); });
      return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      // In a list of marks Return is the select button's (bound by the surface).
      if (list_.multiSelect()) {
        event->ignore();
        return;
      }
      if (caretListRow >= 0) {
        guarded(this, [this, caretListRow] { list_.doubleClick(caretListRow); });
      }
      return;
    default:
      typeIntoFilter(event);
      return;
  }
  if (count == 0) return;
  target = std::clamp(target, 0, count - 1);
  placeViewCaret(target);
  // Moving through a list with one current row chooses the row, as a click does; in a
  // list of marks the caret moves alone and the space bar marks.
  if (!list_.multiSelect()) {
    guarded(this, [this, row = model_->listRow(target)] { list_.click(row); });
  }
}

// A letter or a digit typed in a list goes on in its filter line, when it is shown.
void ListBoxView::typeIntoFilter(QKeyEvent* event) {
  const QString text = event->text();
  const bool typed = !text.isEmpty() && text.at(0).isLetterOrNumber() &&
                     !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
  if (!typed || !filterLine_ || !filterLine_->isVisible() || !filterLine_->isEnabled()) {
    event->ignore();
    return;
  }
  filterLine_->setFocus(Qt::OtherFocusReason);
  QCoreApplication::sendEvent(filterLine_, event);
}

}  // namespace velmora::qt
