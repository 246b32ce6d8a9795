// The control as a screen reader meets it: a French name for everything it can reach and
// nothing it cannot, rows read column by column with their whole labels, marks that are
// the list's selected rows, and what changes on screen announced.
#include <QAccessible>
#include <QAccessibleInterface>
#include <QLineEdit>
#include <QPushButton>

#include "qt_support.h"

namespace velmora::testing {
namespace {

// Every interface under root, depth first.
void walk(QAccessibleInterface* root, std::vector<QAccessibleInterface*>& found) {
  for (int i = 0; i < root->childCount(); ++i) {
    QAccessibleInterface* child = root->child(i);
    if (!child) continue;
    found.push_back(child);
    walk(child, found);
  }
}

// The events that reach assistive technology, as (role of the source's object name, type).
std::vector<std::pair<QString, QAccessible::Event>>* heard = nullptr;
void hear(QAccessibleEvent* event) {
  if (!heard || !event->object()) return;
  QString what = event->object()->objectName();
  if (event->type() == QAccessible::ValueChanged) {
    what += QLatin1Char('=') + static_cast<QAccessibleValueChangeEvent*>(event)->value().toString();
  }
  heard->emplace_back(what, event->type());
}

class Accessibility : public WidgetTest {
 protected:
  void SetUp() override {
    WidgetTest::SetUp();
    // A task whose name is longer than the 25 characters of its column.
    account.put("TACHE", "Aide à la toilette complète du matin",
                {{"1"}, {"Entretien"}, {""}, {"N"}, {"35"}});
    ASSERT_TRUE(shown());
    initClient(c, account);
  }
  QString rowName(const toolkit::ListBox& list, int row) const {
    return QAccessible::queryAccessibleInterface(w.view(list))->child(row)->text(QAccessible::Name);
  }
};

TEST_F(Accessibility, EveryReachableChildHasAFrenchNameAndTheHiddenOnesStayOut) {
  std::vector<QAccessibleInterface*> tree;
  walk(QAccessible::queryAccessibleInterface(&w), tree);
  std::map<QString, QAccessibleInterface*> byObject;
  for (QAccessibleInterface* node : tree) {
    const QString object = node->object() ? node->object()->objectName() : QString();
    if (node->state().invisible) continue;
    EXPECT_FALSE(node->text(QAccessible::Name).isEmpty()) << object.toStdString();
    byObject[object] = node;
  }
  for (const char* unseen : {"Txt_Barre1", "Lst_CodePos", "Lst_CodeSelect"}) {
    EXPECT_FALSE(std::any_of(tree.begin(), tree.end(), [unseen](QAccessibleInterface* node) {
      return node->object() && node->object()->objectName() == QLatin1String(unseen);
    })) << unseen;
  }
  // Names a journey relies on; the total is named by its label and described.
  const std::vector<std::pair<const char*, const char*>> names{
      {"Lst_Possible", "Possibles"},  {"Lst_Selectionne", "Sélection"},
      {"Cmd_Select", "Sélectionner"}, {"Txt_DureeSoin", "Durée"},
      {"Txt_Duree", "Total"},         {"Cac_TouteTache", "Afficher toutes les tâches"}};
  for (const auto& [object, name] : names) {
    ASSERT_TRUE(byObject.count(QString::fromUtf8(object))) << object;
    EXPECT_EQ(byObject[QString::fromUtf8(object)]->text(QAccessible::Name),
              QString::fromUtf8(name));
  }
  EXPECT_FALSE(byObject[QStringLiteral("Txt_Duree")]->text(QAccessible::Description).isEmpty());
}

TEST_F(Accessibility, RowsReadByColumnWithTheirWholeLabelAndMarksAreSelectedRows) {
  c.Cac_TouteTache.toggle();
  w.refreshLists();
  QAccessibleInterface* list = QAccessible::queryAccessibleInterface(w.view(c.Lst_Possible));
  // Aide à la toilette…, Aspirateur, Vaisselle, Repassage, Déjeuner
  QAccessibleInterface* first = list->child(0);
  const QString whole = QStringLiteral(
      "Type : Ménage, Groupe : Entretien, Tâche : Aide à la toilette complète du matin, "
      "Durée : 35 min");
  EXPECT_EQ(first->text(QAccessible::Name), whole);
  EXPECT_TRUE(first->state().multiSelectable);
  QAccessibleInterface* repassage = list->child(3);
  repassage->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(c.Lst_Possible.Selected(3));
  EXPECT_TRUE(repassage->state().selected);
  EXPECT_FALSE(first->state().selected);
  c.Lst_Possible.click(0);
  c.Cmd_Select.press();
  w.refreshLists();
  EXPECT_EQ(rowName(c.Lst_Selectionne, 0), whole);
  // Under edit, the duration box says whose duration it holds.
  c.Lst_Selectionne.doubleClick(1);
  EXPECT_EQ(w.view(c.Txt_DureeSoin)->accessibleDescription(),
            QStringLiteral("Durée en minutes de la ligne modifiée : Type : Ménage, Groupe : "
                           "Linge, Tâche : Repassage, Durée : 45 min"));
  c.Cmd_AnnulerVelmora.press();
  EXPECT_TRUE(w.view(c.Txt_DureeSoin)->accessibleDescription().isEmpty());
}

// Needs a platform that speaks to assistive technology: the entry test_qt_a11y runs it on
// xcb under Xvfb and a D-Bus session.
TEST_F(Accessibility, WhatChangesOnScreenIsAnnounced) {
  std::vector<std::pair<QString, QAccessible::Event>> events;
  heard = &events;
  QAccessible::installUpdateHandler(hear);
  // The bridge comes up once it has found the accessibility bus.
  const bool active = QTest::qWaitFor([] { return QAccessible::isActive(); }, 3000);
  if (active) {
    c.Cac_TouteTache.toggle();
    c.Lst_Possible.click(3);
    w.refreshLists();
    events.clear();
    c.Cmd_Select.press();
    w.refreshLists();
    c.Lst_Selectionne.doubleClick(0);
    QCoreApplication::processEvents();
  }
  heard = nullptr;
  QAccessible::installUpdateHandler(nullptr);
  if (!active) GTEST_SKIP() << "no accessibility on this platform";
  const auto announced = [&](const QString& what, QAccessible::Event type) {
    return std::count(events.begin(), events.end(), std::pair(what, type)) > 0;
  };
  EXPECT_TRUE(announced(QStringLiteral("Txt_Duree=0h45"), QAccessible::ValueChanged));
  EXPECT_TRUE(announced(QStringLiteral("Etq_Imperativite"), QAccessible::Alert));
  EXPECT_TRUE(announced(QStringLiteral("Lst_Selectionne"), QAccessible::TableModelChanged));
  EXPECT_TRUE(announced(QStringLiteral("Txt_DureeSoin"), QAccessible::DescriptionChanged));
}

TEST_F(Accessibility, TheDialogsBoxesAreNamedByTheirLabelsAndItsOkReadsAsTheControls) {
  c.Cac_TouteTache.toggle();
  c.Lst_Possible.click(1);
  c.Cmd_Select.press();
  c.Lst_Selectionne.click(0);
  std::map<QString, QString> names;
  whenModal([&](QWidget& dialog) {
    for (QWidget* child : dialog.findChildren<QWidget*>()) {
      if (auto* face = QAccessible::queryAccessibleInterface(child); face && child->isVisible()) {
        names[child->objectName()] = face->text(QAccessible::Name);
      }
    }
    click(dialog.findChild<QPushButton*>(QStringLiteral("Cmd_AnnulerObs")));
  });
  c.Cmd_Obs.press();
  const std::map<QString, QString> expected{{"Txt_Type", "Type"},   {"Txt_Groupe", "Groupe"},
                                            {"Txt_Tache", "Tâche"}, {"Txt_Obs", "Observations"},
                                            {"Cmd_OkObs", "OK"},    {"Cmd_AnnulerObs", "Annuler"}};
  for (const auto& [object, name] : expected)
    EXPECT_EQ(names[object], name) << object.toStdString();
}

}  // namespace
}  // namespace velmora::testing
