// Currency: a signed 64-bit count of ten-thousandths, as the host platform's type.
#pragma once

#include <velmora/export.h>

#include <compare>
#include <cstdint>

#include <velmora/base/text.h>

namespace velmora {

// A value of 8 bytes, copied freely, safe in any thread. Sums past the 64-bit range are
// the caller's to avoid: the arithmetic does not check them.
class VELMORA_EXPORT Currency {
 public:
  constexpr Currency() = default;
  static constexpr Currency fromUnits(std::int64_t tenThousandths) {
    Currency c;
    c.units_ = tenThousandths;
    return c;
  }
  static constexpr Currency whole(std::int64_t n) { return fromUnits(n * 10000); }
  // Rounds to the nearest ten-thousandth, halves to even, as the platform converts. A
  // value out of the type's range (or not finite) fails with errors::kOverflow.
  static Currency fromDouble(double v);
  // Text to Currency, in any locale ("12.5", blanks around allowed); a text that is not a
  // number fails with errors::kTypeMismatch, one out of range with errors::kOverflow.
  static Currency fromText(TextView v);

  constexpr std::int64_t units() const { return units_; }
  double toDouble() const { return static_cast<double>(units_) / 10000.0; }
  // The platform's text of the value: "65", "-5", "12.5".
  Text toText() const;

  friend constexpr Currency operator+(Currency a, Currency b) {
    return fromUnits(a.units_ + b.units_);
  }
  friend constexpr Currency operator-(Currency a, Currency b) {
    return fromUnits(a.units_ - b.units_);
  }
  Currency& operator+=(Currency b) {
    units_ += b.units_;
    return *this;
  }
  Currency& operator-=(Currency b) {
    units_ -= b.units_;
    return *this;
  }
  friend constexpr auto operator<=>(Currency, Currency) = default;

 private:
  std::int64_t units_ = 0;
};

}  // namespace velmora
