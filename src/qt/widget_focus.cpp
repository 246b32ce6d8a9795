// Where the planner's keys and focus go on the surface: the keys that stand for buttons,
// the duration box taking the focus when an edit opens, the selection taking it back on
// the right row after OK, Annuler, Supprimer and the observations, and Escape as Annuler.
// The duration box under edit also tells a screen reader whose duration it holds.
#include <algorithm>

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QShortcut>

#include "qt/key_routes.h"
#include "qt/velmora_widget_private.h"
#include "qt/view_look.h"

namespace velmora::qt {

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
  // Ctrl+F goes to the filter of the list the planner is in, the proposals' otherwise.
  if (findShortcut == nullptr) {
    findShortcut = makeChild<QShortcut>(&q, QKeySequence(QKeySequence::Find));
    findShortcut->setContext(Qt::WidgetWithChildrenShortcut);
    QObject::connect(findShortcut, &QShortcut::activated, &q, [this] { focusFilter(); });
  }
  // After Sélectionner the planner goes on in the proposals.
  QObject::connect(button(c.Cmd_Select), &QAbstractButton::clicked, views[&c.Lst_Possible],
                   [list = views[&c.Lst_Possible]] { list->setFocus(Qt::OtherFocusReason); });
  for (const toolkit::Control* done :
       {&c.Cmd_OKVelmora, &c.Cmd_AnnulerVelmora, &c.Cmd_SupprVelmora, &c.Cmd_Obs}) {
    QObject::connect(button(*done), &QAbstractButton::clicked, &q,
                     [this, &c] { focusAfterEdit(c); });
  }
}

void VelmoraWidget::Private::focusFilter() {
  if (!filtersVisible || control == nullptr) return;
  const QWidget* focus = QApplication::focusWidget();
  const Filter& selection = filters[&control->Lst_Selectionne];
  const bool inSelection =
      focus && (focus == views[&control->Lst_Selectionne] || focus == selection.line);
  FilterLine* line = inSelection ? selection.line : filters[&control->Lst_Possible].line;
  line->setFocus(Qt::ShortcutFocusReason);
  line->selectAll();
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
  ListBoxView* list = listView(c.Lst_Selectionne);
  list->setEnabled(c.Lst_Selectionne.Enabled());  // as its own listener will
  list->setFocus(Qt::OtherFocusReason);
  const int current = c.Lst_Selectionne.ListIndex();
  const int row = current >= 0 ? current : std::min(lastCurrent, c.Lst_Selectionne.ListCount() - 1);
  if (row >= 0) list->placeCaret(row);
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

}  // namespace velmora::qt
