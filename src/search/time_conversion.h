// The two notations in which a host hands over the times of a bare client code, turned
// into the four-digit times of the template keys: two digits of hours, then two of
// hundredths of an hour (08:30 is 0850). Both fail with the type-mismatch error when the
// digits are not a number, so that a search under continue on error keeps its value empty.
#pragma once

#include <velmora/base/text.h>

namespace velmora::search {

// "HH:MM": characters 1-2 unchanged, then the minutes of characters 4-5 in hundredths,
// rounded to the nearest ("08:01" is "0802", "08:59" is "0898"). Character 3 is not read.
Text minutesToFourDigit(TextView hhmm);
// A number of hours with decimals, "8.5" or "8,5", times 100 in the format "0000".
Text decimalToFourDigit(TextView hours);

}  // namespace velmora::search
