// Keys and record bodies as bytes, UTF-16BE, the same in every backend. Byte order is code
// unit order, so that a range of keys in the index is a range of text.
#include "store/engine/key_bytes.h"

namespace velmora::store {

std::vector<std::uint8_t> encodeText(TextView text) {
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() * 2);
  for (const char16_t unit : text) {
    bytes.push_back(static_cast<std::uint8_t>(unit >> 8));
    bytes.push_back(static_cast<std::uint8_t>(unit & 0xFF));
  }
  return bytes;
}

Text decodeText(std::span<const std::uint8_t> bytes) {
  Text text;
  text.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    text.push_back(static_cast<char16_t>((bytes[i] << 8) | bytes[i + 1]));
  }
  return text;
}

std::vector<std::uint8_t> prefixUpperBound(std::vector<std::uint8_t> prefix) {
  while (!prefix.empty()) {
    if (prefix.back() != 0xFF) {
      ++prefix.back();
      return prefix;
    }
    prefix.pop_back();
  }
  return prefix;
}

}  // namespace velmora::store
