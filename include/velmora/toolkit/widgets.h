// The kinds of child control the surface is made of, with the behaviour of events
// that the logic rests on:
//  - writing a check box's Value to a new value raises its Click;
//  - writing a text box's Text raises its Change;
//  - writing a list's ListIndex raises its Click, also for -1;
//  - a double click raises Click, then DblClick.
// Each also takes the planner's gestures, so that a host, a test or the command line
// can drive the surface with no screen. A gesture on a disabled control does nothing.
//
// Threads: a widget belongs to the thread of its control's session. Failures: a row or a
// caret out of range fails with errors::kInvalidCall (Failure::isInvalidCall()), in
// French, and changes nothing; an event procedure's failure raised by a gesture goes to
// the surface's FailureHandler, or to the caller without one.
#pragma once

#include <velmora/export.h>

#include <functional>
#include <vector>

#include <velmora/toolkit/control.h>

namespace velmora::toolkit {

class VELMORA_EXPORT Label : public Control {
 public:
  Label(std::string name, Geometry geometry, int tabIndex, Text caption);
  const Text& Caption() const { return caption_; }
  void setCaption(TextView caption);
  bool autoSize = false;

 private:
  Text caption_;
};

class VELMORA_EXPORT Frame : public Control {
 public:
  Frame(std::string name, Geometry geometry, int tabIndex)
      : Control(std::move(name), Kind::Frame, geometry, tabIndex) {}
};

class VELMORA_EXPORT CommandButton : public Control {
 public:
  CommandButton(std::string name, Geometry geometry, int tabIndex, Text caption);
  const Text& Caption() const { return caption_; }
  void setCaption(TextView caption);
  // A graphical button shows a picture instead of its caption.
  bool graphical = false;

  std::function<void()> Click;

  // Gesture: press the button (mouse or keyboard).
  void press();

 private:
  Text caption_;
};

class VELMORA_EXPORT CheckBox : public Control {
 public:
  CheckBox(std::string name, Geometry geometry, int tabIndex, Text caption, int value);
  const Text& Caption() const { return caption_; }
  void setCaption(TextView caption);
  int Value() const { return value_; }
  // Raises Click when the value changes.
  void setValue(int value);

  std::function<void()> Click;

  // Gesture: tick or untick.
  void toggle();

 private:
  Text caption_;
  int value_;
};

class VELMORA_EXPORT TextBox : public Control {
 public:
  TextBox(std::string name, Geometry geometry, int tabIndex, Text text = {});
  const Text& getText() const { return text_; }
  // Raises Change. The caret goes to the end of the new text, nothing selected.
  void setText(TextView text);
  int maxLength = 0;  // 0: no limit
  bool multiLine = false;
  bool readOnly = false;

  // The caret and the selected stretch, in code units from 0: SelStart is where the
  // stretch begins (the caret when nothing is selected) and SelLength how long it is.
  // Writing SelStart selects nothing; both are cut to the text and raise no event; a
  // negative value is an invalid call.
  int SelStart() const { return selStart_; }
  void setSelStart(int start);
  int SelLength() const { return selLength_; }
  void setSelLength(int length);
  Text SelText() const;
  // Replaces the selected stretch (inserts at the caret when nothing is selected) and
  // raises Change; the caret stands behind the new text.
  void setSelText(TextView text);

  std::function<void()> Change;
  // The key filter may replace the key code by 0, which cancels the key.
  std::function<void(int& keyAscii)> KeyPress;
  std::function<void()> LostFocus;

  // Gestures, as in an ordinary text box. A key goes through KeyPress, then replaces the
  // selected stretch or goes in at the caret (8, backspace, deletes the stretch or the
  // character before the caret); a text is typed key by key, as a paste is; the Delete
  // key deletes the stretch or the character behind the caret, and no KeyPress sees it;
  // select moves the caret or chooses a stretch (Home, End, arrows, the mouse) and raises
  // nothing; replaceText replaces the whole text as a dialog's editor does; leave leaves
  // the box.
  void typeKey(int keyAscii);
  void typeText(TextView text);
  void typeDelete();
  void select(int start, int length);
  void replaceText(TextView text);
  void leave();

 private:
  // Writes text with the caret at caret, nothing selected, and raises Change.
  void edit(Text text, int caret);

  Text text_;
  int selStart_ = 0;
  int selLength_ = 0;
};

class VELMORA_EXPORT ListBox : public Control {
 public:
  // multiSelect: a click toggles the row's mark and several rows can be marked.
  ListBox(std::string name, Geometry geometry, int tabIndex, bool multiSelect);

  bool multiSelect() const { return multiSelect_; }
  void Clear();
  void AddItem(TextView item);
  // The same, with the whole values of the text columns that the row cuts, for assistive
  // technology; they travel with the row (sorts, removals) and nothing else reads them.
  void AddItem(TextView item, std::vector<Text> wholeColumns);
  // Those values, or none when the row was added without them.
  const std::vector<Text>& wholeColumns(int index) const;
  // Fails with errors::kInvalidCall for a row that is not there.
  void RemoveItem(int index);
  int ListCount() const { return static_cast<int>(rows_.size()); }
  // "" at -1 or past the last row.
  const Text& List(int index) const;
  // Writes the row's text; errors::kInvalidCall for a row that is not there.
  void setList(int index, TextView item);
  int ListIndex() const { return listIndex_; }
  // Raises Click, also for -1 and also when the list is disabled; errors::kInvalidCall
  // below -1 or past the last row.
  void setListIndex(int index);
  // The row's mark; errors::kInvalidCall for a row that is not there.
  bool Selected(int index) const;
  void setSelected(int index, bool selected);
  // Exchanges two rows with their marks; for sorts that keep parallel lists together.
  // The entries are written in place and ListIndex stays where it is, unless
  // currentFollows answers true: then the current row travels with its row, without a
  // Click.
  void swapRows(int a, int b);
  std::function<bool()> currentFollows;

  std::function<void()> Click;
  std::function<void()> DblClick;

  // Gestures. click: a multi-select list toggles the row's mark and makes it current;
  // another list makes it current. doubleClick: the row ends marked and current, then
  // Click, then DblClick.
  void click(int index);
  void doubleClick(int index);

 private:
  void checkIndex(int index, const char* what) const;

  bool multiSelect_;
  std::vector<Text> rows_;
  std::vector<std::vector<Text>> wholeColumns_;
  std::vector<char> selected_;
  int listIndex_ = -1;
};

}  // namespace velmora::toolkit
