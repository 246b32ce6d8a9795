// The events that the control's logic rests on, the gestures, and what a view hears.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <velmora/toolkit/services.h>
#include <velmora/toolkit/widgets.h>
#include "support/failure_number.h"

namespace velmora::toolkit {
namespace {

using velmora::testing::failureNumber;

const Geometry kAnywhere{0, 0, 100, 100};

// Keys go in at the caret, replace the selected stretch, and stop at the limit.
TEST(Events, KeysActAtTheCaretAndOnTheSelection) {
  struct Case {
    const char16_t *text, *after;
    int start, length, key, caret;  // key 8 backspace, 127 the Delete key
  };
  const std::vector<Case> cases{
      {u"15", u"4", 0, 2, '4', 1},        {u"15", u"415", 0, 0, '4', 1},
      {u"15", u"145", 1, 0, '4', 2},      {u"145", u"15", 1, 1, 8, 1},
      {u"145", u"45", 1, 0, 8, 0},        {u"145", u"145", 0, 0, 8, 0},
      {u"145", u"15", 1, 0, 127, 1},      {u"145", u"145", 3, 0, 127, 3},
      {u"145", u"", 0, 3, 127, 0},        {u"12345", u"1945", 1, 2, '9', 2},
      {u"12345", u"12345", 1, 0, '9', 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(toUtf8(c.text) + " key " + std::to_string(c.key));
    TextBox box("Txt_DureeSoin", kAnywhere, 0, c.text);
    box.maxLength = 5;
    box.setSelStart(c.start);
    box.setSelLength(c.length);
    c.key == 127 ? box.typeDelete() : box.typeKey(c.key);
    EXPECT_EQ(box.getText(), c.after);
    EXPECT_EQ(box.SelStart(), c.caret);
    EXPECT_EQ(box.SelLength(), 0);
  }
  TextBox box("Txt", kAnywhere, 0);
  box.maxLength = 3;
  box.typeText(u"1234");
  EXPECT_EQ(box.getText(), u"123");  // the fourth character past the limit
  box.replaceText(u"98765");
  EXPECT_EQ(box.getText(), u"987");  // a paste is cut too
  box.select(1, 9);
  EXPECT_EQ(box.SelText(), u"87");
  int changes = 0;
  box.Change = [&] { ++changes; };
  box.setSelText(u"X");
  EXPECT_EQ(box.getText(), u"9X");
  EXPECT_EQ(failureNumber([&] { box.setSelStart(-1); }), errors::kInvalidCall);
  box.readOnly = true;
  box.typeKey('1');
  box.readOnly = false;
  box.setEnabled(false);
  box.replaceText(u"x");
  EXPECT_EQ(box.getText(), u"9X");
  EXPECT_EQ(changes, 1);  // the host hears each edit, and only edits
}

TEST(Events, ListGesturesMarksAndTheCurrentRow) {
  ListBox list("Lst", kAnywhere, 0, false);
  ListBox multi("Lst_Possible", kAnywhere, 0, true);
  std::vector<std::string> events;
  for (ListBox* l : {&list, &multi}) {
    for (const char16_t* row : {u"a", u"b", u"c"}) l->AddItem(row);
    l->Click = [&events, l] { events.push_back("click " + std::to_string(l->ListIndex())); };
    l->DblClick = [&events, l] { events.push_back("dbl " + std::to_string(l->ListIndex())); };
  }
  EXPECT_EQ(list.List(-1) + list.List(3), u"");
  list.click(0);
  list.doubleClick(2);
  EXPECT_FALSE(list.Selected(2));  // marks only in a multi-select list
  multi.click(1);
  multi.click(2);
  multi.click(1);
  multi.doubleClick(2);  // a double-click leaves its row marked
  EXPECT_EQ(std::vector<bool>({multi.Selected(0), multi.Selected(1), multi.Selected(2)}),
            std::vector<bool>({false, false, true}));
  EXPECT_EQ(failureNumber([&] { list.setListIndex(3); }), errors::kInvalidCall);
  list.setEnabled(false);
  list.click(1);
  list.setListIndex(-1);  // a write raises Click even when disabled
  EXPECT_EQ(events, (std::vector<std::string>{"click 0", "click 2", "dbl 2", "click 1", "click 2",
                                              "click 1", "click 2", "dbl 2", "click -1"}));
  events.clear();

  // Removals keep the current row on its item and raise nothing; a swap carries the
  // marks, and the current row only when asked.
  multi.setListIndex(2);
  multi.RemoveItem(0);
  EXPECT_EQ(multi.List(multi.ListIndex()), u"c");
  multi.swapRows(0, 1);
  EXPECT_EQ(multi.ListIndex(), 1);  // written in place
  EXPECT_TRUE(multi.Selected(0));
  multi.currentFollows = [] { return true; };
  multi.swapRows(0, 1);
  EXPECT_EQ(multi.ListIndex(), 0);
  multi.RemoveItem(0);
  EXPECT_EQ(multi.ListIndex(), -1);
  multi.Clear();
  multi.AddItem(u"z");
  EXPECT_FALSE(multi.Selected(0));
  EXPECT_EQ(events, (std::vector<std::string>{"click 2"}));
}

// Listeners hear each change until they unsubscribe; a check box raises Click on a new
// value only, and nothing when disabled.
TEST(Events, ListenersHearEachChangeAndClickComesOnANewValue) {
  ListBox list("Lst", kAnywhere, 0, false);
  Label label("Etq", kAnywhere, 0, u"");
  CheckBox box("Cac", kAnywhere, 0, u"Afficher", 1);
  std::vector<int> clicks;
  box.Click = [&] { clicks.push_back(box.Value()); };
  for (const int v : {1, 0, 0, 1}) box.setValue(v);
  box.toggle();
  std::vector<std::pair<Change, int>> heard;
  const auto listen = [&](Change c, int row) { heard.emplace_back(c, row); };
  auto token = list.subscribe(listen);
  auto labelToken = label.subscribe(listen);
  auto boxToken = box.subscribe(listen);
  // A listener of some changes only is called for those only.
  std::vector<Change> shownOrHidden;
  auto visibility =
      list.subscribe([&](Change c, int) { shownOrHidden.push_back(c); }, maskOf(Change::Visible));
  list.AddItem(u"x");
  list.setList(0, u"y");
  list.RemoveItem(0);
  list.setVisible(false);
  list.Clear();
  label.setCaption(u"Total");
  box.setValue(1);
  token.reset();
  list.AddItem(u"z");
  const std::vector<std::pair<Change, int>> expected{
      {Change::RowAdded, 0}, {Change::RowChanged, 0}, {Change::RowRemoved, 0},
      {Change::Visible, -1}, {Change::RowsReset, -1}, {Change::Caption, -1},
      {Change::Value, -1}};
  EXPECT_EQ(heard, expected);
  EXPECT_EQ(shownOrHidden, std::vector<Change>{Change::Visible});
  box.setEnabled(false);
  box.toggle();
  EXPECT_EQ(clicks, (std::vector<int>{0, 1, 0, 1}));
  EXPECT_EQ(box.Value(), 1);
}

// A form loads once however often it is asked, and a close request unloads it only when its
// UnloadEvent allows: a modal show that ends with the form still open is a failure.
TEST(Events, AFormRefusesToUnloadUntilItsUnloadEventAllows) {
  Form form("Frm", 6015, 4215, u"Observations sur la tâche");
  int loads = 0;
  std::int16_t cancel = -1;
  form.LoadEvent = [&] { ++loads; };
  form.UnloadEvent = [&](std::int16_t& c) { c = cancel; };
  ScriptedServices services;
  for (int i = 0; i < 2; ++i) form.Load();
  const auto closeBox = [&](Form& f) {
    f.requestClose();  // refused the first time, allowed the second
    cancel = 0;
  };
  services.onModal(closeBox);
  EXPECT_THROW(services.ShowModal(form), Failure);
  services.onModal(closeBox);
  services.ShowModal(form);
  EXPECT_FALSE(form.isLoaded());
  form.Load();
  EXPECT_EQ(loads, 2);
}

}  // namespace
}  // namespace velmora::toolkit
