// Every way a child's state can change on screen besides the planner's mouse and keys (the
// journeys drive those): an accessibility action, a host writing to the Qt widget. Each
// reaches the control as the planner's gesture: the control ends as the same gesture made
// headless leaves it, and the screen shows it.
#include <QAccessible>
#include <QAccessibleInterface>
#include <QCheckBox>
#include <QLineEdit>

#include <velmora/qt/twips.h>
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::ListBoxView;
using qt::VelmoraWidget;

// The show-all box ticked: the four tasks of the catalogue are proposed.
void proposeAll(Ctr_VelmoraNew& c) {
  c.Cac_TouteTache.toggle();
}
// Aspirateur and Repassage selected.
void selectTwo(Ctr_VelmoraNew& c) {
  proposeAll(c);
  c.Lst_Possible.click(0);
  c.Lst_Possible.click(2);
  c.Cmd_Select.press();
}
// The duration of the first selected row (20) under edit.
void editFirst(Ctr_VelmoraNew& c) {
  selectTwo(c);
  c.Lst_Selectionne.doubleClick(0);
}

// What a screen reader does to a child: an action of its accessible interface, or of the
// interface of one of its rows.
void act(QWidget* view, const QString& action, int row = -1) {
  QAccessibleInterface* target = QAccessible::queryAccessibleInterface(view);
  ASSERT_NE(target, nullptr);
  if (row >= 0) target = target->child(row);
  ASSERT_NE(target, nullptr);
  ASSERT_NE(target->actionInterface(), nullptr);
  target->actionInterface()->doAction(action);
}
QAccessibleEditableTextInterface* editable(QWidget* view) {
  return QAccessible::queryAccessibleInterface(view)->editableTextInterface();
}

struct Route {
  const char* name;
  std::function<void(Ctr_VelmoraNew&)> before;
  std::function<void(VelmoraWidget&, Ctr_VelmoraNew&)> onScreen;
  std::function<void(Ctr_VelmoraNew&)> headless;
};

TEST(Routes, EveryRouteToAChildIsThePlannersGestureAndTheScreenFollows) {
  const QString toggle = QAccessibleActionInterface::toggleAction();
  const auto possible = [](VelmoraWidget& w, Ctr_VelmoraNew& c) {
    return qt::listViewOf(w, c.Lst_Possible);
  };
  const auto selection = [](VelmoraWidget& w, Ctr_VelmoraNew& c) {
    return qt::listViewOf(w, c.Lst_Selectionne);
  };
  const auto box = [](VelmoraWidget& w, Ctr_VelmoraNew& c) {
    return qobject_cast<QLineEdit*>(w.view(c.Txt_DureeSoin));
  };
  const auto tick = [](Ctr_VelmoraNew& c) { c.Cac_TouteTache.toggle(); };
  const std::vector<Route> routes{
      {"tick: accessibility toggle",
       {},
       [&](auto& w, auto& c) { act(w.view(c.Cac_TouteTache), toggle); },
       tick},
      {"tick: host setChecked",
       {},
       [](auto& w, auto& c) {
         qobject_cast<QCheckBox*>(w.view(c.Cac_TouteTache))->setChecked(true);
       },
       tick},
      {"untick: accessibility toggle after a click", proposeAll,
       [&](auto& w, auto& c) { act(w.view(c.Cac_TouteTache), toggle); }, tick},
      {"mark: accessibility toggle of a row", proposeAll,
       [&](auto& w, auto& c) { act(possible(w, c), toggle, 2); },
       [](auto& c) { c.Lst_Possible.click(2); }},
      {"mark: accessibility row selection", proposeAll,
       [&](auto& w, auto& c) {
         QAccessible::queryAccessibleInterface(possible(w, c))->tableInterface()->selectRow(1);
       },
       [](auto& c) { c.Lst_Possible.click(1); }},
      {"unmark: host clears the selection model",
       [](auto& c) {
         proposeAll(c);
         c.Lst_Possible.click(1);
         c.Lst_Possible.click(3);
       },
       [&](auto& w, auto& c) { possible(w, c)->clearSelection(); },
       [](auto& c) {
         c.Lst_Possible.click(1);
         c.Lst_Possible.click(3);
       }},
      {"current row: accessibility toggle of a row", selectTwo,
       [&](auto& w, auto& c) { act(selection(w, c), toggle, 1); },
       [](auto& c) { c.Lst_Selectionne.click(1); }},
      {"current row: host setCurrentIndex", selectTwo,
       [&](auto& w, auto& c) {
         selection(w, c)->setCurrentIndex(selection(w, c)->model()->index(1, 0));
       },
       [](auto& c) { c.Lst_Selectionne.click(1); }},
      {"current row: refused while an edit is open", editFirst,
       [&](auto& w, auto& c) { act(selection(w, c), toggle, 1); },
       [](auto& c) { c.Lst_Selectionne.click(1); }},
      {"duration: host setText", editFirst,
       [&](auto& w, auto& c) { box(w, c)->setText(QStringLiteral("4x5")); },
       [](auto& c) {
         c.Txt_DureeSoin.select(0, 2);
         c.Txt_DureeSoin.typeText(u"4x5");
       }},
      {"duration: accessibility insertion at the end", editFirst,
       [&](auto& w, auto& c) { editable(box(w, c))->insertText(2, QStringLiteral("5")); },
       [](auto& c) { c.Txt_DureeSoin.typeKey(u'5'); }},
      {"duration: accessibility deletion", editFirst,
       [&](auto& w, auto& c) { editable(box(w, c))->deleteText(0, 1); },
       [](auto& c) {
         c.Txt_DureeSoin.select(0, 1);
         c.Txt_DureeSoin.typeDelete();
       }},
      {"total: a host's text in the disabled box is refused",
       {},
       [](auto& w, auto& c) {
         qobject_cast<QLineEdit*>(w.view(c.Txt_Duree))->setText(QStringLiteral("9h00"));
       },
       [](auto&) {}},
  };

  TempAccount account;
  putTaskCatalogue(account);
  for (const Route& route : routes) {
    SCOPED_TRACE(route.name);
    Session::processDefault().state().clear();
    Snapshot expected;
    {
      Ctr_VelmoraNew c;
      initClient(c, account);
      if (route.before) route.before(c);
      route.headless(c);
      expected = snapshot(c);
    }
    Session::processDefault().state().clear();
    Ctr_VelmoraNew c;
    VelmoraWidget w(c);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    initClient(c, account);
    if (route.before) route.before(c);
    w.refreshLists();
    route.onScreen(w, c);
    QCoreApplication::processEvents();
    EXPECT_EQ(snapshot(c), expected);
    expectScreenShows(w, c);
  }
  Session::processDefault().state().clear();
}

}  // namespace
}  // namespace velmora::testing
