// The view of a toolkit list box: rows from a ListBoxModel, mouse and keys made into the
// list's clicks and double clicks, and a keyboard caret of its own.
#pragma once

#include <memory>

#include <QListView>
#include <QPointer>

#include <velmora/toolkit/widgets.h>
#include "qt/list_model.h"

namespace velmora::qt {

// A list: mouse and keys become ListBox::click and doubleClick. Qt's selection model
// mirrors the toolkit (the marks of a list of marks, the current row of the others), and
// whatever else changes it (an accessibility action, a host's setCurrentIndex or select)
// is made as the clicks that lead to the new state; what the toolkit refuses is put back.
class ListBoxView : public QListView {
  Q_OBJECT
 public:
  ListBoxView(toolkit::ListBox& list, QWidget* parent);

  ListBoxModel& listModel() const { return *model_; }
  // Rows are the list's rows here, shown or hidden by a filter.
  // The rectangle of a row, in viewport coordinates (empty while the filter hides it).
  QRect rowRect(int row) const;
  // The keyboard caret, where the next arrow, Space or Return acts; -1 for none. It is
  // Qt's current index only while the list has the focus, so that a screen reader hears
  // of a focused row only in the focused list. A row the filter hides takes no caret.
  int caretRow() const;
  void placeCaret(int row);
  // The filter line that a letter typed in the list goes to (none: letters do nothing).
  void setFilterLine(QWidget* line) { filterLine_ = line; }

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
  // The caret on a row of the view.
  void placeViewCaret(int viewRow);
  int viewCaret() const;
  void showMarks();
  void typeIntoFilter(QKeyEvent* event);
  void routeSelection(const QItemSelection& selected, const QItemSelection& deselected);

  toolkit::ListBox& list_;
  ListBoxModel* model_;
  bool mirroring_ = false;     // the selection model is being set from the toolkit
  int caret_ = -1;             // a row of the view
  int caretBeforeReset_ = -1;  // the list's row under the caret as the view was reset
  QPointer<QWidget> filterLine_;
  std::shared_ptr<void> subscription_;
};

}  // namespace velmora::qt
