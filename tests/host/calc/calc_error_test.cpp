#include "host/calc/calc_error.h"

#include <gtest/gtest.h>

namespace orlocal::host::calc {
namespace {

TEST(CalcErrorTest, CountsLinesAndColumnsFromOne) {
  EXPECT_EQ(placeOf("abc", 0), (Place{1, 1}));
  EXPECT_EQ(placeOf("abc\nde", 5), (Place{2, 2}));
}

TEST(CalcErrorTest, CountsColumnsInCharactersNotBytes) { EXPECT_EQ(placeOf("\"äö\" x", 7), (Place{1, 6})); }

TEST(CalcErrorTest, PointsAtThePlaceBelowTheLine) {
  EXPECT_EQ(describe("1 +\n2 * * 3", {8, "a value is expected here"}),
            "2:5: a value is expected here\n"
            "  2 * * 3\n"
            "      ^");
}

TEST(CalcErrorTest, KeepsTabsSoThatTheCaretStandsRight) {
  EXPECT_EQ(describe("\tx", {1, "m"}), "1:2: m\n  \tx\n  \t^");
}

TEST(CalcErrorTest, PointsPastTheLastCharacterAtTheEnd) {
  EXPECT_EQ(describe("1 +", {3, "m"}), "1:4: m\n  1 +\n     ^");
}

TEST(CalcErrorTest, NamesTheFileAndItsLinesWhenGivenTheOrigin) {
  EXPECT_EQ(describe("a\nb", {2, "m"}, Origin{"week.calc", 10}), "week.calc:11:1: m\n  b\n  ^");
}

}  // namespace
}  // namespace orlocal::host::calc
