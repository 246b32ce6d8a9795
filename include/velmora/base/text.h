// The handful of text helpers that every layer shares. All text is UTF-16; positions
// count code units from 1, as the control's documented algorithms do. Every function here
// is pure (any thread, no locale) and none fails: an out-of-range position gives what is
// there, possibly "".
#pragma once

#include <velmora/export.h>

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

using Text = std::u16string;
using TextView = std::u16string_view;

// UTF-8 at the edges only (files, terminal, command line).
VELMORA_EXPORT Text fromUtf8(std::string_view utf8);
VELMORA_EXPORT std::string toUtf8(TextView text);

// u"..." literals are UTF-16 already; this is for narrow literals in tests and tools.
inline Text operator""_t(const char* s, std::size_t n) {
  return fromUtf8({s, n});
}

// Leftmost n code units (all of it when shorter).
VELMORA_EXPORT Text left(TextView v, std::ptrdiff_t n);
// n code units from 1-based position start; what is there when too short, "" past the end.
VELMORA_EXPORT Text mid(TextView v, std::ptrdiff_t start, std::ptrdiff_t n);
// Everything from 1-based position start.
VELMORA_EXPORT Text mid(TextView v, std::ptrdiff_t start);
// Removes blanks (U+0020 only) at both ends, as the control's trims do.
VELMORA_EXPORT Text trimBlanks(TextView v);
// 1-based position of needle in hay from position start, 0 when absent.
VELMORA_EXPORT std::ptrdiff_t instr(TextView hay, TextView needle, std::ptrdiff_t start = 1);
VELMORA_EXPORT Text spaces(std::ptrdiff_t n);
// v followed by blanks up to width; v unchanged when it is that long already.
VELMORA_EXPORT Text padRight(TextView v, std::ptrdiff_t width);
// Blanks then v, so that the result is width long; v unchanged when it is that long.
VELMORA_EXPORT Text padLeft(TextView v, std::ptrdiff_t width);

// A decimal number as written by people: optional sign, digits, optional fraction.
VELMORA_EXPORT bool isDecimalNumber(TextView v);
// The value of a text that is a number, allowing surrounding blanks; nothing otherwise.
VELMORA_EXPORT std::optional<double> parseNumber(TextView v);
// The text of a whole number, as the host platform prints it ("-5", "1500").
VELMORA_EXPORT Text numberText(long long n);
// A number rounded to whole and written with at least `digits` digits, zeros on the left:
// the formats "00", "0000" and "000000".
VELMORA_EXPORT Text zeroPadded(double value, int digits);

}  // namespace velmora
