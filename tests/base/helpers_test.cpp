#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <velmora/base/boolean.h>
#include <velmora/base/currency.h>
#include <velmora/base/failure.h>
#include <velmora/base/text.h>
#include "support/failure_number.h"

namespace velmora {
namespace {

using testing::failureNumber;

TEST(Utf8, EdgesOfTheEncoding) {
  // Accented letters are one code unit; a character beyond the plane takes two.
  EXPECT_EQ(fromUtf8("é").size(), 1u);
  EXPECT_EQ(fromUtf8("\xF0\x9F\x98\x80").size(), 2u);
  EXPECT_EQ(toUtf8(fromUtf8("\xF0\x9F\x98\x80")), "\xF0\x9F\x98\x80");
  // Bytes that are not UTF-8 become the replacement character, one per byte.
  EXPECT_EQ(fromUtf8("a\xFF"
                     "b"),
            u"a\xFFFD"
            "b");
  EXPECT_EQ(fromUtf8("\xC3"), u"\xFFFD");
  // An overlong form is refused.
  EXPECT_EQ(fromUtf8("\xC0\xAF"), u"\xFFFD\xFFFD");
  // A lone surrogate has no UTF-8 form.
  EXPECT_EQ(toUtf8(Text(1, char16_t(0xD800))), "\xEF\xBF\xBD");
  EXPECT_EQ("Tâche"_t, u"Tâche");
}

TEST(TextHelpers, LeftAndMidCountFromOneAndStopAtTheEnd) {
  const Text t = u"Ménage";
  EXPECT_EQ(left(t, 2), u"Mé");
  EXPECT_EQ(left(t, 0), u"");
  EXPECT_EQ(left(t, -3), u"");
  EXPECT_EQ(left(t, 40), t);
  EXPECT_EQ(mid(t, 2, 3), u"éna");
  EXPECT_EQ(mid(t, 5, 10), u"ge");
  EXPECT_EQ(mid(t, 7, 1), u"");
  EXPECT_EQ(mid(t, 0, 2), u"");
  EXPECT_EQ(mid(t, 3), u"nage");
  EXPECT_EQ(mid(t, 99), u"");
  EXPECT_EQ(mid(u"", 1, 5), u"");
}

TEST(TextHelpers, TrimRemovesBlanksOnly) {
  EXPECT_EQ(trimBlanks(u"  30 "), u"30");
  EXPECT_EQ(trimBlanks(u"      "), u"");
  EXPECT_EQ(trimBlanks(u""), u"");
  EXPECT_EQ(trimBlanks(u"\t30\n"), u"\t30\n");
  EXPECT_EQ(trimBlanks(u" a b "), u"a b");
}

TEST(TextHelpers, InstrFindsCaseSensitivelyFromAPosition) {
  EXPECT_EQ(instr(u"00001SEMTYPEFLOT", u"SEMTYPE"), 6);
  EXPECT_EQ(instr(u"00001SEMTYPEFLOT", u"FLOT"), 13);
  EXPECT_EQ(instr(u"00001flot", u"FLOT"), 0);
  EXPECT_EQ(instr(u"1h30h", u"h", 3), 5);
  EXPECT_EQ(instr(u"abc", u""), 1);
  EXPECT_EQ(instr(u"abc", u"c", 4), 0);
  EXPECT_EQ(instr(u"abc", u"a", 0), 0);
}

TEST(TextHelpers, PaddingNeverCuts) {
  EXPECT_EQ(spaces(3), u"   ");
  EXPECT_EQ(spaces(-1), u"");
  EXPECT_EQ(padRight(u"ab", 4), u"ab  ");
  EXPECT_EQ(padRight(u"abcdef", 4), u"abcdef");
  EXPECT_EQ(padLeft(u"30", 7), u"     30");
  EXPECT_EQ(padLeft(u"1234567", 6), u"1234567");
  EXPECT_EQ(padLeft(u"", 2), u"  ");
}

TEST(Numbers, OnlyDecimalNumbersParse) {
  EXPECT_TRUE(isDecimalNumber(u"30"));
  EXPECT_TRUE(isDecimalNumber(u"-5"));
  EXPECT_TRUE(isDecimalNumber(u"+8.5"));
  EXPECT_TRUE(isDecimalNumber(u".5"));
  EXPECT_TRUE(isDecimalNumber(u"5."));
  EXPECT_FALSE(isDecimalNumber(u""));
  EXPECT_FALSE(isDecimalNumber(u"-"));
  EXPECT_FALSE(isDecimalNumber(u"."));
  EXPECT_FALSE(isDecimalNumber(u"1h30"));
  EXPECT_FALSE(isDecimalNumber(u"1e3"));
  EXPECT_FALSE(isDecimalNumber(u"08:30"));
  EXPECT_EQ(parseNumber(u"  30 "), 30.0);
  EXPECT_EQ(parseNumber(u"-1.25"), -1.25);
  EXPECT_EQ(parseNumber(u"0850"), 850.0);
  EXPECT_EQ(parseNumber(u"x"), std::nullopt);
  EXPECT_EQ(parseNumber(u""), std::nullopt);
}

TEST(Numbers, WholeNumberTextAndZeroPadding) {
  EXPECT_EQ(numberText(0), u"0");
  EXPECT_EQ(numberText(-5), u"-5");
  EXPECT_EQ(numberText(1500), u"1500");
  EXPECT_EQ(zeroPadded(5, 2), u"05");
  EXPECT_EQ(zeroPadded(0, 2), u"00");
  EXPECT_EQ(zeroPadded(55, 2), u"55");
  EXPECT_EQ(zeroPadded(123, 2), u"123");
  EXPECT_EQ(zeroPadded(850, 4), u"0850");
  EXPECT_EQ(zeroPadded(7, 6), u"000007");
  // The format rounds halves away from zero.
  EXPECT_EQ(zeroPadded(12.5, 2), u"13");
  EXPECT_EQ(zeroPadded(13.5, 2), u"14");
  EXPECT_EQ(zeroPadded(12.49, 2), u"12");
  EXPECT_EQ(zeroPadded(-2.5, 2), u"-03");
  EXPECT_EQ(zeroPadded(-0.4, 2), u"00");
}

TEST(CurrencyValues, ConversionsAndText) {
  EXPECT_EQ(Currency::whole(65).units(), 650000);
  EXPECT_EQ(Currency::fromText(u"65"), Currency::whole(65));
  EXPECT_EQ(Currency::fromText(u" -5 "), Currency::whole(-5));
  EXPECT_EQ(Currency::fromText(u"12.5").units(), 125000);
  EXPECT_EQ(failureNumber([] { Currency::fromText(u""); }), errors::kTypeMismatch);
  EXPECT_EQ(failureNumber([] { Currency::fromText(u"0h30"); }), errors::kTypeMismatch);
  EXPECT_EQ(Currency::whole(65).toText(), u"65");
  EXPECT_EQ(Currency::whole(-5).toText(), u"-5");
  EXPECT_EQ(Currency::fromUnits(125000).toText(), u"12.5");
  EXPECT_EQ(Currency::fromUnits(-1).toText(), u"-0.0001");
  EXPECT_EQ(Currency::fromUnits(std::numeric_limits<std::int64_t>::min()).toText(),
            u"-922337203685477.5808");
  EXPECT_EQ(Currency().toText(), u"0");
}

TEST(CurrencyValues, RoundingToTenThousandthsAndRange) {
  EXPECT_EQ(Currency::fromDouble(0.00004).units(), 0);
  EXPECT_EQ(Currency::fromDouble(0.00006).units(), 1);
  EXPECT_EQ(Currency::fromDouble(1.23456).units(), 12346);
  EXPECT_EQ(Currency::fromDouble(-1.23456).units(), -12346);
  // Exact halves (1/32 is 312.5 ten-thousandths) go to the even neighbour.
  EXPECT_EQ(Currency::fromDouble(1.0 / 32).units(), 312);
  EXPECT_EQ(Currency::fromDouble(3.0 / 32).units(), 938);
  EXPECT_EQ(Currency::fromDouble(-1.0 / 32).units(), -312);
  EXPECT_EQ(failureNumber([] { Currency::fromDouble(1e300); }), errors::kOverflow);
  EXPECT_EQ(failureNumber([] { Currency::fromDouble(std::nan("")); }), errors::kOverflow);
}

TEST(CurrencyValues, ArithmeticAndOrder) {
  Currency total = Currency::whole(25);
  total += Currency::whole(40);
  EXPECT_EQ(total, Currency::whole(65));
  total -= Currency::whole(40);
  total += Currency::whole(10);
  EXPECT_EQ(total, Currency::whole(35));
  EXPECT_EQ(Currency::whole(1) - Currency::whole(6), Currency::whole(-5));
  EXPECT_LT(Currency::whole(-5), Currency::whole(0));
  EXPECT_DOUBLE_EQ(Currency::fromUnits(125000).toDouble(), 12.5);
}

TEST(Booleans, TrueIsMinusOne) {
  EXPECT_EQ(kTrue, -1);
  EXPECT_EQ(kFalse, 0);
  EXPECT_EQ(toBoolean(true), kTrue);
  EXPECT_EQ(toBoolean(false), kFalse);
}

}  // namespace
}  // namespace velmora
