// Every way a child's state can change on screen besides the planner's mouse and keys (the
// journeys drive those): an accessibility action, a host writing to the Qt widget. Each
// reaches the control as the planner's gesture: the control ends as the same gesture made
// headless leaves it, and the screen shows it. The show-all box's tick and a row marked
// through the bus are the screen reader's journey's (tests/ui), and share their handlers
// with the mouse of the widget journey and the row action of the accessibility test.
#include "qt_support.h"

namespace velmora::testing {
namespace {

using qt::VelmoraWidget;
using Control = std::function<void(Ctr_VelmoraNew&)>;

// The four tasks of the catalogue proposed, two of them marked; Aspirateur and Repassage
// selected; the duration of the first (20) under edit.
const Control markTwo = [](Ctr_VelmoraNew& c) {
  for (const int r : {1, 3}) c.Lst_Possible.click(r);
};
const Control selectTwo = [](Ctr_VelmoraNew& c) {
  c.Cac_TouteTache.toggle();
  for (const int r : {0, 2}) c.Lst_Possible.click(r);
  c.Cmd_Select.press();
};
const Control editFirst = [](Ctr_VelmoraNew& c) {
  selectTwo(c);
  c.Lst_Selectionne.doubleClick(0);
};
const Control clickSecond = [](Ctr_VelmoraNew& c) { c.Lst_Selectionne.click(1); };

// What a screen reader does to a row of the selection: its toggle action.
void toggleSecond(VelmoraWidget& w, Ctr_VelmoraNew& c) {
  QAccessibleInterface* row =
      QAccessible::queryAccessibleInterface(w.view(c.Lst_Selectionne))->child(1);
  ASSERT_NE(row, nullptr);
  row->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
}
QAccessibleEditableTextInterface* editable(VelmoraWidget& w, Ctr_VelmoraNew& c) {
  return QAccessible::queryAccessibleInterface(w.view(c.Txt_DureeSoin))->editableTextInterface();
}
QLineEdit* line(VelmoraWidget& w, const toolkit::Control& box) {
  return qobject_cast<QLineEdit*>(w.view(box));
}

struct Route {
  const char* name;
  Control before;
  std::function<void(VelmoraWidget&, Ctr_VelmoraNew&)> onScreen;
  Control headless;
};

TEST(Routes, EveryRouteToAChildIsThePlannersGestureAndTheScreenFollows) {
  const std::vector<Route> routes{
      {"unmark: host clears the selection model",
       [](auto& c) {
         c.Cac_TouteTache.toggle();
         markTwo(c);
       },
       [](auto& w, auto& c) { qt::listViewOf(w, c.Lst_Possible)->clearSelection(); }, markTwo},
      {"current row: accessibility toggle of a row", selectTwo, toggleSecond, clickSecond},
      {"current row: refused while an edit is open", editFirst, toggleSecond, clickSecond},
      {"duration: host setText", editFirst,
       [](auto& w, auto& c) { line(w, c.Txt_DureeSoin)->setText(QStringLiteral("4x5")); },
       [](auto& c) {
         c.Txt_DureeSoin.select(0, 2);
         c.Txt_DureeSoin.typeText(u"4x5");
       }},
      {"duration: accessibility insertion at the end", editFirst,
       [](auto& w, auto& c) { editable(w, c)->insertText(2, QStringLiteral("5")); },
       [](auto& c) { c.Txt_DureeSoin.typeKey(u'5'); }},
      {"duration: accessibility deletion", editFirst,
       [](auto& w, auto& c) { editable(w, c)->deleteText(0, 1); },
       [](auto& c) {
         c.Txt_DureeSoin.select(0, 1);
         c.Txt_DureeSoin.typeDelete();
       }},
      {"total: a host's text in the disabled box is refused",
       {},
       [](auto& w, auto& c) { line(w, c.Txt_Duree)->setText(QStringLiteral("9h00")); },
       [](auto&) {}},
  };

  TempAccount account;
  putTaskCatalogue(account);
  for (const Route& route : routes) {
    SCOPED_TRACE(route.name);
    Step expected;
    {
      Session headless;
      Ctr_VelmoraNew c(headless);
      initClient(c, account);
      if (route.before) route.before(c);
      route.headless(c);
      expected = step(c);
    }
    Session shown;
    Ctr_VelmoraNew c(shown);
    VelmoraWidget w(c);
    w.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&w));
    initClient(c, account);
    if (route.before) route.before(c);
    w.refreshLists();
    route.onScreen(w, c);
    QCoreApplication::processEvents();
    EXPECT_EQ(step(c), expected);
    expectScreenShows(w, c);
  }
}

}  // namespace
}  // namespace velmora::testing
