// A list model over one toolkit ListBox. The logic may add tens of thousands of rows in
// one procedure; the model marks itself dirty on the first notification, stops listening
// once a reset is due, and brings its views up to date once, at the next turn of the
// event loop. With filtering on, it shows only the rows that hold the planner's words:
// its rows are then the view's, mapped to the list's by listRow and viewRow, and the
// list's order, marks and indexes stay the control's.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QAbstractListModel>

#include <velmora/toolkit/widgets.h>
#include "qt/row_filter.h"

namespace velmora::qt {

class ListBoxModel : public QAbstractListModel {
  Q_OBJECT

 public:
  // True for a row that is marked (a multi-select list) or current (any other list).
  static constexpr int kMarkedRole = Qt::UserRole + 1;

  explicit ListBoxModel(toolkit::ListBox& list, QObject* parent = nullptr);

  // The index of a row, as QAbstractListModel gives it, without asking the row and column
  // counts through virtual calls: a view's layout asks for every row after a reset.
  QModelIndex index(int row, int column = 0,
                    const QModelIndex& parent = QModelIndex()) const override;
  int rowCount(const QModelIndex& parent = QModelIndex()) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

  toolkit::ListBox& list() const { return list_; }
  // What assistive technology reads for a row (Qt::AccessibleTextRole); the row's text
  // without one.
  void setReader(std::function<QString(int row)> reader) { reader_ = std::move(reader); }
  bool isDirty() const { return structureDirty_ || contentDirty_; }

  // Filtering on folds every row's text (the row and the whole values of its columns) at
  // each refill; off, it clears the filter and forgets the folded texts.
  void setFiltering(bool on);
  bool filtering() const { return filtering_; }
  // Shows only the rows whose folded text holds every word typed; "" shows them all.
  void setFilter(const QString& typed);
  bool isFiltered() const { return !words_.isEmpty(); }
  // The rows of the list at the last refresh, shown or not.
  int listCount() const { return rowSnapshot_; }
  // The list's row shown at a row of the view, and back (-1 for a row the filter hides).
  int listRow(int viewRow) const;
  int viewRow(int listRow) const;
  // The marked rows of a list of marks, and how many of them the filter hides.
  struct Marks {
    int marked = 0;
    int hidden = 0;
  };
  Marks marks() const;
  // Brings the views up to date now instead of at the next turn of the event loop.
  void refreshNow();

 signals:
  // After each refresh, so that a view can put its current row back.
  void refreshed();

 private:
  void listen();
  void onChange(toolkit::Change change, int row);
  // The row's text as shown and its columns' whole values, folded for the filter.
  QString foldedRow(int row) const;
  // The rows shown for the words now.
  void applyFilter(const std::vector<int>* among);
  void reset();
  void schedule();
  bool isMarked(int row) const;

  toolkit::ListBox& list_;
  std::function<QString(int row)> reader_;
  // Views read only the rows that were there at the last refresh, so that they never
  // ask for a row that the list has lost meanwhile.
  int rowSnapshot_ = 0;
  bool structureDirty_ = false;
  bool contentDirty_ = false;
  bool scheduled_ = false;
  bool filtering_ = false;
  FoldedRows folded_;
  std::vector<int> rewritten_;  // rows rewritten since the last refresh, to fold again
  QStringList words_;
  std::vector<int> shown_;  // while filtered: the list's rows shown, ascending
  // Empty while a reset is due: the reset reads the list whole.
  std::shared_ptr<void> subscription_;
};

}  // namespace velmora::qt
