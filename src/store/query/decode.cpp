// The decoding stage of a query: keys and record bodies read straight from their stored
// UTF-16BE bytes. Only the attributes a plan wants are decoded, as views of one reused
// buffer, so that a record that fails the conditions costs no allocation.
#include "store/query/stages.h"

namespace velmora::store {

namespace {

char16_t unitAt(std::span<const std::uint8_t> bytes, std::size_t unit) {
  return static_cast<char16_t>((bytes[2 * unit] << 8) | bytes[2 * unit + 1]);
}

}  // namespace

void decodeKey(std::span<const std::uint8_t> bytes, Text& key) {
  key.resize(bytes.size() / 2);
  for (std::size_t u = 0; u < key.size(); ++u) key[u] = unitAt(bytes, u);
}

// Reads the wanted attributes (ascending) straight from the stored UTF-16BE text form,
// stopping after the last one wanted. An absent attribute counts as one empty value.
void decodeAttributes(std::span<const std::uint8_t> bytes, const std::vector<int>& wanted,
                      Scratch& scratch) {
  const std::size_t units = bytes.size() / 2;
  Text& body = scratch.body;
  body.resize(units);  // never grows below: the views stay valid
  scratch.values.resize(wanted.size());
  for (auto& values : scratch.values) values.clear();
  std::size_t slot = 0;
  std::size_t u = 0;
  for (int attribute = 1; slot < wanted.size(); ++attribute, ++u) {
    if (attribute == wanted[slot]) {
      auto& values = scratch.values[slot++];
      std::size_t begin = u;
      for (; u < units; ++u) {
        const char16_t unit = unitAt(bytes, u);
        if (unit == kAttributeMark) break;
        if (unit == kValueMark) {
          values.emplace_back(body.data() + begin, u - begin);
          begin = u + 1;
          continue;
        }
        body[u] = unit;
      }
      values.emplace_back(body.data() + begin, u - begin);
    } else {
      while (u < units && unitAt(bytes, u) != kAttributeMark) ++u;
    }
    if (u >= units) break;
  }
  for (; slot < wanted.size(); ++slot) scratch.values[slot].emplace_back();
}

}  // namespace velmora::store
