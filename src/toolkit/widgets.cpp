// The toolkit's widgets as the control's procedures use them: list, text, check and command
// boxes, labels and the frame, with the events their gestures fire.
#include <velmora/toolkit/widgets.h>

#include <algorithm>
#include <string>
#include <utility>

namespace velmora::toolkit {

namespace {
const Text kNoRow;
const std::vector<Text> kNoColumns;
}  // namespace

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
    : Control(std::move(name), Kind::TextBox, geometry, tabIndex),
      text_(std::move(text)),
      selStart_(static_cast<int>(text_.size())) {}

void TextBox::setText(TextView text) {
  edit(Text(text), static_cast<int>(text.size()));
}

void TextBox::edit(Text text, int caret) {
  text_ = std::move(text);
  selStart_ = caret;
  selLength_ = 0;
  notify(Change::Text);
  if (Change) Change();
}

void TextBox::setSelStart(int start) {
  if (start < 0) {
    throw Failure(errors::kInvalidCall,
                  "appel non valide : SelStart " + std::to_string(start) + " de " + name());
  }
  select(start, 0);
}

void TextBox::setSelLength(int length) {
  if (length < 0) {
    throw Failure(errors::kInvalidCall,
                  "appel non valide : SelLength " + std::to_string(length) + " de " + name());
  }
  select(selStart_, length);
}

Text TextBox::SelText() const {
  return text_.substr(static_cast<std::size_t>(selStart_), static_cast<std::size_t>(selLength_));
}

void TextBox::setSelText(TextView text) {
  Text next = text_;
  next.replace(static_cast<std::size_t>(selStart_), static_cast<std::size_t>(selLength_), text);
  edit(std::move(next), selStart_ + static_cast<int>(text.size()));
}

void TextBox::select(int start, int length) {
  const int size = static_cast<int>(text_.size());
  selStart_ = std::clamp(start, 0, size);
  selLength_ = std::clamp(length, 0, size - selStart_);
  notify(Change::Selection);
}

void TextBox::typeKey(int keyAscii) {
  if (!Enabled() || readOnly) return;
  dispatchGesture([this, keyAscii] {
    int key = keyAscii;
    if (KeyPress) KeyPress(key);
    if (key == 0) return;
    if (key == 8) {
      if (selLength_ == 0) {
        if (selStart_ == 0) return;
        select(selStart_ - 1, 1);
      }
      setSelText({});
      return;
    }
    const auto kept = static_cast<int>(text_.size()) - selLength_;
    if (maxLength > 0 && kept >= maxLength) return;
    const auto typed = static_cast<char16_t>(key);
    setSelText(TextView(&typed, 1));
  });
}

void TextBox::typeText(TextView text) {
  for (const char16_t c : text) typeKey(c);
}

void TextBox::typeDelete() {
  if (!Enabled() || readOnly) return;
  dispatchGesture([this] {
    if (selLength_ == 0) {
      if (selStart_ == static_cast<int>(text_.size())) return;
      select(selStart_, 1);
    }
    setSelText({});
  });
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
    throw Failure(errors::kInvalidCall, std::string("appel non valide : ") + what +
                                            " de la liste " + name() + " à la ligne " +
                                            std::to_string(index) + " sur " +
                                            std::to_string(ListCount()));
  }
}

void ListBox::Clear() {
  rows_.clear();
  wholeColumns_.clear();
  selected_.clear();
  listIndex_ = -1;
  notify(Change::RowsReset);
}

void ListBox::AddItem(TextView item) {
  AddItem(item, {});
}

void ListBox::AddItem(TextView item, std::vector<Text> wholeColumns) {
  rows_.emplace_back(item);
  wholeColumns_.push_back(std::move(wholeColumns));
  selected_.push_back(0);
  notify(Change::RowAdded, ListCount() - 1);
}

const std::vector<Text>& ListBox::wholeColumns(int index) const {
  if (index < 0 || index >= ListCount()) return kNoColumns;
  return wholeColumns_[index];
}

void ListBox::RemoveItem(int index) {
  checkIndex(index, "RemoveItem");
  rows_.erase(rows_.begin() + index);
  wholeColumns_.erase(wholeColumns_.begin() + index);
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
    throw Failure(errors::kInvalidCall, "appel non valide : ListIndex " + std::to_string(index) +
                                            " de la liste " + name() + " de " +
                                            std::to_string(ListCount()) + " lignes");
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
  checkIndex(a, "échange");
  checkIndex(b, "échange");
  if (a == b) return;
  std::swap(rows_[a], rows_[b]);
  std::swap(wholeColumns_[a], wholeColumns_[b]);
  std::swap(selected_[a], selected_[b]);
  // No Click either way: nothing was chosen anew.
  if (currentFollows && currentFollows()) {
    if (listIndex_ == a) {
      listIndex_ = b;
    } else if (listIndex_ == b) {
      listIndex_ = a;
    }
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
