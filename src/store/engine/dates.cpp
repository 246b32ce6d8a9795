// The store's dates: day counts from 31/12/1967 read from and written as French dd/mm/yyyy
// text. Digits are read one by one, so that a conversion is the same in every locale.
#include <velmora/store/dates.h>

#include <array>
#include <optional>
#include <string>

#include <velmora/base/failure.h>

namespace velmora {

namespace {

// Days from 1970-01-01 to the store's day 0, 31/12/1967.
constexpr long kBaseOffset = 732;
// Past these the text form would need more than four digits for the year.
constexpr int kFirstYear = 1;
constexpr int kLastYear = 9999;

[[noreturn]] void notADate(TextView v, const char* why) {
  throw Failure(errors::kTypeMismatch,
                "type incompatible : « " + toUtf8(v) + " » n'est pas une date (" + why + ")");
}

bool isLeap(int year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month) {
  static constexpr std::array<int, 12> kDays{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeap(year) ? 29 : kDays[month - 1];
}

// A run of 1 to maxDigits ASCII digits as a number; nothing when the run is not that.
std::optional<int> digitsValue(TextView v, std::size_t minDigits, std::size_t maxDigits) {
  if (v.size() < minDigits || v.size() > maxDigits) return std::nullopt;
  int value = 0;
  for (const char16_t c : v) {
    if (c < u'0' || c > u'9') return std::nullopt;
    value = value * 10 + (c - u'0');
  }
  return value;
}

struct CivilDate {
  int year = 0;
  int month = 0;
  int day = 0;
};

// Splits "a<sep>b<sep>c" into three parts; nothing when the separators are not two.
std::optional<std::array<TextView, 3>> splitThree(TextView v, char16_t sep) {
  const auto first = v.find(sep);
  if (first == TextView::npos) return std::nullopt;
  const auto second = v.find(sep, first + 1);
  if (second == TextView::npos || v.find(sep, second + 1) != TextView::npos) return std::nullopt;
  return std::array<TextView, 3>{v.substr(0, first), v.substr(first + 1, second - first - 1),
                                 v.substr(second + 1)};
}

std::optional<CivilDate> parseFrench(TextView v) {
  const auto parts = splitThree(v, u'/');
  if (!parts) return std::nullopt;
  const auto day = digitsValue((*parts)[0], 1, 2);
  const auto month = digitsValue((*parts)[1], 1, 2);
  const auto year = digitsValue((*parts)[2], 4, 4);
  if (!day || !month || !year) return std::nullopt;
  return CivilDate{*year, *month, *day};
}

std::optional<CivilDate> parseIso(TextView v) {
  const auto parts = splitThree(v, u'-');
  if (!parts) return std::nullopt;
  const auto year = digitsValue((*parts)[0], 4, 4);
  const auto month = digitsValue((*parts)[1], 2, 2);
  const auto day = digitsValue((*parts)[2], 2, 2);
  if (!day || !month || !year) return std::nullopt;
  return CivilDate{*year, *month, *day};
}

// A whole number with an optional minus sign, small enough to be a day count.
std::optional<long> dayCount(TextView v) {
  const bool negative = !v.empty() && v.front() == u'-';
  const TextView digits = negative ? v.substr(1) : v;
  if (digits.empty() || digits.size() > 7) return std::nullopt;
  long value = 0;
  for (const char16_t c : digits) {
    if (c < u'0' || c > u'9') return std::nullopt;
    value = value * 10 + (c - u'0');
  }
  return negative ? -value : value;
}

Text twoDigits(int n) {
  return Text{static_cast<char16_t>(u'0' + n / 10), static_cast<char16_t>(u'0' + n % 10)};
}

}  // namespace

// Civil calendar arithmetic after H. Hinnant's days_from_civil, shifted to day 0.
long daysFromCivil(int year, int month, int day) {
  const long y = static_cast<long>(year) - (month <= 2 ? 1 : 0);
  const long era = (y >= 0 ? y : y - 399) / 400;
  const long yoe = y - era * 400;
  const long mp = (month + 9) % 12;
  const long doy = (153 * mp + 2) / 5 + day - 1;
  const long doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + doe - 719468 + kBaseOffset;
}

void civilFromDays(long days, int& year, int& month, int& day) {
  const long z = days - kBaseOffset + 719468;
  const long era = (z >= 0 ? z : z - 146096) / 146097;
  const long doe = z - era * 146097;
  const long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const long mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(yoe + era * 400 + (month <= 2 ? 1 : 0));
}

Text NorvikDates::DateVersTexte(const Text& v) const {
  // An open-ended period has an empty end date; it stays empty both ways.
  if (v.empty()) return {};
  const auto days = dayCount(trimBlanks(v));
  if (!days) notADate(v, "une date interne est un nombre entier de jours");
  int year = 0;
  int month = 0;
  int day = 0;
  civilFromDays(*days, year, month, day);
  if (year < kFirstYear || year > kLastYear) notADate(v, "le jour est hors du calendrier");
  Text out = twoDigits(day) + u"/" + twoDigits(month) + u"/";
  const Text yearText = numberText(year);
  out += Text(4 - yearText.size(), u'0') + yearText;
  return out;
}

Text NorvikDates::TexteVersDate(const Text& v) const {
  if (v.empty()) return {};
  const Text text = trimBlanks(v);
  auto date = parseFrench(text);
  if (!date) date = parseIso(text);
  if (!date) notADate(v, "attendu jj/mm/aaaa ou aaaa-mm-jj");
  if (date->year < kFirstYear || date->month < 1 || date->month > 12) {
    notADate(v, "ce mois n'existe pas");
  }
  if (date->day < 1 || date->day > daysInMonth(date->year, date->month)) {
    notADate(v, "ce jour n'existe pas dans ce mois");
  }
  return numberText(daysFromCivil(date->year, date->month, date->day));
}

}  // namespace velmora
