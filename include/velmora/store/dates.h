// NorvikDates: internal dates are day counts from 31/12/1967 (day 0), written with
// five digits for present-day dates; the text form is French, dd/mm/yyyy.
#pragma once

#include <velmora/export.h>

#include <velmora/base/text.h>

namespace velmora {

// Stateless: one object serves any number of threads. Conversions are the same in any
// locale.
class VELMORA_EXPORT NorvikDates {
 public:
  // Internal date (a day count as text) to "dd/mm/yyyy"; "" gives "". Text that is not
  // a whole number, or a day outside the years 1 to 9999, fails with errors::kTypeMismatch.
  Text DateVersTexte(const Text& v) const;
  // "dd/mm/yyyy" (also d/m/yyyy and ISO yyyy-mm-dd, blanks around allowed) to the
  // internal date as text; "" gives "". Text that is not a calendar date fails with
  // errors::kTypeMismatch naming it.
  Text TexteVersDate(const Text& v) const;
};

// The store's day count of a calendar date (proleptic Gregorian) and back, for tools and
// tests; the date is not checked.
VELMORA_EXPORT long daysFromCivil(int year, int month, int day);
VELMORA_EXPORT void civilFromDays(long days, int& year, int& month, int& day);

}  // namespace velmora
