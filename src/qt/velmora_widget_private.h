// The inside of VelmoraWidget: the views of the control shown, the services and
// subscriptions it installs, and the state behind its signals and its focus routes.
// Only the binding, its tests and its benchmark include this header.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include <QAbstractButton>
#include <QLabel>
#include <QShortcut>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/qt/qt_services.h>
#include <velmora/qt/velmora_widget.h>
#include "qt/list_box_view.h"
#include "qt/list_filter.h"

namespace velmora::qt {

class VelmoraWidget::Private {
 public:
  explicit Private(VelmoraWidget& widget)
      : q(widget), services(std::make_shared<QtServices>(&widget)) {}

  // Builds one view per child control over c and hooks the widget to it.
  void show(Ctr_VelmoraNew& c);
  // Unhooks the control shown and deletes its views.
  void release();
  // Notes a change of the control; the signals follow once the burst is over.
  void changed(bool selection);
  void settle();
  // The duration box under edit says whose duration it holds.
  void describeEdit(const Ctr_VelmoraNew& c);
  // The keys of the lists and the duration box, and where the focus goes after a gesture.
  void bindKeysAndFocus(Ctr_VelmoraNew& c);
  // An edit just opened: the focus goes to the duration box, its text selected.
  void focusOpenEdit(const Ctr_VelmoraNew& c);
  // After OK, Annuler, Supprimer or the observations: back to the duration box while the
  // edit is open, otherwise to the selection on the row edited or the one in its place.
  void focusAfterEdit(const Ctr_VelmoraNew& c);
  // The filter lines and counts over both lists, hidden until filtersVisible; their
  // places in the tab order, just before their lists.
  void makeFilters(Ctr_VelmoraNew& c, std::vector<std::pair<int, QWidget*>>& tabOrder);
  void showFilters();
  // The counts beside the filter lines, and the filter line's description, say so.
  void showCounts();
  // Ctrl+F: the focus to a filter line, what it holds selected.
  void focusFilter();
  QAbstractButton* button(const toolkit::Control& child) {
    return qobject_cast<QAbstractButton*>(views[&child]);
  }
  ListBoxView* listView(const toolkit::ListBox& list) {
    return qobject_cast<ListBoxView*>(views[&list]);
  }

  VelmoraWidget& q;
  std::unique_ptr<Ctr_VelmoraNew> owned;
  Ctr_VelmoraNew* control = nullptr;
  std::shared_ptr<QtServices> services;
  std::map<const toolkit::Control*, QWidget*> views;
  std::vector<std::shared_ptr<void>> subscriptions;
  double lastTotal = 0;
  bool lastMandatory = false;
  bool selectionChanged = false;
  bool settlePending = false;
  int lastCurrent = -1;  // the last current row of the selection
  struct Filter {
    FilterLine* line = nullptr;
    QLabel* count = nullptr;
  };
  std::map<const toolkit::ListBox*, Filter> filters;
  bool filtersVisible = false;
  QShortcut* findShortcut = nullptr;  // Ctrl+F, made once, owned by the widget
};

// The view of one of the lists of the control that widget shows; nullptr for anything
// else. For the binding's tests and benchmark, which reach the rows and the caret.
ListBoxView* listViewOf(const VelmoraWidget& widget, const toolkit::ListBox& list);

// A row of either list read under the captions of its three column headings.
QString readListRow(const Ctr_VelmoraNew& c, const toolkit::ListBox& list, int row);

}  // namespace velmora::qt
