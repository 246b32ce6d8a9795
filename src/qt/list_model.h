// A list model over one toolkit ListBox. The logic may add tens of thousands of rows in
// one procedure; the model marks itself dirty on the first notification, stops listening
// once a reset is due, and brings its views up to date once, at the next turn of the
// event loop.
#pragma once

#include <functional>
#include <memory>

#include <QAbstractListModel>

#include <velmora/toolkit/widgets.h>

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
  // Brings the views up to date now instead of at the next turn of the event loop.
  void refreshNow();

 signals:
  // After each refresh, so that a view can put its current row back.
  void refreshed();

 private:
  void listen();
  void onChange(toolkit::Change change);
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
  // Empty while a reset is due: the reset reads the list whole.
  std::shared_ptr<void> subscription_;
};

}  // namespace velmora::qt
