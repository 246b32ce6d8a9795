#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <velmora/base/currency.h>
#include <velmora/base/text.h>
#include "support/failure_number.h"

namespace velmora {
namespace {

using testing::failureNumber;

TEST(Utf8, EdgesOfTheEncoding) {
  const std::string phrase = "Tâche à faire € \xF0\x9F\x98\x80";
  EXPECT_EQ(fromUtf8(phrase).size(), 18u);  // the emoji takes two code units
  EXPECT_EQ(toUtf8(fromUtf8(phrase)), phrase);
  // The first and the last pair of surrogates.
  EXPECT_EQ(toUtf8(u"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
  // Bytes that are not UTF-8, a cut sequence and an overlong form: one replacement a byte.
  EXPECT_EQ(fromUtf8("a\xFF!"), u"a\xFFFD!");
  EXPECT_EQ(fromUtf8("\xC3"), u"\xFFFD");
  EXPECT_EQ(fromUtf8("\xC0\xAF"), u"\xFFFD\xFFFD");
  EXPECT_EQ(toUtf8(Text(1, char16_t(0xD800))), "\xEF\xBF\xBD");  // a lone surrogate
}

TEST(TextHelpers, CountFromOneStopAtTheEndAndNeverCut) {
  const Text t = u"Ménage";
  const std::vector<std::pair<Text, Text>> parts{
      {left(t, 2), u"Mé"},    {left(t, -3), u""},     {left(t, 40), t},
      {mid(t, 2, 3), u"éna"}, {mid(t, 5, 10), u"ge"}, {mid(t, 7, 1), u""},
      {mid(t, 0, 2), u""},    {mid(t, 3), u"nage"},   {mid(t, 99), u""}};
  for (const auto& [got, expected] : parts) EXPECT_EQ(got, expected) << toUtf8(expected);
  EXPECT_EQ(instr(u"00001SEMTYPEFLOT", u"FLOT"), 13);
  EXPECT_EQ(instr(u"1h30h", u"h", 3), 5);
  EXPECT_EQ(instr(u"abc", u"c", 4), 0);
  EXPECT_EQ(instr(u"abc", u"a", 0), 0);
}

// test_base_fr runs these again on a French machine, whose decimal separator is ",".
TEST(Numbers, OnlyDecimalNumbersParseAndWriteTheSameInEveryLocale) {
  for (const Text good : {u"30", u"-5", u"+8.5", u".5", u"5."}) {
    EXPECT_TRUE(isDecimalNumber(good)) << toUtf8(good);
  }
  for (const Text bad : {u"", u"-", u".", u"1h30", u"1e3", u"08:30"}) {
    EXPECT_FALSE(isDecimalNumber(bad)) << toUtf8(bad);
  }
  EXPECT_EQ(parseNumber(u"  30 "), 30.0);
  EXPECT_EQ(parseNumber(u"-1.25"), -1.25);
  EXPECT_EQ(parseNumber(u"12,5"), std::nullopt);
  // Beyond the range of a double: an infinity, as strtod gives.
  EXPECT_EQ(parseNumber(u"-" + Text(400, u'9')), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(numberText(-1500), u"-1500");
  // Zero padding rounds halves away from zero.
  const std::vector<std::tuple<double, int, Text>> padded{
      {850, 4, u"0850"}, {0, 2, u"00"},     {123, 2, u"123"},  {12.5, 2, u"13"},
      {13.5, 2, u"14"},  {12.49, 2, u"12"}, {-2.5, 2, u"-03"}, {-0.4, 2, u"00"}};
  for (const auto& [value, width, text] : padded)
    EXPECT_EQ(zeroPadded(value, width), text) << value;
}

TEST(CurrencyValues, TextRoundingRangeAndArithmetic) {
  EXPECT_EQ(Currency::fromText(u" -5 "), Currency::whole(-5));
  EXPECT_EQ(Currency::fromText(u"12.5").units(), 125000);
  EXPECT_EQ(failureNumber([] { Currency::fromText(u""); }), errors::kTypeMismatch);
  EXPECT_EQ(failureNumber([] { Currency::fromText(u"0h30"); }), errors::kTypeMismatch);
  EXPECT_EQ(Currency::fromUnits(-1).toText(), u"-0.0001");
  EXPECT_EQ(Currency::fromUnits(std::numeric_limits<std::int64_t>::min()).toText(),
            u"-922337203685477.5808");
  // Ten-thousandths, exact halves (1/32 is 312.5 of them) to the even neighbour.
  const std::vector<std::pair<double, std::int64_t>> rounded{
      {0.00004, 0}, {0.00006, 1}, {-1.23456, -12346}, {1.0 / 32, 312}, {3.0 / 32, 938}};
  for (const auto& [value, units] : rounded) EXPECT_EQ(Currency::fromDouble(value).units(), units);
  EXPECT_EQ(failureNumber([] { Currency::fromDouble(1e300); }), errors::kOverflow);
  EXPECT_EQ(failureNumber([] { Currency::fromDouble(std::nan("")); }), errors::kOverflow);
  Currency total = Currency::whole(25);
  total += Currency::whole(40);
  total -= Currency::whole(70);
  EXPECT_EQ(total, Currency::whole(-5));
  EXPECT_LT(total, Currency());
  EXPECT_DOUBLE_EQ(Currency::fromUnits(125000).toDouble(), 12.5);
}

// Each failure number answers yes to its own predicate and no to every other one, so that
// a host can test a failure by name.
TEST(FailureNames, EachPredicateNamesItsNumberAlone) {
  using F = Failure;
  const std::vector<std::pair<long, bool (Failure::*)() const noexcept>> names{
      {errors::kRecordNotFound, &F::isNotFound},
      {errors::kObjectNotSet, &F::isObjectNotSet},
      {errors::kTypeMismatch, &F::isTypeMismatch},
      {errors::kInvalidCall, &F::isInvalidCall},
      {errors::kOverflow, &F::isOverflow},
      {errors::kUnknownFile, &F::isUnknownFile},
      {errors::kBadQuery, &F::isBadQuery},
      {errors::kUnknownName, &F::isUnknownName},
      {errors::kDatabase, &F::isDatabase},
      {errors::kBadImport, &F::isBadImport},
      {errors::kBusy, &F::isBusy}};
  for (std::size_t i = 0; i < names.size(); ++i) {
    for (std::size_t j = 0; j < names.size(); ++j) {
      EXPECT_EQ((Failure(names[i].first, "").*names[j].second)(), i == j) << names[i].first << j;
    }
  }
  EXPECT_FALSE(Failure(0, "").isInvalidCall());
}

}  // namespace
}  // namespace velmora
