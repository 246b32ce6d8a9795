// The list model over one toolkit list box: it reads rows live from the toolkit and
// brings its views up to date once per burst of changes, at the next turn of the event
// loop. A reset when rows came or went, one repaint when rows were only rewritten or marked.
// A filter narrows the rows shown without touching the list.
#include "qt/list_model.h"

#include <algorithm>

#include <QBrush>
#include <QGuiApplication>
#include <QPalette>
#include <QTimer>

#include <velmora/qt/twips.h>

namespace velmora::qt {

using toolkit::Change;

ListBoxModel::ListBoxModel(toolkit::ListBox& list, QObject* parent)
    : QAbstractListModel(parent), list_(list), rowSnapshot_(list.ListCount()) {
  listen();
}

void ListBoxModel::listen() {
  using toolkit::maskOf;
  subscription_ = list_.subscribe([this](Change change, int row) { onChange(change, row); },
                                  maskOf(Change::RowsReset) | maskOf(Change::RowAdded) |
                                      maskOf(Change::RowRemoved) | maskOf(Change::RowChanged) |
                                      maskOf(Change::RowSelected) | maskOf(Change::ListIndex));
}

QModelIndex ListBoxModel::index(int row, int column, const QModelIndex& parent) const {
  const int count = isFiltered() ? static_cast<int>(shown_.size()) : rowSnapshot_;
  if (parent.isValid() || row < 0 || row >= count || column != 0) return {};
  return createIndex(row, 0);
}

int ListBoxModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid()) return 0;
  return isFiltered() ? static_cast<int>(shown_.size()) : rowSnapshot_;
}

int ListBoxModel::listRow(int viewRow) const {
  if (viewRow < 0 || viewRow >= rowCount()) return -1;
  return isFiltered() ? shown_[static_cast<std::size_t>(viewRow)] : viewRow;
}

int ListBoxModel::viewRow(int listRow) const {
  if (listRow < 0 || listRow >= rowSnapshot_) return -1;
  if (!isFiltered()) return listRow;
  const auto found = std::lower_bound(shown_.begin(), shown_.end(), listRow);
  if (found == shown_.end() || *found != listRow) return -1;
  return static_cast<int>(found - shown_.begin());
}

ListBoxModel::Marks ListBoxModel::marks() const {
  Marks marks;
  if (!list_.multiSelect()) return marks;
  const int count = std::min(rowSnapshot_, list_.ListCount());
  for (int row = 0; row < count; ++row) {
    if (!list_.Selected(row)) continue;
    ++marks.marked;
    if (viewRow(row) < 0) ++marks.hidden;
  }
  return marks;
}

QString ListBoxModel::foldedRow(int row) const {
  const TextView shown = list_.List(row);
  QString folded;
  folded.reserve(static_cast<qsizetype>(shown.size()) * 2);
  appendFolded(QStringView(shown.data(), static_cast<qsizetype>(shown.size())), folded);
  for (const Text& whole : list_.wholeColumns(row)) {
    folded += QLatin1Char(' ');
    appendFolded(QStringView(whole.data(), static_cast<qsizetype>(whole.size())), folded);
  }
  return folded;
}

void ListBoxModel::setFiltering(bool on) {
  if (on == filtering_) return;
  if (!on) setFilter({});
  filtering_ = on;
  folded_.clear();
  if (!on) return;
  if (isDirty()) refreshNow();
  folded_.assign(rowSnapshot_, [this](int row) { return foldedRow(row); });
}

void ListBoxModel::setFilter(const QString& typed) {
  QStringList words = filtering_ ? filterWords(typed) : QStringList();
  if (words == words_) return;
  if (isDirty()) refreshNow();
  // A narrower filter searches only the rows the wider one kept.
  const bool narrower = isFiltered() && !words.isEmpty() && narrows(words_, words);
  beginResetModel();
  words_ = std::move(words);
  applyFilter(narrower ? &shown_ : nullptr);
  endResetModel();
  emit refreshed();
}

void ListBoxModel::applyFilter(const std::vector<int>* among) {
  if (!isFiltered()) {
    shown_.clear();
    return;
  }
  shown_ = folded_.matching(words_, among);
}

bool ListBoxModel::isMarked(int row) const {
  if (row >= list_.ListCount()) return false;
  return list_.multiSelect() ? list_.Selected(row) : row == list_.ListIndex();
}

QVariant ListBoxModel::data(const QModelIndex& index, int role) const {
  const int row = listRow(index.row());
  if (!index.isValid() || row < 0) return {};
  switch (role) {
    case Qt::DisplayRole:
      return row < list_.ListCount() ? toQString(list_.List(row)) : QString();
    case Qt::AccessibleTextRole:
      if (reader_ && row < list_.ListCount()) return reader_(row);
      return {};
    case kMarkedRole:
      return isMarked(row);
    case Qt::BackgroundRole:
      if (isMarked(row)) return QGuiApplication::palette().brush(QPalette::Highlight);
      return {};
    case Qt::ForegroundRole:
      if (isMarked(row)) return QGuiApplication::palette().brush(QPalette::HighlightedText);
      return {};
    default:
      return {};
  }
}

void ListBoxModel::onChange(Change change, int row) {
  switch (change) {
    case Change::RowsReset:
    case Change::RowAdded:
    case Change::RowRemoved:
      structureDirty_ = true;
      // The refresh due now reads the whole list again, so no later change can add to
      // it: the model stops hearing the list, row by row, until then.
      subscription_.reset();
      break;
    case Change::RowChanged:
      if (filtering_) rewritten_.push_back(row);
      contentDirty_ = true;
      break;
    case Change::RowSelected:
    case Change::ListIndex:
      contentDirty_ = true;
      break;
    default:
      return;
  }
  schedule();
}

void ListBoxModel::schedule() {
  if (scheduled_) return;
  scheduled_ = true;
  QTimer::singleShot(0, this, [this] { refreshNow(); });
}

void ListBoxModel::refreshNow() {
  scheduled_ = false;
  if (structureDirty_) {
    reset();
  } else if (contentDirty_) {
    contentDirty_ = false;
    // A rewritten row is folded again, and may come into or go out of the filter; marks
    // alone leave the rows shown as they are.
    const bool rewritten = !rewritten_.empty();
    for (const int row : rewritten_) folded_.replace(row, foldedRow(row));
    rewritten_.clear();
    std::vector<int> shown;
    if (rewritten && isFiltered()) shown = folded_.matching(words_, nullptr);
    if (rewritten && isFiltered() && shown != shown_) {
      beginResetModel();
      shown_ = std::move(shown);
      endResetModel();
    } else if (rowCount() > 0) {
      emit dataChanged(index(0), index(rowCount() - 1));
    }
  } else {
    return;
  }
  emit refreshed();
}

void ListBoxModel::reset() {
  beginResetModel();
  rowSnapshot_ = list_.ListCount();
  structureDirty_ = false;
  contentDirty_ = false;
  rewritten_.clear();
  if (filtering_) folded_.assign(rowSnapshot_, [this](int row) { return foldedRow(row); });
  applyFilter(nullptr);
  listen();
  endResetModel();
}

}  // namespace velmora::qt
