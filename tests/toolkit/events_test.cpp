// The behaviour of events that the control's logic rests on, and the gestures.
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include <velmora/toolkit/services.h>
#include <velmora/toolkit/widgets.h>
#include "support/failure_number.h"

namespace velmora::toolkit {
namespace {

using velmora::testing::failureNumber;

const Geometry kAnywhere{0, 0, 100, 100};

TEST(CheckBoxEvents, WritingANewValueRaisesClickAndTheSameValueDoesNot) {
  CheckBox box("Cac", kAnywhere, 0, u"Afficher", 1);
  std::vector<int> seen;
  box.Click = [&] { seen.push_back(box.Value()); };
  box.setValue(1);
  box.setValue(0);
  box.setValue(0);
  box.setValue(1);
  EXPECT_EQ(seen, (std::vector<int>{0, 1}));
}

TEST(CheckBoxEvents, ToggleIsIgnoredWhenDisabled) {
  CheckBox box("Cac", kAnywhere, 0, u"", 0);
  int clicks = 0;
  box.Click = [&] { ++clicks; };
  box.toggle();
  EXPECT_EQ(box.Value(), 1);
  box.setEnabled(false);
  box.toggle();
  EXPECT_EQ(box.Value(), 1);
  EXPECT_EQ(clicks, 1);
}

TEST(TextBoxEvents, EveryWriteRaisesChangeEvenOfTheSameText) {
  TextBox box("Txt", kAnywhere, 0);
  std::vector<Text> seen;
  box.Change = [&] { seen.push_back(box.getText()); };
  box.setText(u"25");
  box.setText(u"25");
  box.setText(u"");
  EXPECT_EQ(seen, (std::vector<Text>{u"25", u"25", u""}));
}

TEST(TextBoxEvents, ChangeMayRewriteTheTextOnTheSameStack) {
  // The total's box converts minutes to hours inside the write; the writer reads the
  // converted text on its next statement.
  TextBox box("Txt_Duree", kAnywhere, 0);
  bool guard = true;
  box.Change = [&] {
    if (!guard) return;
    guard = false;
    box.setText(box.getText() + u"h");
    guard = true;
  };
  box.setText(u"1");
  EXPECT_EQ(box.getText(), u"1h");
}

TEST(TextBoxGestures, KeyFilterCanCancelKeysAndBackspaceErases) {
  TextBox box("Txt_DureeSoin", kAnywhere, 0);
  box.maxLength = 3;
  box.KeyPress = [](int& key) {
    if (key != 8 && (key < '0' || key > '9')) key = 0;
  };
  int changes = 0;
  box.Change = [&] { ++changes; };
  box.typeText(u"1a2.3-4");
  EXPECT_EQ(box.getText(), u"123");  // letters filtered, the fourth digit past the limit
  EXPECT_EQ(changes, 3);
  box.typeKey(8);
  EXPECT_EQ(box.getText(), u"12");
  box.replaceText(u"98765");
  EXPECT_EQ(box.getText(), u"987");  // a paste is cut to the limit, not filtered
}

// An ordinary text box: keys go in at the caret and replace the selected stretch.
TEST(TextBoxGestures, KeysActAtTheCaretAndOnTheSelection) {
  struct Case {
    const char16_t* text;
    int start;
    int length;
    int key;  // 8 backspace, 127 the Delete key
    const char16_t* after;
    int caret;
  };
  const std::array<Case, 11> cases{{
      {u"15", 0, 2, '4', u"4", 1},
      {u"15", 0, 0, '4', u"415", 1},
      {u"15", 1, 0, '4', u"145", 2},
      {u"145", 1, 1, 8, u"15", 1},
      {u"145", 1, 0, 8, u"45", 0},
      {u"145", 0, 0, 8, u"145", 0},
      {u"145", 1, 0, 127, u"15", 1},
      {u"145", 3, 0, 127, u"145", 3},
      {u"145", 0, 3, 127, u"", 0},
      {u"12345", 1, 2, '9', u"1945", 2},
      {u"12345", 1, 0, '9', u"12345", 1},  // at most five
  }};
  for (const Case& c : cases) {
    TextBox box("Txt_DureeSoin", kAnywhere, 0, c.text);
    box.maxLength = 5;
    box.setSelStart(c.start);
    box.setSelLength(c.length);
    if (c.key == 127) {
      box.typeDelete();
    } else {
      box.typeKey(c.key);
    }
    EXPECT_EQ(box.getText(), c.after) << toUtf8(c.text) << " key " << c.key;
    EXPECT_EQ(box.SelStart(), c.caret) << toUtf8(c.text) << " key " << c.key;
    EXPECT_EQ(box.SelLength(), 0);
  }
  TextBox box("Txt", kAnywhere, 0);
  box.setText(u"abcd");
  EXPECT_EQ(box.SelStart(), 4);  // a written text leaves the caret at its end
  box.select(1, 9);
  EXPECT_EQ(box.SelText(), u"bcd");  // cut to the text
  box.setSelText(u"X");
  EXPECT_EQ(box.getText(), u"aX");
  EXPECT_EQ(failureNumber([&] { box.setSelStart(-1); }), errors::kInvalidCall);
}

TEST(TextBoxGestures, ReadOnlyAndDisabledBoxesTakeNoKeys) {
  TextBox box("Txt", kAnywhere, 0, u"abc");
  box.readOnly = true;
  box.typeKey('d');
  box.replaceText(u"x");
  EXPECT_EQ(box.getText(), u"abc");
  box.readOnly = false;
  box.setEnabled(false);
  box.typeKey('d');
  EXPECT_EQ(box.getText(), u"abc");
}

class ListBoxTest : public ::testing::Test {
 protected:
  ListBox list{"Lst", kAnywhere, 0, false};
  ListBox multi{"Lst_Possible", kAnywhere, 0, true};
  std::vector<std::string> events;

  void SetUp() override {
    for (ListBox* l : {&list, &multi}) {
      for (const char16_t* row : {u"a", u"b", u"c"}) l->AddItem(row);
      l->Click = [this, l] { events.push_back("click " + std::to_string(l->ListIndex())); };
      l->DblClick = [this, l] { events.push_back("dbl " + std::to_string(l->ListIndex())); };
    }
  }
};

TEST_F(ListBoxTest, WritingListIndexRaisesClickAlsoForMinusOneAndWhenDisabled) {
  list.setListIndex(1);
  list.setEnabled(false);
  list.setListIndex(-1);
  EXPECT_EQ(events, (std::vector<std::string>{"click 1", "click -1"}));
}

TEST_F(ListBoxTest, ListIndexOutOfRangeFailsClearly) {
  try {
    list.setListIndex(3);
    FAIL() << "no failure";
  } catch (const Failure& f) {
    EXPECT_EQ(f.number(), errors::kInvalidCall);
    EXPECT_NE(std::string(f.what()).find("Lst"), std::string::npos);
  }
  EXPECT_EQ(list.ListIndex(), -1);
}

TEST_F(ListBoxTest, ReadingPastEitherEndGivesEmptyText) {
  EXPECT_EQ(list.List(-1), u"");
  EXPECT_EQ(list.List(3), u"");
  EXPECT_EQ(list.List(2), u"c");
}

TEST_F(ListBoxTest, DoubleClickRaisesClickThenDblClick) {
  list.doubleClick(2);
  EXPECT_EQ(events, (std::vector<std::string>{"click 2", "dbl 2"}));
}

TEST_F(ListBoxTest, ClickTogglesMarksOnlyInAMultiSelectList) {
  multi.click(1);
  multi.click(2);
  multi.click(1);
  EXPECT_FALSE(multi.Selected(1));
  EXPECT_TRUE(multi.Selected(2));
  list.click(1);
  EXPECT_FALSE(list.Selected(1));
  EXPECT_EQ(list.ListIndex(), 1);
}

TEST_F(ListBoxTest, DoubleClickLeavesTheRowMarkedEvenIfItWasMarkedBefore) {
  multi.click(0);
  multi.doubleClick(0);
  EXPECT_TRUE(multi.Selected(0));
  multi.doubleClick(2);
  EXPECT_TRUE(multi.Selected(2));
}

TEST_F(ListBoxTest, GesturesOnADisabledListDoNothing) {
  list.setEnabled(false);
  list.click(1);
  list.doubleClick(1);
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(list.ListIndex(), -1);
}

TEST_F(ListBoxTest, RemovingRowsKeepsTheCurrentRowOnItsItem) {
  list.setListIndex(2);
  list.RemoveItem(0);
  EXPECT_EQ(list.ListIndex(), 1);
  EXPECT_EQ(list.List(list.ListIndex()), u"c");
  list.RemoveItem(1);
  EXPECT_EQ(list.ListIndex(), -1);
  EXPECT_EQ(list.ListCount(), 1);
  EXPECT_EQ(events.size(), 1u);  // removals raise no Click
}

TEST_F(ListBoxTest, SwapCarriesTheMarksAndTheCurrentRowOnlyWhenAsked) {
  multi.setSelected(0, true);
  multi.setListIndex(0);
  multi.swapRows(0, 2);
  EXPECT_EQ(multi.List(0), u"c");
  EXPECT_EQ(multi.List(2), u"a");
  EXPECT_TRUE(multi.Selected(2));
  EXPECT_FALSE(multi.Selected(0));
  EXPECT_EQ(multi.ListIndex(), 0);  // written in place
  multi.currentFollows = [] { return true; };
  multi.swapRows(0, 2);
  EXPECT_EQ(multi.ListIndex(), 2);
  EXPECT_EQ(events.size(), 1u);
}

TEST_F(ListBoxTest, ClearEndsTheCurrentRowAndTheMarks) {
  multi.setSelected(1, true);
  multi.setListIndex(1);
  multi.Clear();
  EXPECT_EQ(multi.ListCount(), 0);
  EXPECT_EQ(multi.ListIndex(), -1);
  multi.AddItem(u"z");
  EXPECT_FALSE(multi.Selected(0));
}

TEST(GestureFailures, GoToTheHandlerWhenThereIsOneAndPropagateOtherwise) {
  CommandButton button("Cmd", kAnywhere, 0, u"OK");
  button.Click = [] { throw Failure(errors::kRecordNotFound, "no such record"); };
  EXPECT_THROW(button.press(), Failure);
  auto handler = std::make_shared<FailureHandler>();
  std::vector<long> seen;
  *handler = [&](const Failure& f) { seen.push_back(f.number()); };
  button.setFailureHandler(handler);
  button.press();
  EXPECT_EQ(seen, (std::vector<long>{errors::kRecordNotFound}));
}

TEST(Views, ListenersHearEachChangeUntilTheyUnsubscribe) {
  ListBox list("Lst", kAnywhere, 0, false);
  std::vector<std::pair<Change, int>> heard;
  auto token = list.subscribe([&](Change c, int row) { heard.emplace_back(c, row); });
  // A listener of some changes only is called for those only.
  std::vector<Change> shownOrHidden;
  auto visibility =
      list.subscribe([&](Change c, int) { shownOrHidden.push_back(c); }, maskOf(Change::Visible));
  list.AddItem(u"x");
  list.setList(0, u"y");
  list.setVisible(false);
  list.Clear();
  token.reset();
  list.AddItem(u"z");
  const std::vector<std::pair<Change, int>> expected{{Change::RowAdded, 0},
                                                     {Change::RowChanged, 0},
                                                     {Change::Visible, -1},
                                                     {Change::RowsReset, -1}};
  EXPECT_EQ(heard, expected);
  EXPECT_EQ(shownOrHidden, std::vector<Change>{Change::Visible});
}

class TestForm : public Form {
 public:
  TestForm() : Form("Frm", 6015, 4215, u"Observations sur la tâche") {
    LoadEvent = [this] {
      ++loads;
      allowClose = false;
    };
    UnloadEvent = [this](std::int16_t& cancel) {
      if (!allowClose) cancel = -1;
    };
  }
  int loads = 0;
  bool allowClose = false;
};

TEST(Forms, UnloadCanBeRefusedAndEachLoadRunsLoadAgain) {
  TestForm form;
  form.Load();
  form.Load();
  EXPECT_EQ(form.loads, 1);
  form.requestClose();
  EXPECT_TRUE(form.isLoaded());
  form.allowClose = true;
  EXPECT_TRUE(form.Unload());
  form.Load();
  EXPECT_EQ(form.loads, 2);
  EXPECT_FALSE(form.Unload());
}

TEST(ScriptedServicesTest, AnswersInOrderAndFailsClearlyWhenNothingIsScripted) {
  ScriptedServices services;
  services.answer(kMsgBoxNo);
  EXPECT_EQ(services.MsgBox(u"Etes-vous sûr ?", kStyleYesNoQuestion, u"Message TALVERANE"),
            kMsgBoxNo);
  ASSERT_EQ(services.questions().size(), 1u);
  EXPECT_EQ(services.questions()[0].title, u"Message TALVERANE");
  EXPECT_EQ(services.questions()[0].style, 36);
  EXPECT_THROW(services.MsgBox(u"?", 36, u"t"), Failure);

  TestForm form;
  form.Load();
  services.onModal([](Form& f) { f.requestClose(); });  // refused: the form stays open
  EXPECT_THROW(services.ShowModal(form), Failure);
  services.onModal([](Form& f) {
    static_cast<TestForm&>(f).allowClose = true;
    f.Unload();
  });
  services.ShowModal(form);
  EXPECT_FALSE(form.isLoaded());
  EXPECT_EQ(services.modalShows(), 2);
}

}  // namespace
}  // namespace velmora::toolkit
