// The number of the Failure that a call raises, 0 when it raises none.
#pragma once

#include <velmora/base/failure.h>

namespace velmora::testing {

template <class Call>
long failureNumber(const Call& call) {
  try {
    call();
  } catch (const Failure& failure) {
    return failure.number();
  }
  return 0;
}

}  // namespace velmora::testing
