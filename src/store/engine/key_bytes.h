// The byte forms of keys and record bodies, the same in every backend.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <velmora/base/text.h>

namespace velmora::store {

// Keys and bodies are stored as UTF-16 big-endian bytes, so that the memcmp
// order of blobs (SQLite) and of bytea (PostgreSQL) is the order of UTF-16 code units.
std::vector<std::uint8_t> encodeText(TextView text);
Text decodeText(std::span<const std::uint8_t> bytes);
// The smallest byte string above every string that begins with prefix; empty when
// there is none (the prefix is all 0xFF).
std::vector<std::uint8_t> prefixUpperBound(std::vector<std::uint8_t> prefix);

}  // namespace velmora::store
