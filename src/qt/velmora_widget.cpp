#include <velmora/qt/velmora_widget.h>

#include <map>
#include <vector>

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMetaMethod>

#include <velmora/control/ctr_velmora_new.h>
#include <velmora/qt/failure_display.h>
#include <velmora/qt/qt_services.h>
#include <velmora/qt/twips.h>
#include "qt/accessibility.h"
#include "qt/create_view.h"
#include "qt/key_routes.h"
#include "qt/list_box_view.h"

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

// A row of either list read under the captions of its three column headings.
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

QFont surfaceFont() {
  substituteSurfaceFaces();
  QFont font(QStringLiteral("MS Sans Serif"));
  font.setPointSizeF(8.25);
  return font;
}

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
  QAbstractButton* button(const toolkit::Control& child) {
    return qobject_cast<QAbstractButton*>(views[&child]);
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
};

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
  // Labels are windowless on the host platform: drawn beneath the other controls.
  for (const auto& [child, view] : views) {
    if (child->kind() == toolkit::Kind::Label) view->lower();
  }
  applyTabOrder(tabOrder);
  nameForAssistiveTechnology(q);
  for (const toolkit::ListBox* list : {&c.Lst_Possible, &c.Lst_Selectionne}) {
    q.listView(*list)->listModel().setReader(
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
}

void VelmoraWidget::Private::describeEdit(const Ctr_VelmoraNew& c) {
  QWidget* box = views[&c.Txt_DureeSoin];
  QString description;
  if (c.Cmd_OKVelmora.Enabled()) {
    const int row = c.Lst_Selectionne.ListIndex();
    description = QStringLiteral("Durée en minutes de la ligne modifiée : ") +
                  readListRow(c, c.Lst_Selectionne, row);
  }
  if (description != box->accessibleDescription()) box->setAccessibleDescription(description);
}

void VelmoraWidget::Private::bindKeysAndFocus(Ctr_VelmoraNew& c) {
  bindKeyToButton(*views[&c.Lst_Possible], Qt::Key_Return, *button(c.Cmd_Select));
  bindKeyToButton(*views[&c.Lst_Selectionne], Qt::Key_Delete, *button(c.Cmd_SupprVelmora));
  bindKeyToButton(*views[&c.Txt_DureeSoin], Qt::Key_Return, *button(c.Cmd_OKVelmora));
  // After Sélectionner the planner goes on in the proposals.
  QObject::connect(button(c.Cmd_Select), &QAbstractButton::clicked, views[&c.Lst_Possible],
                   [list = views[&c.Lst_Possible]] { list->setFocus(Qt::OtherFocusReason); });
  for (const toolkit::Control* done :
       {&c.Cmd_OKVelmora, &c.Cmd_AnnulerVelmora, &c.Cmd_SupprVelmora, &c.Cmd_Obs}) {
    QObject::connect(button(*done), &QAbstractButton::clicked, &q,
                     [this, &c] { focusAfterEdit(c); });
  }
}

void VelmoraWidget::Private::focusOpenEdit(const Ctr_VelmoraNew& c) {
  if (!c.Cmd_OKVelmora.Enabled() || c.Lst_Selectionne.Enabled() || !c.Txt_DureeSoin.Enabled()) {
    return;
  }
  // Not when the planner is busy outside the control (a host's call opened the edit).
  const QWidget* focus = QApplication::focusWidget();
  if (focus && focus != &q && !q.isAncestorOf(focus)) return;
  auto* box = qobject_cast<QLineEdit*>(views[&c.Txt_DureeSoin]);
  // The box's view may hear of its Enabled after this listener does.
  box->setEnabled(true);
  box->setFocus(Qt::OtherFocusReason);
  box->selectAll();
}

void VelmoraWidget::Private::focusAfterEdit(const Ctr_VelmoraNew& c) {
  // A dialog or a question box just closed: the planner goes on in this window.
  if (!q.isActiveWindow()) q.activateWindow();
  if (c.Cmd_OKVelmora.Enabled() && c.Txt_DureeSoin.Enabled()) {
    views[&c.Txt_DureeSoin]->setFocus(Qt::OtherFocusReason);
    return;
  }
  ListBoxView* list = q.listView(c.Lst_Selectionne);
  list->setEnabled(c.Lst_Selectionne.Enabled());  // as its own listener will
  list->setFocus(Qt::OtherFocusReason);
  const int current = c.Lst_Selectionne.ListIndex();
  const int row = current >= 0 ? current : std::min(lastCurrent, c.Lst_Selectionne.ListCount() - 1);
  if (row >= 0) list->placeCaret(row);
}

void VelmoraWidget::Private::release() {
  if (control == nullptr) return;
  subscriptions.clear();
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

QtServices& VelmoraWidget::services() const {
  return *d->services;
}

QWidget* VelmoraWidget::view(const toolkit::Control& child) const {
  const auto found = d->views.find(&child);
  return found == d->views.end() ? nullptr : found->second;
}

ListBoxView* VelmoraWidget::listView(const toolkit::ListBox& list) const {
  return qobject_cast<ListBoxView*>(view(list));
}

void VelmoraWidget::keyPressEvent(QKeyEvent* event) {
  QWidget* annuler = d->control ? view(d->control->Cmd_AnnulerVelmora) : nullptr;
  if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier && annuler &&
      annuler->isEnabled()) {
    qobject_cast<QAbstractButton*>(annuler)->click();
    return;
  }
  QWidget::keyPressEvent(event);
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
