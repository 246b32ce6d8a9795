// The kinds of child control the surface is made of, with the behaviour of events
// that the logic rests on:
//  - writing a check box's Value to a new value raises its Click;
//  - writing a text box's Text raises its Change;
//  - writing a list's ListIndex raises its Click, also for -1;
//  - a double click raises Click, then DblClick.
// Each also takes the planner's gestures, so that a host, a test or the command line
// can drive the surface with no screen. A gesture on a disabled control does nothing.
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
  // Raises Change.
  void setText(TextView text);
  int maxLength = 0;  // 0: no limit
  bool multiLine = false;
  bool readOnly = false;

  std::function<void()> Change;
  // The key filter may replace the key code by 0, which cancels the key.
  std::function<void(int& keyAscii)> KeyPress;
  std::function<void()> LostFocus;

  // Gestures: type one key (8 is backspace), replace the whole text as a paste or a
  // dialog's editor does, and leave the box.
  void typeKey(int keyAscii);
  void typeText(TextView text);
  void replaceText(TextView text);
  void leave();

 private:
  Text text_;
};

class VELMORA_EXPORT ListBox : public Control {
 public:
  // multiSelect: a click toggles the row's mark and several rows can be marked.
  ListBox(std::string name, Geometry geometry, int tabIndex, bool multiSelect);

  bool multiSelect() const { return multiSelect_; }
  void Clear();
  void AddItem(TextView item);
  void RemoveItem(int index);
  int ListCount() const { return static_cast<int>(rows_.size()); }
  // "" at -1 or past the last row.
  const Text& List(int index) const;
  void setList(int index, TextView item);
  int ListIndex() const { return listIndex_; }
  // Raises Click, also for -1 and also when the list is disabled.
  void setListIndex(int index);
  bool Selected(int index) const;
  void setSelected(int index, bool selected);
  // Exchanges two rows with their marks; for sorts that keep parallel lists together.
  // The current row travels with its row, without a Click.
  void swapRows(int a, int b);

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
  std::vector<char> selected_;
  int listIndex_ = -1;
};

}  // namespace velmora::toolkit
