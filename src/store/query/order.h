// The one total order of the query language for <, <=, >= and the sorts: empty text
// first, then numbers by exact value (ties broken by text), then all other text by
// UTF-16 code unit. Dates and durations stored as digits thus compare as numbers.
#pragma once

#include "base/text.h"

namespace velmora::store {

// Optional sign, digits, optional fraction of digits: "12", "-3", "+0.50".
bool isQueryNumber(TextView text);

// Negative, zero or positive as a comes before, with or after b.
int compareOrdered(TextView a, TextView b);

}  // namespace velmora::store
