#include <limits>

#include <gtest/gtest.h>

#include "host/fmwrapper/fm_objects.h"

namespace fmx {
namespace {

using namespace orlocal::host::testing;
using orlocal::host::testing::FixPt;

std::int32_t longOf(const FixPt& number) {
  return fine([&](Exception* x) { return FM_FixPt_AsLong(number.get(), x); });
}

std::int32_t precisionOf(const FixPt& number) {
  return fine([&](Exception* x) { return FM_FixPt_GetPrecision(number.get(), x); });
}

TEST(FmFixPt, IsMadeOfAValueAndAPrecision) {
  const FixPt made(fine([](Exception* x) { return FM_FixPt_Constructor1(-7, 20, x); }));
  EXPECT_EQ(longOf(made), -7);
  EXPECT_EQ(precisionOf(made), 20);
  const FixPt alike(fine([&](Exception* x) { return FM_FixPt_Constructor2(3, made.get(), x); }));
  EXPECT_EQ(longOf(alike), 3);
  EXPECT_EQ(precisionOf(alike), 20);
}

TEST(FmFixPt, AssignsEveryKindOfNumber) {
  const FixPt value = number();
  fine([&](Exception* x) { FM_FixPt_AssignInt(value.get(), -5, x); });
  EXPECT_EQ(longOf(value), -5);
  fine([&](Exception* x) { FM_FixPt_AssignInt64(value.get(), std::numeric_limits<std::int64_t>::min(), x); });
  EXPECT_EQ(wholeOf(value.get()), std::numeric_limits<std::int64_t>::min());
  fine([&](Exception* x) { FM_FixPt_AssignDouble(value.get(), 0.1, x); });
  EXPECT_EQ(doubleOf(value.get()), 0.1);
  fine([&](Exception* x) { FM_FixPt_AssignFixPt(value.get(), number(9).get(), x); });
  EXPECT_EQ(longOf(value), 9);
}

TEST(FmFixPt, KeepsItsPrecisionWhenAssignedAnInteger) {
  const FixPt value = number();
  fine([&](Exception* x) { FM_FixPt_SetPrecision(value.get(), 30, x); });
  fine([&](Exception* x) { FM_FixPt_AssignInt(value.get(), 1, x); });
  EXPECT_EQ(precisionOf(value), 30);
}

TEST(FmFixPt, TakesTheLowThirtyTwoBitsAsALong) {
  EXPECT_EQ(longOf(number(std::int64_t{1} << 31)), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(longOf(number((std::int64_t{1} << 32) + 5)), 5);
  EXPECT_EQ(longOf(number(-3.9)), -3);
}

TEST(FmFixPt, IsTrueUnlessZero) {
  EXPECT_TRUE(fine([](Exception* x) { return FM_FixPt_AsBool(number(0.001).get(), x); }));
  EXPECT_FALSE(fine([](Exception* x) { return FM_FixPt_AsBool(number(0).get(), x); }));
}

TEST(FmFixPt, StepsUpAndDown) {
  const FixPt value = number(10);
  fine([&](Exception* x) { FM_FixPt_Increment(value.get(), 5, x); });
  fine([&](Exception* x) { FM_FixPt_Increment64(value.get(), std::int64_t{1} << 40, x); });
  fine([&](Exception* x) { FM_FixPt_Decrement(value.get(), 3, x); });
  EXPECT_EQ(wholeOf(value.get()), (std::int64_t{1} << 40) + 12);
  fine([&](Exception* x) { FM_FixPt_Decrement64(value.get(), std::int64_t{1} << 40, x); });
  fine([&](Exception* x) { FM_FixPt_Negate(value.get(), x); });
  EXPECT_EQ(longOf(value), -12);
}

TEST(FmFixPt, CalculatesIntoAThird) {
  const FixPt left = number(7);
  const FixPt right = number(2);
  const FixPt result = number();
  fine([&](Exception* x) { FM_FixPt_Add(left.get(), right.get(), result.get(), x); });
  EXPECT_EQ(longOf(result), 9);
  fine([&](Exception* x) { FM_FixPt_Subtract(left.get(), right.get(), result.get(), x); });
  EXPECT_EQ(longOf(result), 5);
  fine([&](Exception* x) { FM_FixPt_Multiply(left.get(), right.get(), result.get(), x); });
  EXPECT_EQ(longOf(result), 14);
  EXPECT_EQ(fine([&](Exception* x) { return FM_FixPt_Divide(left.get(), right.get(), result.get(), x); }), 0);
  EXPECT_EQ(doubleOf(result.get()), 3.5);
}

TEST(FmFixPt, CalculatesIntoItself) {
  const FixPt value = number(0.1);
  fine([&](Exception* x) { FM_FixPt_Add(value.get(), value.get(), value.get(), x); });
  EXPECT_EQ(doubleOf(value.get()), 0.2);
}

TEST(FmFixPt, AnswersAnErrorForADivisionByZero) {
  const FixPt result = number(42);
  EXPECT_NE(fine([&](Exception* x) { return FM_FixPt_Divide(number(1).get(), number(0).get(), result.get(), x); }), 0);
  EXPECT_EQ(longOf(result), 42);
}

TEST(FmFixPt, Compares) {
  const FixPt low = number(0.1);
  const FixPt high = number(0.2);
  EXPECT_TRUE(fine([&](Exception* x) { return FM_FixPt_operatorEQ(low.get(), number(0.1).get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_FixPt_operatorNE(low.get(), high.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_FixPt_operatorLT(low.get(), high.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_FixPt_operatorLE(low.get(), low.get(), x); }));
  EXPECT_FALSE(fine([&](Exception* x) { return FM_FixPt_operatorGT(low.get(), high.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_FixPt_operatorGE(high.get(), low.get(), x); }));
}

TEST(FmFixPt, FailsWithoutAnObject) {
  EXPECT_EQ(codeOf([](Exception* x) { FM_FixPt_AsLong(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_FixPt_Constructor2(1, nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_FixPt_Add(number(1).get(), number(1).get(), nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_FixPt_Divide(number(1).get(), nullptr, number(1).get(), x); }), 2);
}

}  // namespace
}  // namespace fmx
