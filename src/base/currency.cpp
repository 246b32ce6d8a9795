// Currency: the host platform's fixed-point money, ten-thousandths in 64 bits. Text and doubles
// convert as the platform converts, in any locale.
#include <velmora/base/currency.h>

#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>

#include <velmora/base/failure.h>

namespace velmora {

namespace {

// The shortest text that reads back as v, the same in every locale.
std::string shortestText(double v) {
  std::array<char, 32> out{};
  const auto end = std::to_chars(out.data(), out.data() + out.size(), v).ptr;
  return {out.data(), static_cast<std::size_t>(end - out.data())};
}

}  // namespace

Currency Currency::fromDouble(double v) {
  const double scaled = std::nearbyint(v * 10000.0);  // default rounding mode: halves to even
  if (!std::isfinite(scaled) || std::fabs(scaled) >= 9.2e18) {
    throw Failure(errors::kOverflow, "dépassement de capacité : " + shortestText(v) +
                                         " est hors des limites d'un montant");
  }
  return fromUnits(static_cast<std::int64_t>(scaled));
}

Currency Currency::fromText(TextView v) {
  const auto number = parseNumber(v);
  if (!number)
    throw Failure(errors::kTypeMismatch,
                  "type incompatible : « " + toUtf8(v) + " » n'est pas un nombre");
  return fromDouble(*number);
}

Text Currency::toText() const {
  const bool negative = units_ < 0;
  // Work in unsigned so that the smallest value has a magnitude too.
  const auto magnitude =
      negative ? static_cast<std::uint64_t>(-(units_ + 1)) + 1 : static_cast<std::uint64_t>(units_);
  std::string out = std::to_string(magnitude / 10000);
  std::uint64_t fraction = magnitude % 10000;
  if (fraction != 0) {
    std::string digits = std::to_string(fraction);
    digits.insert(0, 4 - digits.size(), '0');
    while (!digits.empty() && digits.back() == '0') digits.pop_back();
    out += "." + digits;
  }
  return fromUtf8((negative ? "-" : "") + out);
}

}  // namespace velmora
