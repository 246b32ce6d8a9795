// Rows written out by hand, so that the expectations do not lean on the code under test:
// a column holds 25 characters at most, padded to 26; a number stands right in its width.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include <velmora/base/text.h>

namespace velmora::testing {

inline std::string col(std::string_view v) {
  Text t = fromUtf8(v);
  t.resize(std::min<std::size_t>(t.size(), 25));
  t.resize(26, u' ');
  return toUtf8(t);
}
inline std::string right(std::string_view v, std::size_t width) {
  return std::string(width - fromUtf8(v).size(), ' ') + std::string(v);
}

}  // namespace velmora::testing
