// What a host checks before it hands a client code to Init. The control writes the code
// into its queries between double quotes, as documented: a double quote would end the
// value early, a "]" at its end or a "[" at its start would turn an exact match into a
// match on leading or trailing characters (other clients' templates under this code).
#pragma once

#include <velmora/base/text.h>
#include <velmora/export.h>
#include <velmora/store/database.h>

namespace velmora {

// Fails with errors::kInvalidCall, in French, when the code is not 5 characters or holds
// a double quote or a bracket.
VELMORA_EXPORT void checkClientCode(TextView code);

// True when the host's client file has the code's record, or when a task list or a
// template of either kind names it (an account may hold no client file at all).
VELMORA_EXPORT bool clientKnown(const DatabaseRef& db, const Text& code);

}  // namespace velmora
