#include "host/calc/rendering.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host::calc {
namespace {

using ::testing::ElementsAre;

TEST(RenderingTest, CutsLinesAtReturnsAndLineFeeds) {
  EXPECT_THAT(linesOf(Value::ofUtf8("a\rb\r\nc\nd")), ElementsAre("a", "b", "c", "d"));
}

TEST(RenderingTest, ShowsAReturnAtTheEndAsAnEmptyLine) {
  EXPECT_THAT(linesOf(Value::ofUtf8("a\r")), ElementsAre("a", ""));
}

TEST(RenderingTest, ShowsNothingAsOneEmptyLine) { EXPECT_THAT(linesOf(Value{}), ElementsAre("")); }

TEST(RenderingTest, NamesTypes) {
  const DateTime moment = *DateTime::fromDate(2026, 11, 2);
  EXPECT_EQ(typeName(Value::ofUtf8("a")), "text");
  EXPECT_EQ(typeName(Value::ofNumber(1)), "number");
  Value truth;
  truth.setBoolean(true);
  EXPECT_EQ(typeName(truth), "number");
  EXPECT_EQ(typeName(Value::ofDate(moment)), "date");
  EXPECT_EQ(typeName(Value::ofTime(DateTime::fromTime(9, 0, 0))), "time");
  EXPECT_EQ(typeName(Value::ofTimestamp(moment)), "timestamp");
  EXPECT_EQ(typeName(Value{}), "empty");
  EXPECT_EQ(typeName(Value::ofUtf8("")), "empty");
  EXPECT_EQ(typeName(Value::invalid()), "invalid");
}

TEST(RenderingTest, TakesTheCommandOutOfControlCharacters) {
  EXPECT_EQ(harmless("a\x1B[31mb\tc\x7F"), "a␛[31mb\tc␡");
  EXPECT_EQ(harmless("a\u009Bb"), "a\uFFFDb");
  EXPECT_EQ(harmless("größe ©"), "größe ©");
}

TEST(HarmlessTest, ShowsMarksThatMislead) {
  EXPECT_EQ(harmless("a\u202eb\u2066\u200f\u061c\u2028\U000E0041"), "a\uFFFDb\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(harmless("👩\u200d💻 ❤\uFE0F"), "👩\u200d💻 ❤\uFE0F");
}

TEST(HarmlessTest, LeavesTheLinesOfAMessage) { EXPECT_EQ(harmlessLines("a\x1b\nb\n"), "a␛\nb\n"); }

}  // namespace
}  // namespace orlocal::host::calc
