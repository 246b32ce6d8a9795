// The filter line above each list and the count beside it: what the planner types narrows
// the rows shown (a view over the list: the control's rows, marks and indexes are left
// as they are), and the count says how many rows there are, shown and marked.
#pragma once

#include <QLineEdit>
#include <QString>

#include "qt/list_box_view.h"

namespace velmora::qt {

// The line over one list: each edit sets the list model's filter; Down goes into the
// list, Escape clears a typed filter (an empty line lets Escape go its usual way).
class FilterLine : public QLineEdit {
  Q_OBJECT
 public:
  FilterLine(ListBoxView& list, QWidget* parent);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  ListBoxView& list_;
};

// What the count beside a filter line says. Nouns and participles agree with what the
// rows are: care acts ("soins", masculine) or tasks ("tâches", feminine).
struct ListCount {
  int shown = 0;  // rows the filter lets through
  int rows = 0;   // rows of the list
  bool filtered = false;
  int marked = 0;  // marked rows, shown or not
  int hiddenMarked = 0;
};
// "32 767 soins · 2 marqués", "12 sur 40 tâches · 3 marquées, dont 1 masquée".
QString proposalsCount(const ListCount& count, bool careActs);
// "4 choisis · 1h10", "2 sur 4 choisies · 1h10" (total as the control shows it).
QString selectionCount(const ListCount& count, bool careActs, const QString& total);
// A number grouped by thousands the French way, with a narrow no-break space: "32 767".
QString frenchNumber(int number);

}  // namespace velmora::qt
