// The host platform's Boolean: 16 bits, True is -1, False is 0.
#pragma once

#include <cstdint>

namespace velmora {

using Boolean = std::int16_t;
inline constexpr Boolean kTrue = -1;
inline constexpr Boolean kFalse = 0;

inline constexpr Boolean toBoolean(bool b) {
  return b ? kTrue : kFalse;
}

}  // namespace velmora
