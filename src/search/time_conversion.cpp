// The times a host hands over with a bare client code, HH:MM or decimal hours, turned
// into the four-digit times of the template keys. Digits that are no number fail.
#include "search/time_conversion.h"

#include <cmath>

#include <velmora/base/failure.h>

namespace velmora::search {

namespace {

double numberOrFail(TextView v) {
  const auto number = parseNumber(v);
  if (!number) {
    throw Failure(errors::kTypeMismatch,
                  "type incompatible : « " + toUtf8(v) + " » n'est pas un nombre");
  }
  return *number;
}

}  // namespace

Text minutesToFourDigit(TextView hhmm) {
  const double minutes = numberOrFail(mid(hhmm, 4, 2));
  const double hundredths = std::floor(minutes / 0.6 + 0.5);
  return left(hhmm, 2) + zeroPadded(hundredths, 2);
}

Text decimalToFourDigit(TextView hours) {
  // French hosts write the decimal comma; both separators are accepted.
  Text normalised(hours);
  for (auto& c : normalised) {
    if (c == u',') c = u'.';
  }
  return zeroPadded(numberOrFail(normalised) * 100.0, 4);
}

}  // namespace velmora::search
