// The one total order of the query language: empty text, then numbers by exact value, then
// other text by code unit. Texts are classified once so that sorts compare cheaply.
#include "store/query/order.h"

namespace velmora::store {

namespace {

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

// A number split into sign and digits with leading and trailing zeros removed, so that
// equal values have equal parts.
struct Decimal {
  bool negative = false;
  TextView whole;
  TextView fraction;
};

Decimal decimalOf(TextView text) {
  Decimal d;
  std::size_t i = 0;
  if (text[i] == u'-' || text[i] == u'+') {
    d.negative = text[i] == u'-';
    ++i;
  }
  const auto point = text.find(u'.', i);
  d.whole = text.substr(i, point == TextView::npos ? TextView::npos : point - i);
  d.fraction = point == TextView::npos ? TextView() : text.substr(point + 1);
  while (!d.whole.empty() && d.whole.front() == u'0') d.whole.remove_prefix(1);
  while (!d.fraction.empty() && d.fraction.back() == u'0') d.fraction.remove_suffix(1);
  if (d.whole.empty() && d.fraction.empty()) d.negative = false;  // -0 is 0
  return d;
}

int sign(int n) {
  return (n > 0) - (n < 0);
}

int compareMagnitude(const Decimal& a, const Decimal& b) {
  if (a.whole.size() != b.whole.size()) return a.whole.size() < b.whole.size() ? -1 : 1;
  if (const int c = sign(a.whole.compare(b.whole)); c != 0) return c;
  return sign(a.fraction.compare(b.fraction));  // digits after the point compare as text
}

int compareNumbers(TextView a, TextView b) {
  const Decimal x = decimalOf(a);
  const Decimal y = decimalOf(b);
  if (x.negative != y.negative) return x.negative ? -1 : 1;
  const int magnitude = compareMagnitude(x, y);
  return x.negative ? -magnitude : magnitude;
}

int rank(TextView text) {
  if (text.empty()) return 0;
  return isQueryNumber(text) ? 1 : 2;
}

}  // namespace

bool isQueryNumber(TextView text) {
  std::size_t i = 0;
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
  const std::size_t wholeStart = i;
  while (i < text.size() && isDigit(text[i])) ++i;
  if (i == wholeStart) return false;
  if (i == text.size()) return true;
  if (text[i] != u'.') return false;
  const std::size_t fractionStart = ++i;
  while (i < text.size() && isDigit(text[i])) ++i;
  return i > fractionStart && i == text.size();
}

static int compareRanked(TextView a, int ra, TextView b, int rb) {
  if (ra != rb) return ra < rb ? -1 : 1;
  if (ra == 1) {
    if (const int c = compareNumbers(a, b); c != 0) return c;
  }
  return sign(a.compare(b));
}

// Both texts plain digits, as dates and durations are: the same order as compareNumbers
// and then the text, without splitting them first.
static bool isPlainDigits(TextView text) {
  if (text.empty()) return false;
  for (const char16_t c : text) {
    if (!isDigit(c)) return false;
  }
  return true;
}

static int comparePlainDigits(TextView a, TextView b) {
  const auto significant = [](TextView digits) {
    std::size_t i = 0;
    while (i < digits.size() && digits[i] == u'0') ++i;
    return digits.substr(i);
  };
  const TextView x = significant(a);
  const TextView y = significant(b);
  if (x.size() != y.size()) return x.size() < y.size() ? -1 : 1;
  if (const int c = sign(x.compare(y)); c != 0) return c;
  return sign(a.compare(b));
}

int compareOrdered(TextView a, TextView b) {
  if (isPlainDigits(a) && isPlainDigits(b)) return comparePlainDigits(a, b);
  return compareRanked(a, rank(a), b, rank(b));
}

OrderedText::OrderedText(TextView text) : text_(text) {
  if (isPlainDigits(text)) {  // the common case: no sign, no fraction
    rank_ = 1;
    while (wholeAt_ < text.size() && text[wholeAt_] == u'0') ++wholeAt_;
    wholeLength_ = text.size() - wholeAt_;
    return;
  }
  rank_ = rank(text);
  if (rank_ != 1) return;
  const Decimal d = decimalOf(text_);
  negative_ = d.negative;
  wholeAt_ = static_cast<std::size_t>(d.whole.data() - text_.data());
  wholeLength_ = d.whole.size();
  fractionAt_ = d.fraction.empty() ? 0 : static_cast<std::size_t>(d.fraction.data() - text_.data());
  fractionLength_ = d.fraction.size();
}

int compareOrdered(const OrderedText& a, const OrderedText& b) {
  if (a.rank_ != b.rank_) return a.rank_ < b.rank_ ? -1 : 1;
  if (a.rank_ == 1) {
    const Decimal x{a.negative_, a.text_.substr(a.wholeAt_, a.wholeLength_),
                    a.text_.substr(a.fractionAt_, a.fractionLength_)};
    const Decimal y{b.negative_, b.text_.substr(b.wholeAt_, b.wholeLength_),
                    b.text_.substr(b.fractionAt_, b.fractionLength_)};
    if (x.negative != y.negative) return x.negative ? -1 : 1;
    const int magnitude = compareMagnitude(x, y);
    if (magnitude != 0) return x.negative ? -magnitude : magnitude;
  }
  return sign(a.text_.compare(b.text_));
}

}  // namespace velmora::store
