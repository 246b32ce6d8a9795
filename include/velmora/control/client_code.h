// What a host checks before it hands a client code to Init. The control writes the code
// into its queries between double quotes, as documented: a double quote would end the
// value early, a "]" at its end or a "[" at its start would turn an exact match into a
// match on leading or trailing characters (other clients' templates under this code).
#pragma once

#include <velmora/base/text.h>
#include <velmora/export.h>
#include <velmora/store/database.h>

namespace velmora {

// Reads nothing. Fails with errors::kInvalidCall (Failure::isInvalidCall()), in French,
// when the code is not 5 characters or holds a double quote or a bracket; Init's bare
// client code must pass it.
VELMORA_EXPORT void checkClientCode(TextView code);

// True when the host's client file has the code's record, or when a task list or a
// template of either kind names it (an account may hold no client file at all). Reads
// through db only, on the calling thread; a missing client file or record is no failure,
// any other failure of the store (errors::kDatabase, errors::kBusy...) is thrown. Requires
// a code that checkClientCode accepts.
VELMORA_EXPORT bool clientKnown(const DatabaseRef& db, const Text& code);

}  // namespace velmora
