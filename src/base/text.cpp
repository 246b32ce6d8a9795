// The text helpers every layer shares: UTF-8 at the edges, positions counted from 1, numbers
// read and written the same way in any locale.
#include <velmora/base/text.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace velmora {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

void appendCodePoint(Text& out, char32_t cp) {
  if (cp >= 0x10000) {
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
  } else {
    out.push_back(static_cast<char16_t>(cp));
  }
}

// Length of a UTF-8 sequence from its lead byte, 0 when the byte cannot lead one.
int sequenceLength(unsigned char lead) {
  if (lead < 0x80) return 1;
  if ((lead >> 5) == 0x6) return 2;
  if ((lead >> 4) == 0xE) return 3;
  if ((lead >> 3) == 0x1E) return 4;
  return 0;
}

}  // namespace

Text fromUtf8(std::string_view utf8) {
  Text out;
  out.reserve(utf8.size());
  std::size_t i = 0;
  while (i < utf8.size()) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    const int len = sequenceLength(lead);
    if (len == 1) {
      out.push_back(lead);
      ++i;
      continue;
    }
    if (len == 0 || i + len > utf8.size()) {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    char32_t cp = lead & (0x7F >> len);
    bool ok = true;
    for (int k = 1; k < len; ++k) {
      const auto c = static_cast<unsigned char>(utf8[i + k]);
      if ((c >> 6) != 0x2) {
        ok = false;
        break;
      }
      cp = (cp << 6) | (c & 0x3F);
    }
    static constexpr std::array<char32_t, 5> kMinimum{0, 0, 0x80, 0x800, 0x10000};
    if (!ok || cp < kMinimum[len] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    appendCodePoint(out, cp);
    i += len;
  }
  return out;
}

std::string toUtf8(TextView text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = kReplacement;  // a lone surrogate has no UTF-8 form
    }
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

Text left(TextView v, std::ptrdiff_t n) {
  if (n <= 0) return {};
  return Text(v.substr(0, static_cast<std::size_t>(n)));
}

Text mid(TextView v, std::ptrdiff_t start, std::ptrdiff_t n) {
  if (start < 1 || n <= 0 || static_cast<std::size_t>(start) > v.size()) return {};
  return Text(v.substr(static_cast<std::size_t>(start - 1), static_cast<std::size_t>(n)));
}

Text mid(TextView v, std::ptrdiff_t start) {
  if (start < 1 || static_cast<std::size_t>(start) > v.size()) return {};
  return Text(v.substr(static_cast<std::size_t>(start - 1)));
}

Text trimBlanks(TextView v) {
  const auto first = v.find_first_not_of(u' ');
  if (first == TextView::npos) return {};
  const auto last = v.find_last_not_of(u' ');
  return Text(v.substr(first, last - first + 1));
}

std::ptrdiff_t instr(TextView hay, TextView needle, std::ptrdiff_t start) {
  if (start < 1 || static_cast<std::size_t>(start - 1) > hay.size()) return 0;
  const auto at = hay.find(needle, static_cast<std::size_t>(start - 1));
  return at == TextView::npos ? 0 : static_cast<std::ptrdiff_t>(at) + 1;
}

Text spaces(std::ptrdiff_t n) {
  return n > 0 ? Text(static_cast<std::size_t>(n), u' ') : Text{};
}

Text padRight(TextView v, std::ptrdiff_t width) {
  Text out(v);
  if (static_cast<std::ptrdiff_t>(out.size()) < width) out.append(width - out.size(), u' ');
  return out;
}

Text padLeft(TextView v, std::ptrdiff_t width) {
  const auto len = static_cast<std::ptrdiff_t>(v.size());
  return len >= width ? Text(v) : spaces(width - len) + Text(v);
}

bool isDecimalNumber(TextView v) {
  std::size_t i = 0;
  if (i < v.size() && (v[i] == u'-' || v[i] == u'+')) ++i;
  std::size_t digits = 0;
  while (i < v.size() && v[i] >= u'0' && v[i] <= u'9') ++i, ++digits;
  if (i < v.size() && v[i] == u'.') {
    ++i;
    while (i < v.size() && v[i] >= u'0' && v[i] <= u'9') ++i, ++digits;
  }
  return digits > 0 && i == v.size();
}

std::optional<double> parseNumber(TextView v) {
  const Text t = trimBlanks(v);
  if (!isDecimalNumber(t)) return std::nullopt;
  // from_chars reads the same in every locale (strtod would stop at "." in French) but
  // takes no "+": a leading plus is dropped first.
  std::string narrow = toUtf8(t);
  if (narrow.front() == '+') narrow.erase(0, 1);
  double value = 0;
  const auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), value);
  if (error == std::errc::result_out_of_range) {
    // Without an exponent only hundreds of digits get here: too large (a digit other than
    // 0 before the point) gives an infinity, as strtod does, too small gives zero.
    const bool negative = narrow.front() == '-';
    const auto whole = narrow.substr(0, narrow.find('.'));
    const bool large = whole.find_first_not_of("-0") != std::string::npos;
    const double magnitude = large ? std::numeric_limits<double>::infinity() : 0.0;
    return negative ? -magnitude : magnitude;
  }
  if (error != std::errc{} || end != narrow.data() + narrow.size()) return std::nullopt;
  return value;
}

Text numberText(long long n) {
  std::array<char, 24> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), n).ptr;
  return fromUtf8({digits.data(), static_cast<std::size_t>(end - digits.data())});
}

Text zeroPadded(double value, int digits) {
  const double rounded = std::round(value);  // halves away from zero, as the format does
  const bool negative = rounded < 0;
  std::string body = std::to_string(static_cast<long long>(std::fabs(rounded)));
  if (static_cast<int>(body.size()) < digits) body.insert(0, digits - body.size(), '0');
  return fromUtf8((negative ? "-" : "") + body);
}

}  // namespace velmora
