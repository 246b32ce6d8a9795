// The two helpers of the continue-on-error regime. A statement that fails is abandoned,
// its number kept in Err, and the next statement runs; a conditional whose test fails
// runs its true branch. Only Failure is caught: anything else is a bug and propagates.
#pragma once

#include <utility>

#include <velmora/base/failure.h>
#include "control/module_slots.h"

namespace velmora {

inline void recordFailure(const Failure& failure) {
  Err.Number = failure.number();
  Err.Description = fromUtf8(failure.what());
}

// Runs one statement; a failure is recorded instead of propagating.
template <class Statement>
void resumeNext(Statement&& statement) {
  try {
    std::forward<Statement>(statement)();
  } catch (const Failure& failure) {
    recordFailure(failure);
  }
}

// Evaluates the test of a conditional; a failure is recorded and counts as true.
template <class Test>
bool testOrTrue(Test&& test) {
  try {
    return std::forward<Test>(test)();
  } catch (const Failure& failure) {
    recordFailure(failure);
    return true;
  }
}

}  // namespace velmora
