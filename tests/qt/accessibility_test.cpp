// The control as a screen reader meets it: a name for everything it can reach and nothing
// it cannot, rows read column by column with their whole labels, marks that are
// the list's selected rows, and what changes on screen announced.
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
};

// Names themselves are read by the screen reader's journey (tests/ui); here, that none is
// missing and that what is out of sight is out of the tree too.
TEST_F(Accessibility, EveryReachableChildHasANameAndTheHiddenOnesStayOut) {
  w.setFiltersVisible(true);
  std::vector<QAccessibleInterface*> tree;
  walk(QAccessible::queryAccessibleInterface(&w), tree);
  for (QAccessibleInterface* node : tree) {
    const QString object = node->object() ? node->object()->objectName() : QString();
    EXPECT_FALSE(QStringList({"Txt_Barre1", "Lst_CodePos", "Lst_CodeSelect"}).contains(object))
        << object.toStdString();
    if (!node->state().invisible) {
      EXPECT_FALSE(node->text(QAccessible::Name).isEmpty()) << object.toStdString();
    }
  }
  // The total, named by its label, also says what it sums.
  EXPECT_FALSE(w.view(c.Txt_Duree)->accessibleDescription().isEmpty());
}

// The announcements need a platform that speaks to assistive technology: the entry
// test_qt_a11y runs this on xcb under Xvfb and a D-Bus session.
TEST_F(Accessibility, RowsReadByColumnWithTheirWholeLabelMarksAreSelectedRowsChangesAnnounced) {
  std::vector<std::pair<QString, QAccessible::Event>> events;
  heard = &events;
  QAccessible::installUpdateHandler(hear);
  // The bridge comes up once it has found the accessibility bus.
  const bool active = QTest::qWaitFor([] { return QAccessible::isActive(); }, 3000);
  w.setFiltersVisible(true);
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
  w.refreshLists();
  events.clear();
  c.Cmd_Select.press();
  w.refreshLists();
  EXPECT_EQ(QAccessible::queryAccessibleInterface(w.view(c.Lst_Selectionne))
                ->child(0)
                ->text(QAccessible::Name),
            whole);
  // Under edit, the duration box says whose duration it holds.
  c.Lst_Selectionne.doubleClick(1);
  QCoreApplication::processEvents();
  EXPECT_EQ(w.view(c.Txt_DureeSoin)->accessibleDescription(),
            QStringLiteral("Durée en minutes de la ligne modifiée : Type : Ménage, Groupe : "
                           "Linge, Tâche : Repassage, Durée : 45 min"));
  heard = nullptr;
  QAccessible::installUpdateHandler(nullptr);
  c.Cmd_AnnulerVelmora.press();
  EXPECT_TRUE(w.view(c.Txt_DureeSoin)->accessibleDescription().isEmpty());
  if (!active) GTEST_SKIP() << "announcements unheard: no accessibility on this platform";
  const auto announced = [&](const QString& what, QAccessible::Event type) {
    return std::count(events.begin(), events.end(), std::pair(what, type)) > 0;
  };
  EXPECT_TRUE(announced(QStringLiteral("Txt_Duree=1h20"), QAccessible::ValueChanged));
  EXPECT_TRUE(announced(QStringLiteral("Etq_Imperativite"), QAccessible::Alert));
  EXPECT_TRUE(announced(QStringLiteral("Lst_Selectionne"), QAccessible::TableModelChanged));
  EXPECT_TRUE(announced(QStringLiteral("Txt_DureeSoin"), QAccessible::DescriptionChanged));
  // A new count beside a filter: the filter line's new description.
  EXPECT_TRUE(announced(QStringLiteral("Filtre_Selectionne"), QAccessible::DescriptionChanged));
}

}  // namespace
}  // namespace velmora::testing
