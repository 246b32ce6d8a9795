#include <gtest/gtest.h>

#include <velmora/base/failure.h>
#include <velmora/store/dates.h>
#include "support/failure_number.h"

namespace velmora {
namespace {

using testing::failureNumber;

TEST(Dates, KnownDaysBothWays) {
  const NorvikDates dates;
  const struct {
    const char* internal;
    const char* text;
  } cases[] = {
      {"0", "31/12/1967"},     {"1", "01/01/1968"},     {"60", "29/02/1968"},
      {"366", "31/12/1968"},   {"732", "01/01/1970"},   {"11689", "01/01/2000"},
      {"11748", "29/02/2000"}, {"21512", "23/11/2026"}, {"21550", "31/12/2026"},
      {"-1", "30/12/1967"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(dates.DateVersTexte(fromUtf8(c.internal)), fromUtf8(c.text)) << c.internal;
    EXPECT_EQ(dates.TexteVersDate(fromUtf8(c.text)), fromUtf8(c.internal)) << c.text;
  }
}

TEST(Dates, AcceptsShortAndIsoForms) {
  const NorvikDates dates;
  EXPECT_EQ(dates.TexteVersDate(u"2026-11-23"), u"21512");
  EXPECT_EQ(dates.TexteVersDate(u"3/1/2026"), dates.TexteVersDate(u"03/01/2026"));
  EXPECT_EQ(dates.TexteVersDate(u"03/01/2026"), u"21188");
  EXPECT_EQ(dates.TexteVersDate(u" 23/11/2026 "), u"21512");
}

TEST(Dates, LeapYearsFollowTheGregorianRules) {
  const NorvikDates dates;
  // 2000 is a leap year (divisible by 400), 2100 is not (by 100), 2024 is (by 4).
  EXPECT_EQ(dates.DateVersTexte(dates.TexteVersDate(u"29/02/2000")), u"29/02/2000");
  EXPECT_EQ(dates.DateVersTexte(dates.TexteVersDate(u"29/02/2024")), u"29/02/2024");
  EXPECT_EQ(failureNumber([&] { dates.TexteVersDate(u"29/02/2100"); }), errors::kTypeMismatch);
  EXPECT_EQ(failureNumber([&] { dates.TexteVersDate(u"29/02/2026"); }), errors::kTypeMismatch);
  const auto feb28 = std::stol(toUtf8(dates.TexteVersDate(u"28/02/2100")));
  EXPECT_EQ(dates.DateVersTexte(numberText(feb28 + 1)), u"01/03/2100");
}

TEST(Dates, EveryDayOfTwoCenturiesRoundTrips) {
  long previous = daysFromCivil(1899, 12, 31);
  for (int year = 1900; year <= 2100; ++year) {
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= 31; ++day) {
        int y = 0, m = 0, d = 0;
        const long n = daysFromCivil(year, month, day);
        civilFromDays(n, y, m, d);
        if (y != year || m != month || d != day) continue;  // no such day: skipped
        ASSERT_EQ(n, previous + 1) << year << "-" << month << "-" << day;
        previous = n;
      }
    }
  }
  EXPECT_EQ(previous, daysFromCivil(2100, 12, 31));
}

TEST(Dates, EmptyTextIsNoDate) {
  const NorvikDates dates;
  EXPECT_EQ(dates.DateVersTexte(u""), u"");
  EXPECT_EQ(dates.TexteVersDate(u""), u"");
}

TEST(Dates, BadInputFailsWithTypeMismatchAndAClearMessage) {
  const NorvikDates dates;
  for (const char16_t* bad : {u"31/02/2026", u"abc", u"32/01/2026", u"01/13/2026", u"1/1/26",
                              u"2026-1-23", u"23-11-2026", u"23/11/2026/1", u"0/1/2026"}) {
    try {
      dates.TexteVersDate(bad);
      ADD_FAILURE() << toUtf8(bad) << " was taken for a date";
    } catch (const Failure& f) {
      EXPECT_EQ(f.number(), errors::kTypeMismatch) << toUtf8(bad);
      EXPECT_NE(std::string(f.what()).find(toUtf8(bad)), std::string::npos) << f.what();
    }
  }
  for (const char16_t* bad : {u"12.5", u"abc", u"21512x", u"--1", u"99999999"}) {
    EXPECT_EQ(failureNumber([&] { dates.DateVersTexte(bad); }), errors::kTypeMismatch)
        << toUtf8(bad);
  }
}

}  // namespace
}  // namespace velmora
