// The number of the Failure that a call raises, 0 when it raises none; its message goes to
// *message.
#pragma once

#include <string>

#include <velmora/base/failure.h>

namespace velmora::testing {

template <class Call>
long failureNumber(const Call& call, std::string* message = nullptr) {
  try {
    call();
  } catch (const Failure& failure) {
    if (message != nullptr) *message = failure.what();
    return failure.number();
  }
  return 0;
}

}  // namespace velmora::testing
