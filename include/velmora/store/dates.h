// NorvikDates: internal dates are day counts from 31/12/1967 (day 0), written with
// five digits for present-day dates; the text form is French, dd/mm/yyyy.
#pragma once

#include <velmora/export.h>

#include <velmora/base/text.h>

namespace velmora {

class VELMORA_EXPORT NorvikDates {
 public:
  // Internal date (a day count as text) to "dd/mm/yyyy". Text that is not a whole
  // number fails with errors::kTypeMismatch.
  Text DateVersTexte(const Text& v) const;
  // "dd/mm/yyyy" (also d/m/yyyy and ISO yyyy-mm-dd) to the internal date as text.
  // Text that is not a date fails with errors::kTypeMismatch.
  Text TexteVersDate(const Text& v) const;
};

// Day count of a calendar date and back, for tools and tests.
VELMORA_EXPORT long daysFromCivil(int year, int month, int day);
VELMORA_EXPORT void civilFromDays(long days, int& year, int& month, int& day);

}  // namespace velmora
