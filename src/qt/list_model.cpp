// The list model over one toolkit list box: it reads rows live from the toolkit and
// brings its views up to date once per burst of changes, at the next turn of the event
// loop. A reset when rows came or went, one repaint when rows were only rewritten or marked.
#include "qt/list_model.h"

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
  subscription_ = list_.subscribe([this](Change change, int) { onChange(change); },
                                  maskOf(Change::RowsReset) | maskOf(Change::RowAdded) |
                                      maskOf(Change::RowRemoved) | maskOf(Change::RowChanged) |
                                      maskOf(Change::RowSelected) | maskOf(Change::ListIndex));
}

QModelIndex ListBoxModel::index(int row, int column, const QModelIndex& parent) const {
  if (parent.isValid() || row < 0 || row >= rowSnapshot_ || column != 0) return {};
  return createIndex(row, 0);
}

int ListBoxModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rowSnapshot_;
}

bool ListBoxModel::isMarked(int row) const {
  if (row >= list_.ListCount()) return false;
  return list_.multiSelect() ? list_.Selected(row) : row == list_.ListIndex();
}

QVariant ListBoxModel::data(const QModelIndex& index, int role) const {
  const int row = index.row();
  if (!index.isValid() || row < 0 || row >= rowSnapshot_) return {};
  switch (role) {
    case Qt::DisplayRole:
      return toQString(list_.List(row));
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

void ListBoxModel::onChange(Change change) {
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
    beginResetModel();
    rowSnapshot_ = list_.ListCount();
    structureDirty_ = false;
    contentDirty_ = false;
    listen();
    endResetModel();
  } else if (contentDirty_) {
    contentDirty_ = false;
    if (rowSnapshot_ > 0) emit dataChanged(index(0), index(rowSnapshot_ - 1));
  } else {
    return;
  }
  emit refreshed();
}

}  // namespace velmora::qt
