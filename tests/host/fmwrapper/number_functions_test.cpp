#include <string>

#include <gtest/gtest.h>

#include "host/fmwrapper/number.h"
#include "host/fmwrapper/number_texts.h"

namespace orlocal::host {
namespace {

TEST(NumberFunctions, RoundDownAndUp) {
  EXPECT_EQ(floor(num(u"-1.5")), Number(-2));
  EXPECT_EQ(floor(num(u"1.5")), Number(1));
  EXPECT_EQ(ceiling(num(u"-1.5")), Number(-1));
  EXPECT_EQ(ceiling(num(u"1.2")), Number(2));
}

TEST(NumberFunctions, RoundHalvesAwayFromZero) {
  EXPECT_EQ(shown(round(num(u"2.345"), 2)), "2.35");
  EXPECT_EQ(shown(round(num(u"-2.345"), 2)), "-2.35");
  EXPECT_EQ(shown(round(num(u"2.344999"), 2)), "2.34");
}

TEST(NumberFunctions, RoundBeforeThePoint) {
  EXPECT_EQ(shown(round(1250, -2)), "1300");
  EXPECT_EQ(shown(truncate(1299, -2)), "1200");
  EXPECT_EQ(shown(round(4, -1)), "0");
}

TEST(NumberFunctions, TruncateTowardsZero) {
  EXPECT_EQ(shown(truncate(num(u"-1.29"), 1)), "-1.2");
  EXPECT_EQ(shown(truncate(num(u"1.29"), 5)), "1.29");
}

TEST(NumberFunctions, TakeTheSignAway) { EXPECT_EQ(shown(absolute(num(u"-.5"))), ".5"); }

TEST(NumberFunctions, GiveTheRestTheDivisorsSign) {
  EXPECT_EQ(modulo(7, 3), Number(1));
  EXPECT_EQ(modulo(-7, 3), Number(2));
  EXPECT_EQ(modulo(7, -3), Number(-2));
  EXPECT_EQ(shown(modulo(num(u"5.5"), 2)), "1.5");
  EXPECT_FALSE(modulo(1, 0).isNumber());
}

TEST(NumberFunctions, RaiseToWholePowersExactly) {
  EXPECT_EQ(shown(power(2, 100)), "1267650600228229401496703205376");
  EXPECT_EQ(shown(power(num(u".5"), 3)), ".125");
  EXPECT_EQ(shown(power(10, -3)), ".001");
  EXPECT_EQ(shown(power(-2, 3)), "-8");
  EXPECT_EQ(shown(power(0, 0)), "1");
}

TEST(NumberFunctions, RaiseToFractions) {
  EXPECT_EQ(shown(power(9, num(u".5"))), "3");
  EXPECT_EQ(shown(power(2, num(u".5"))), "1.414213562373095");
}

TEST(NumberFunctions, HaveNoPowerOutsideTheRange) {
  EXPECT_FALSE(power(10, 400).isNumber());
  EXPECT_TRUE(power(10, 399).isNumber());
  EXPECT_FALSE(power(0, -1).isNumber());
  EXPECT_FALSE(power(-2, num(u".5")).isNumber());
  EXPECT_EQ(shown(power(10, -500)), "0");
}

TEST(NumberFunctions, RaiseToHugePowersWithoutTryingThem) {
  const Number huge = num(u"1e12");
  EXPECT_EQ(power(1, huge), Number(1));
  EXPECT_EQ(power(-1, huge + 1), Number(-1));
  EXPECT_EQ(power(num(u".5"), huge), Number(0));
  EXPECT_FALSE(power(2, huge).isNumber());
}

TEST(NumberFunctions, TakeRoots) {
  EXPECT_EQ(shown(squareRoot(144)), "12");
  EXPECT_FALSE(squareRoot(-1).isNumber());
}

TEST(NumberFunctions, TakeLogarithmsAndTheirOpposite) {
  EXPECT_EQ(shown(exponential(1)), "2.7182818284590452");
  EXPECT_EQ(shown(naturalLogarithm(10)), "2.3025850929940457");
  EXPECT_EQ(shown(naturalLogarithm(1)), "0");
  EXPECT_FALSE(naturalLogarithm(0).isNumber());
  EXPECT_FALSE(exponential(5000).isNumber());
  EXPECT_EQ(shown(exponential(-5000)), "0");
}

}  // namespace
}  // namespace orlocal::host
