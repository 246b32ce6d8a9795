// The one total order of the query language for <, <=, >= and the sorts: empty text
// first, then numbers by exact value (ties broken by text), then all other text by
// UTF-16 code unit. Dates and durations stored as digits thus compare as numbers.
#pragma once

#include <string>

#include <velmora/base/text.h>

namespace velmora::store {

// Optional sign, digits, optional fraction of digits: "12", "-3", "+0.50".
bool isQueryNumber(TextView text);

// Negative, zero or positive as a comes before, with or after b.
int compareOrdered(TextView a, TextView b);

// A view of a text with its place in the order prepared once, for sorts that compare
// each text many times: its class and, when it is a number, the bounds of its digits.
// It does not own the text, which must outlive it.
class OrderedText {
 public:
  explicit OrderedText(TextView text);
  friend int compareOrdered(const OrderedText& a, const OrderedText& b);

 private:
  TextView text_;
  int rank_ = 0;  // 0 empty, 1 number, 2 other text
  bool negative_ = false;
  std::size_t wholeAt_ = 0, wholeLength_ = 0, fractionAt_ = 0, fractionLength_ = 0;
};

}  // namespace velmora::store
