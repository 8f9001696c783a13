#include "host/fmwrapper/number.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "host/fmwrapper/number_texts.h"

namespace orlocal::host {
namespace {

std::string read(std::u16string_view text) { return shown(Number::parse(text)); }

struct Reading {
  const char16_t* text;
  const char* number;
};

class NumberReading : public ::testing::TestWithParam<Reading> {};

TEST_P(NumberReading, KeepsWhatTheHostKeeps) { EXPECT_EQ(read(GetParam().text), GetParam().number); }

INSTANTIATE_TEST_SUITE_P(Texts, NumberReading,
                         ::testing::Values(Reading{u"", "0"}, Reading{u"no digits", "0"}, Reading{u"42", "42"},
                                           Reading{u"abc12x3", "123"}, Reading{u"-$1,200.50", "-1200.5"},
                                           Reading{u"  -7 ", "-7"}, Reading{u"12-5", "125"}, Reading{u"+5", "5"},
                                           Reading{u"1.2.3", "1.23"}, Reading{u".5", ".5"}, Reading{u"-0.25", "-.25"},
                                           Reading{u"0", "0"}, Reading{u"-0", "0"}, Reading{u"007", "7"},
                                           Reading{u"5.000", "5"}, Reading{u"1e3", "1000"}, Reading{u"1.5E+3", "1500"},
                                           Reading{u"25e-1", "2.5"}, Reading{u"a1e3", "13"}, Reading{u"1e", "1"},
                                           Reading{u"1e3x", "13"}, Reading{u"e5", "5"}, Reading{u"1e9999", "?"},
                                           Reading{u"1e-9999", "0"}, Reading{u"\u0661\u0662", "0"},
                                           Reading{u"9223372036854775808", "9223372036854775808"},
                                           Reading{u"-9223372036854775808", "-9223372036854775808"}));

TEST(Number, IsZeroWhenMade) { EXPECT_EQ(shown(Number()), "0"); }

TEST(Number, KeepsFourHundredDigits) {
  const std::string digits(Number::kMaxPrecision, '7');
  EXPECT_EQ(read(toUtf16(digits)), digits);
}

TEST(Number, RoundsDecimalsBeyondFourHundredDigits) {
  const std::string text = "." + std::string(Number::kMaxPrecision, '3') + "7";
  EXPECT_EQ(read(toUtf16(text)), "." + std::string(Number::kMaxPrecision - 1, '3') + "4");
}

TEST(Number, HasNoWholeNumberOfMoreThanFourHundredDigits) {
  const Number number = num(std::u16string(Number::kMaxPrecision + 1, u'1'));
  EXPECT_FALSE(number.isNumber());
  EXPECT_EQ(shown(number), "?");
}

TEST(Number, AddsWithoutABinaryFraction) {
  EXPECT_EQ(num(u".1") + num(u".2"), num(u".3"));
  EXPECT_EQ(shown(num(u".1") + num(u".2")), ".3");
}

TEST(Number, GrowsPastSixtyFourBits) {
  const Number largest = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(shown(largest + 1), "9223372036854775808");
  EXPECT_EQ(shown(largest * largest), "85070591730234615847396907784232501249");
}

TEST(Number, ReturnsToWholeNumbers) {
  const Number largest = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ((largest + 1 - 1).toInt64(), std::numeric_limits<std::int64_t>::max());
}

TEST(Number, NegatesTheSmallestInteger) {
  EXPECT_EQ(shown(-Number(std::numeric_limits<std::int64_t>::min())), "9223372036854775808");
}

TEST(Number, SubtractsDecimals) { EXPECT_EQ(shown(num(u"10.05") - num(u".1")), "9.95"); }

TEST(Number, MultipliesDecimals) { EXPECT_EQ(shown(num(u"1.5") * num(u"-2.5")), "-3.75"); }

TEST(Number, DividesToSixteenDecimals) {
  EXPECT_EQ(shown(Number(1) / 3), ".3333333333333333");
  EXPECT_EQ(shown(Number(2) / 3), ".6666666666666667");
  EXPECT_EQ(shown(Number(10) / 3), "3.3333333333333333");
}

TEST(Number, DividesToAsManyDecimalsAsAskedFor) {
  Number three = 3;
  three.setPrecision(20);
  EXPECT_EQ(shown(Number(1) / three), ".33333333333333333333");
}

TEST(Number, KeepsSixteenDigitsOfSmallQuotients) {
  EXPECT_EQ(shown(Number(1) / num(u"3e30")), "." + std::string(30, '0') + "3333333333333333");
}

TEST(Number, DividesEvenlyWithoutDecimals) {
  EXPECT_EQ(shown(Number(84) / 2), "42");
  EXPECT_EQ(shown(Number(std::numeric_limits<std::int64_t>::min()) / -1), "9223372036854775808");
}

TEST(Number, IsNoNumberAfterDivisionByZero) {
  const Number result = Number(1) / 0;
  EXPECT_FALSE(result.isNumber());
  EXPECT_EQ(shown(result), "?");
  EXPECT_EQ(result.toInt64(), 0);
  EXPECT_TRUE(std::isnan(result.toDouble()));
}

TEST(Number, SpreadsThatItIsNoNumber) {
  EXPECT_FALSE((Number::notANumber() + 1).isNumber());
  EXPECT_FALSE((num(u".5") * Number::notANumber()).isNumber());
  EXPECT_FALSE((-Number::notANumber()).isNumber());
}

TEST(Number, ComparesByValue) {
  EXPECT_EQ(num(u"1.0"), Number(1));
  EXPECT_LT(num(u"-.5"), Number(0));
  EXPECT_GT(num(u"9223372036854775808"), Number(std::numeric_limits<std::int64_t>::max()));
  EXPECT_LT(num(u".25"), num(u".3"));
}

TEST(Number, EqualsNothingWhenItIsNoNumber) {
  EXPECT_FALSE(Number::notANumber() == Number::notANumber());
  EXPECT_FALSE(Number::notANumber() < Number(1));
}

TEST(Number, CutsTheFractionForIntegers) {
  EXPECT_EQ(num(u"3.9").toInt64(), 3);
  EXPECT_EQ(num(u"-3.9").toInt64(), -3);
}

TEST(Number, SaturatesForIntegers) {
  EXPECT_EQ(num(u"1e30").toInt64(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(num(u"-1e30").toInt64(), std::numeric_limits<std::int64_t>::min());
}

TEST(Number, ReadsADoubleAsItsShortestDecimal) {
  EXPECT_EQ(shown(Number::fromDouble(0.1)), ".1");
  EXPECT_EQ(shown(Number::fromDouble(-1e21)), "-1000000000000000000000");
  EXPECT_FALSE(Number::fromDouble(std::numeric_limits<double>::infinity()).isNumber());
}

TEST(Number, GivesTheNearestDouble) {
  EXPECT_EQ(num(u"-.1").toDouble(), -0.1);
  EXPECT_EQ(num(u"1e390").toDouble(), std::numeric_limits<double>::infinity());
  EXPECT_EQ(num(u"1e-390").toDouble(), 0.0);
}

TEST(Number, HoldsPrecisionBetweenSixteenAndFourHundred) {
  Number number = 1;
  number.setPrecision(3);
  EXPECT_EQ(number.precision(), 16);
  number.setPrecision(1000);
  EXPECT_EQ(number.precision(), 400);
}

TEST(Number, TellsWholeNumbers) {
  EXPECT_TRUE(Number(3).isInteger());
  EXPECT_TRUE(num(u"1e30").isInteger());
  EXPECT_FALSE(num(u"1.5").isInteger());
  EXPECT_FALSE(Number::notANumber().isInteger());
}

TEST(Number, TellsItsSign) {
  EXPECT_TRUE(num(u"-.5").isNegative());
  EXPECT_FALSE(Number(0).isNegative());
  EXPECT_FALSE(Number::notANumber().isNegative());
}

}  // namespace
}  // namespace orlocal::host
