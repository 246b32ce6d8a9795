// The two helpers of the continue-on-error regime. A statement that fails is abandoned,
// its number kept in Err, and the next statement runs; a conditional whose test fails
// runs its true branch. Only Failure is caught: anything else is a bug and propagates.
#pragma once

#include <utility>

#include <velmora/base/failure.h>
#include "control/session_state.h"

namespace velmora {

inline void recordFailure(ErrObject& err, const Failure& failure) {
  err.Number = failure.number();
  err.Description = fromUtf8(failure.what());
}

// Into the error object of the session in use.
inline void recordFailure(const Failure& failure) {
  recordFailure(Err(), failure);
}

// Runs one statement; a failure is recorded in err instead of propagating.
template <class Statement>
void resumeNext(ErrObject& err, Statement&& statement) {
  try {
    std::forward<Statement>(statement)();
  } catch (const Failure& failure) {
    recordFailure(err, failure);
  }
}

// Runs one statement; a failure is recorded in the session in use.
template <class Statement>
void resumeNext(Statement&& statement) {
  resumeNext(Err(), std::forward<Statement>(statement));
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
