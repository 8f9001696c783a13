#include "host/calc/calc_failure.h"

#include <gtest/gtest.h>

namespace orlocal::host::calc {
namespace {

Failure at(std::size_t offset, std::string message) { return unreadable(offset, std::move(message)).value(); }

TEST(CalcFailureTest, CountsLinesAndColumnsFromOne) {
  EXPECT_EQ(placeOf("abc", 0), (Place{1, 1}));
  EXPECT_EQ(placeOf("abc\nde", 5), (Place{2, 2}));
}

TEST(CalcFailureTest, CountsColumnsInCharactersNotBytes) { EXPECT_EQ(placeOf("\"äö\" x", 7), (Place{1, 6})); }

TEST(CalcFailureTest, PointsAtThePlaceBelowTheLine) {
  EXPECT_EQ(describe("1 +\n2 * * 3", at(8, "a value is expected here")),
            "2:5: a value is expected here\n"
            "  2 * * 3\n"
            "      ^");
}

TEST(CalcFailureTest, PointsAtTheBeginningWithoutAPlace) {
  EXPECT_EQ(describe("1 +", {.message = "m"}), "1:1: m\n  1 +\n  ^");
}

TEST(CalcFailureTest, KeepsTabsSoThatTheCaretStandsRight) {
  EXPECT_EQ(describe("\tx", at(1, "m")), "1:2: m\n  \tx\n  \t^");
}

TEST(CalcFailureTest, PointsPastTheLastCharacterAtTheEnd) {
  EXPECT_EQ(describe("1 +", at(3, "m")), "1:4: m\n  1 +\n     ^");
}

TEST(CalcFailureTest, NamesTheFileAndItsLinesWhenGivenTheOrigin) {
  EXPECT_EQ(describe("a\nb", at(2, "m"), Origin{"week.calc", 10}), "week.calc:11:1: m\n  b\n  ^");
}

}  // namespace
}  // namespace orlocal::host::calc
