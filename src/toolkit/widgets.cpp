#include <velmora/toolkit/widgets.h>

#include <string>
#include <utility>

namespace velmora::toolkit {

namespace {
const Text kNoRow;
}

Label::Label(std::string name, Geometry geometry, int tabIndex, Text caption)
    : Control(std::move(name), Kind::Label, geometry, tabIndex), caption_(std::move(caption)) {}

void Label::setCaption(TextView caption) {
  caption_ = Text(caption);
  notify(Change::Caption);
}

CommandButton::CommandButton(std::string name, Geometry geometry, int tabIndex, Text caption)
    : Control(std::move(name), Kind::CommandButton, geometry, tabIndex),
      caption_(std::move(caption)) {}

void CommandButton::setCaption(TextView caption) {
  caption_ = Text(caption);
  notify(Change::Caption);
}

void CommandButton::press() {
  if (!Enabled()) return;
  dispatchGesture(Click);
}

CheckBox::CheckBox(std::string name, Geometry geometry, int tabIndex, Text caption, int value)
    : Control(std::move(name), Kind::CheckBox, geometry, tabIndex),
      caption_(std::move(caption)),
      value_(value) {}

void CheckBox::setCaption(TextView caption) {
  caption_ = Text(caption);
  notify(Change::Caption);
}

void CheckBox::setValue(int value) {
  if (value == value_) return;
  value_ = value;
  notify(Change::Value);
  if (Click) Click();
}

void CheckBox::toggle() {
  if (!Enabled()) return;
  dispatchGesture([this] { setValue(value_ == 1 ? 0 : 1); });
}

TextBox::TextBox(std::string name, Geometry geometry, int tabIndex, Text text)
    : Control(std::move(name), Kind::TextBox, geometry, tabIndex), text_(std::move(text)) {}

void TextBox::setText(TextView text) {
  text_ = Text(text);
  notify(Change::Text);
  if (Change) Change();
}

void TextBox::typeKey(int keyAscii) {
  if (!Enabled() || readOnly) return;
  dispatchGesture([this, keyAscii] {
    int key = keyAscii;
    if (KeyPress) KeyPress(key);
    if (key == 0) return;
    if (key == 8) {
      if (!text_.empty()) setText(TextView(text_).substr(0, text_.size() - 1));
      return;
    }
    if (maxLength > 0 && static_cast<int>(text_.size()) >= maxLength) return;
    Text next = text_;
    next.push_back(static_cast<char16_t>(key));
    setText(next);
  });
}

void TextBox::typeText(TextView text) {
  for (const char16_t c : text) typeKey(c);
}

void TextBox::replaceText(TextView text) {
  if (!Enabled() || readOnly) return;
  Text next(text);
  if (maxLength > 0 && static_cast<int>(next.size()) > maxLength) next.resize(maxLength);
  dispatchGesture([this, next] { setText(next); });
}

void TextBox::leave() {
  dispatchGesture(LostFocus);
}

ListBox::ListBox(std::string name, Geometry geometry, int tabIndex, bool multiSelect)
    : Control(std::move(name), Kind::ListBox, geometry, tabIndex), multiSelect_(multiSelect) {}

void ListBox::checkIndex(int index, const char* what) const {
  if (index < 0 || index >= ListCount()) {
    throw Failure(errors::kInvalidCall, std::string("invalid call: ") + what + " of list " +
                                            name() + " at row " + std::to_string(index) + " of " +
                                            std::to_string(ListCount()));
  }
}

void ListBox::Clear() {
  rows_.clear();
  selected_.clear();
  listIndex_ = -1;
  notify(Change::RowsReset);
}

void ListBox::AddItem(TextView item) {
  rows_.emplace_back(item);
  selected_.push_back(0);
  notify(Change::RowAdded, ListCount() - 1);
}

void ListBox::RemoveItem(int index) {
  checkIndex(index, "RemoveItem");
  rows_.erase(rows_.begin() + index);
  selected_.erase(selected_.begin() + index);
  // The current row goes with its row; rows behind it move up by one.
  if (listIndex_ == index) {
    listIndex_ = -1;
  } else if (listIndex_ > index) {
    --listIndex_;
  }
  notify(Change::RowRemoved, index);
}

const Text& ListBox::List(int index) const {
  if (index < 0 || index >= ListCount()) return kNoRow;
  return rows_[index];
}

void ListBox::setList(int index, TextView item) {
  checkIndex(index, "List");
  rows_[index] = Text(item);
  notify(Change::RowChanged, index);
}

void ListBox::setListIndex(int index) {
  if (index < -1 || index >= ListCount()) {
    throw Failure(errors::kInvalidCall, "invalid call: ListIndex " + std::to_string(index) +
                                            " of list " + name() + " with " +
                                            std::to_string(ListCount()) + " rows");
  }
  listIndex_ = index;
  notify(Change::ListIndex, index);
  if (Click) Click();
}

bool ListBox::Selected(int index) const {
  checkIndex(index, "Selected");
  return selected_[index] != 0;
}

void ListBox::setSelected(int index, bool selected) {
  checkIndex(index, "Selected");
  selected_[index] = selected ? 1 : 0;
  notify(Change::RowSelected, index);
}

void ListBox::swapRows(int a, int b) {
  checkIndex(a, "swap");
  checkIndex(b, "swap");
  if (a == b) return;
  std::swap(rows_[a], rows_[b]);
  std::swap(selected_[a], selected_[b]);
  // The current row travels with its row, so that an action under way (an open edit,
  // a chosen row) stays on the item the planner chose. No Click: nothing was chosen anew.
  if (listIndex_ == a) {
    listIndex_ = b;
  } else if (listIndex_ == b) {
    listIndex_ = a;
  }
  notify(Change::RowChanged, a);
  notify(Change::RowChanged, b);
}

void ListBox::click(int index) {
  if (!Enabled() || index < 0 || index >= ListCount()) return;
  dispatchGesture([this, index] {
    if (multiSelect_) setSelected(index, !Selected(index));
    setListIndex(index);
  });
}

void ListBox::doubleClick(int index) {
  if (!Enabled() || index < 0 || index >= ListCount()) return;
  dispatchGesture([this, index] {
    if (multiSelect_) setSelected(index, true);
    setListIndex(index);
    if (DblClick) DblClick();
  });
}

}  // namespace velmora::toolkit
