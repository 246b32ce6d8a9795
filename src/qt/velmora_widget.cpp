// The widget that shows one control: it makes a view per child, hooks the control's
// services and failure handler, and turns the control's changes into the widget's
// signals once per burst. Where the focus goes after a gesture is in widget_focus.cpp.
#include <velmora/qt/velmora_widget.h>

#include <algorithm>
#include <array>
#include <vector>

#include <QAccessible>
#include <QMetaMethod>

#include <velmora/qt/failure_display.h>
#include <velmora/qt/twips.h>
#include "control/inspection.h"
#include "qt/accessibility.h"
#include "qt/create_view.h"
#include "qt/key_routes.h"
#include "qt/velmora_widget_private.h"
#include "qt/view_look.h"

namespace velmora::qt {

namespace {

// The host platform's default face; fontconfig knows no such face, and Liberation Sans
// keeps the metrics of its Arial successor, so captions fit their boxes.
void substituteSurfaceFaces() {
  static const bool done = [] {
    QFont::insertSubstitution(QStringLiteral("MS Sans Serif"), QStringLiteral("Liberation Sans"));
    return true;
  }();
  (void)done;
}

void announce(QWidget* view, QAccessible::Event event) {
  QAccessibleEvent announcement(view, event);
  QAccessible::updateAccessibility(&announcement);
}

void setUpSurface(QWidget& widget) {
  widget.setObjectName(QStringLiteral("Ctr_VelmoraNew"));
  // A host may name it otherwise.
  widget.setAccessibleName(QStringLiteral("Planification de l'intervention"));
  widget.setFont(surfaceFont());
  widget.setFixedSize(toPixels(Ctr_VelmoraNew::kWidth), toPixels(Ctr_VelmoraNew::kHeight));
}

}  // namespace

QString readListRow(const Ctr_VelmoraNew& c, const toolkit::ListBox& list, int row) {
  const bool selection = &list == &c.Lst_Selectionne;
  const std::array<const toolkit::Label*, 3> headings =
      selection ? std::array{&c.Etq_Sel1, &c.Etq_Sel2, &c.Etq_Sel3}
                : std::array{&c.Etq_Pos1, &c.Etq_Pos2, &c.Etq_Pos3};
  return readRow(list.List(row),
                 {toQString(headings[0]->Caption()), toQString(headings[1]->Caption()),
                  toQString(headings[2]->Caption())},
                 list.wholeColumns(row), selection);
}

QFont surfaceFont() {
  substituteSurfaceFaces();
  QFont font(QStringLiteral("MS Sans Serif"));
  font.setPointSizeF(8.25);
  return font;
}

void VelmoraWidget::Private::show(Ctr_VelmoraNew& c) {
  control = &c;
  QWidget* frame = createView(c.Cdr_Soins, &q);
  views[&c.Cdr_Soins] = frame;
  // Tab order: the controls on the control by their index, a frame's children in the
  // place of their frame.
  std::vector<std::pair<int, QWidget*>> tabOrder;
  constexpr int kInFrame = 1000;
  for (toolkit::Control* child : c.controls()) {
    if (child == &c.Cdr_Soins) continue;
    const bool inFrame = c.liesInFrame(*child);
    QWidget* view = createView(*child, inFrame ? frame : &q);
    views[child] = view;
    const int order = inFrame ? c.Cdr_Soins.tabIndex() * kInFrame + 1 + child->tabIndex()
                              : child->tabIndex() * kInFrame;
    tabOrder.emplace_back(order, view);
  }
  makeFilters(c, tabOrder);
  // Labels are windowless on the host platform: drawn beneath the other controls.
  for (const auto& [child, view] : views) {
    if (child->kind() == toolkit::Kind::Label) view->lower();
  }
  applyTabOrder(tabOrder);
  nameForAssistiveTechnology(q);
  for (const toolkit::ListBox* list : {&c.Lst_Possible, &c.Lst_Selectionne}) {
    listView(*list)->listModel().setReader(
        [&c, list](int row) { return readListRow(c, *list, row); });
  }

  c.setServices(services);
  c.setFailureHandler([this](const Failure& failure) { q.reportFailure(failure); });
  // The total follows Txt_Duree, the selection its two parallel lists. What a sighted
  // planner sees change is announced: the total's new value, the warning appearing, and
  // which row the duration under edit belongs to.
  subscriptions = {
      c.Txt_Duree.subscribe([this, &c](toolkit::Change change, int) {
        changed(false);
        if (change != toolkit::Change::Text) return;
        QAccessibleValueChangeEvent event(views[&c.Txt_Duree], toQString(c.Txt_Duree.getText()));
        QAccessible::updateAccessibility(&event);
      }),
      c.Etq_Imperativite.subscribe([this, &c](toolkit::Change change, int) {
        changed(false);
        if (change == toolkit::Change::Visible && c.Etq_Imperativite.Visible()) {
          announce(views[&c.Etq_Imperativite], QAccessible::Alert);
        }
      }),
      c.Cmd_OKVelmora.subscribe([this, &c](toolkit::Change, int) { describeEdit(c); },
                                toolkit::maskOf(toolkit::Change::Enabled)),
      c.Lst_Selectionne.subscribe([this, &c](toolkit::Change change, int) {
        if (change == toolkit::Change::ListIndex && c.Lst_Selectionne.ListIndex() >= 0) {
          lastCurrent = c.Lst_Selectionne.ListIndex();
        }
        if (change == toolkit::Change::Enabled) focusOpenEdit(c);
        changed(change != toolkit::Change::ListIndex && change != toolkit::Change::Enabled &&
                change != toolkit::Change::Visible && change != toolkit::Change::RowSelected);
      }),
  };
  subscriptions.push_back(
      c.Txt_DureeSoin.subscribe([this, &c](toolkit::Change, int) { focusOpenEdit(c); },
                                toolkit::maskOf(toolkit::Change::Enabled)));
  bindKeysAndFocus(c);
  lastCurrent = -1;
  lastTotal = c.W_Total.toDouble();
  lastMandatory = c.Etq_Imperativite.Visible();
  showFilters();
}

void VelmoraWidget::Private::makeFilters(Ctr_VelmoraNew& c,
                                         std::vector<std::pair<int, QWidget*>>& tabOrder) {
  // Places that the design leaves empty, so that no child moves: the proposals' line
  // right of the show-all box above the frame, the selection's left of the select arrow
  // (its count right of it), in pixels of the widget and of the frame.
  struct Place {
    const toolkit::ListBox* list;
    QWidget* parent;
    QRect line;
    QRect count;
    const char* name;
    const char* accessibleName;
  };
  QWidget* frame = views[&c.Cdr_Soins];
  const std::array places{
      Place{&c.Lst_Possible,
            &q,
            {176, 5, 230, 22},
            {412, 5, 250, 22},
            "Possible",
            "Filtrer les propositions"},
      Place{&c.Lst_Selectionne,
            frame,
            {8, 184, 272, 22},
            {328, 184, 320, 22},
            "Selectionne",
            "Filtrer la sélection"},
  };
  for (const Place& place : places) {
    ListBoxView* list = listView(*place.list);
    auto* line = makeChild<FilterLine>(place.parent, *list);
    line->setObjectName(QStringLiteral("Filtre_") + QLatin1String(place.name));
    line->setAccessibleName(QString::fromUtf8(place.accessibleName));
    line->setPlaceholderText(QStringLiteral("Filtrer (Ctrl+F)"));
    line->setGeometry(place.line);
    auto* count = makeChild<QLabel>(place.parent);
    count->setObjectName(QStringLiteral("Compte_") + QLatin1String(place.name));
    count->setGeometry(place.count);
    filters[place.list] = {line, count};
    QObject::connect(&list->listModel(), &ListBoxModel::refreshed, &q, [this] { showCounts(); });
    // Just before its list in the tab order.
    const auto at = std::find_if(tabOrder.begin(), tabOrder.end(),
                                 [list](const auto& entry) { return entry.second == list; });
    if (at != tabOrder.end()) tabOrder.insert(at, {at->first, line});
  }
}

void VelmoraWidget::Private::showFilters() {
  for (const auto& [list, filter] : filters) {
    if (!filtersVisible) filter.line->clear();
    listView(*list)->listModel().setFiltering(filtersVisible);
    filter.line->setVisible(filtersVisible);
    filter.count->setVisible(filtersVisible);
  }
  showCounts();
}

void VelmoraWidget::Private::showCounts() {
  if (!filtersVisible || control == nullptr) return;
  const bool careActs = q.kind() == QLatin1String("SSIAD");
  for (const auto& [list, filter] : filters) {
    const ListBoxModel& model = listView(*list)->listModel();
    const ListBoxModel::Marks marks = model.marks();
    const ListCount count{model.rowCount(), model.listCount(), model.isFiltered(), marks.marked,
                          marks.hidden};
    const QString text =
        list == &control->Lst_Possible
            ? proposalsCount(count, careActs)
            : selectionCount(count, careActs, toQString(control->Txt_Duree.getText()).trimmed());
    if (text == filter.count->text()) continue;
    // The label tells its new name, and the line whose rows it counts its new description:
    // a screen reader hears it where the planner types.
    filter.count->setText(text);
    filter.line->setAccessibleDescription(text);
  }
}

void VelmoraWidget::Private::release() {
  if (control == nullptr) return;
  subscriptions.clear();
  std::vector<std::unique_ptr<QWidget>> filterViews;
  for (const auto& [list, filter] : filters) {
    filterViews.emplace_back(filter.line);
    filterViews.emplace_back(filter.count);
  }
  filters.clear();
  filterViews.clear();
  // The handler points at this widget; the services outlive it and open parentless.
  control->setFailureHandler({});
  // Deleting the views on the widget deletes those in the frame with them.
  std::vector<std::unique_ptr<QWidget>> onTheWidget;
  for (const auto& [child, view] : views) {
    if (view->parentWidget() == &q) onTheWidget.emplace_back(view);
  }
  views.clear();
  onTheWidget.clear();
  control = nullptr;
}

void VelmoraWidget::Private::changed(bool selection) {
  selectionChanged = selectionChanged || selection;
  if (settlePending) return;
  settlePending = true;
  QMetaObject::invokeMethod(
      &q, [this] { settle(); }, Qt::QueuedConnection);
}

void VelmoraWidget::Private::settle() {
  settlePending = false;
  if (control == nullptr) return;
  showCounts();
  if (const double total = control->W_Total.toDouble(); total != lastTotal) {
    lastTotal = total;
    Q_EMIT q.totalChanged(total);
  }
  if (const bool mandatory = control->Etq_Imperativite.Visible(); mandatory != lastMandatory) {
    lastMandatory = mandatory;
    Q_EMIT q.mandatoryChanged(mandatory);
  }
  if (selectionChanged) {
    selectionChanged = false;
    Q_EMIT q.selectionChanged();
  }
}

VelmoraWidget::VelmoraWidget(QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(*this)) {
  d->owned = std::make_unique<Ctr_VelmoraNew>();
  setUpSurface(*this);
  d->show(*d->owned);
}

VelmoraWidget::VelmoraWidget(Ctr_VelmoraNew& control, QWidget* parent)
    : QWidget(parent), d(std::make_unique<Private>(*this)) {
  setUpSurface(*this);
  d->show(control);
}

VelmoraWidget::~VelmoraWidget() {
  d->release();
}

Ctr_VelmoraNew& VelmoraWidget::control() const {
  return *d->control;
}

void VelmoraWidget::setControl(Ctr_VelmoraNew& control) {
  if (&control == d->control) return;
  d->release();
  d->owned.reset();
  d->show(control);
}

double VelmoraWidget::total() const {
  return d->control->W_Total.toDouble();
}

bool VelmoraWidget::mandatory() const {
  return d->control->Etq_Imperativite.Visible();
}

QString VelmoraWidget::kind() const {
  return toQString(CtrInspector(*d->control).W_TypeAct());
}

bool VelmoraWidget::filtersVisible() const {
  return d->filtersVisible;
}

void VelmoraWidget::setFiltersVisible(bool visible) {
  if (visible == d->filtersVisible) return;
  d->filtersVisible = visible;
  d->showFilters();
  Q_EMIT filtersVisibleChanged(visible);
}

QtServices& VelmoraWidget::services() const {
  return *d->services;
}

QWidget* VelmoraWidget::view(const toolkit::Control& child) const {
  const auto found = d->views.find(&child);
  return found == d->views.end() ? nullptr : found->second;
}

ListBoxView* listViewOf(const VelmoraWidget& widget, const toolkit::ListBox& list) {
  return qobject_cast<ListBoxView*>(widget.view(list));
}

void VelmoraWidget::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  window()->setAttribute(Qt::WA_KeyboardFocusChange);
}

void VelmoraWidget::refreshLists() {
  for (const auto& [child, view] : d->views) {
    if (auto* list = qobject_cast<ListBoxView*>(view)) list->listModel().refreshNow();
  }
}

void VelmoraWidget::reportFailure(const Failure& failure) {
  if (isSignalConnected(QMetaMethod::fromSignal(&VelmoraWidget::failed))) {
    Q_EMIT failed(static_cast<int>(failure.number()), QString::fromUtf8(failure.what()));
    return;
  }
  presentFailure(this, failure);
}

}  // namespace velmora::qt
