// A hash map keyed by Text that can be searched with a TextView, without a copy.
#pragma once

#include <functional>
#include <unordered_map>

#include <velmora/base/text.h>

namespace velmora {

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(TextView v) const { return std::hash<TextView>{}(v); }
};

struct TextEqual {
  using is_transparent = void;
  bool operator()(TextView a, TextView b) const { return a == b; }
};

template <class Value>
using TextMap = std::unordered_map<Text, Value, TextHash, TextEqual>;

}  // namespace velmora
