#include "host/commands/scripting/expected_lines.h"

#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

TEST(ExpectedLinesTest, ComparesLinesExactly) {
  EXPECT_TRUE(matchesLine("2", "2"));
  EXPECT_FALSE(matchesLine("2", "2 "));
  EXPECT_FALSE(matchesLine("a", "A"));
  EXPECT_FALSE(matchesLine("", "a"));
}

TEST(ExpectedLinesTest, LetsAnEllipsisStandForAnythingWithinALine) {
  EXPECT_TRUE(matchesLine("…", "anything"));
  EXPECT_TRUE(matchesLine("…", ""));
  EXPECT_TRUE(matchesLine("a…c", "abc"));
  EXPECT_TRUE(matchesLine("a…c…e", "abcde"));
  EXPECT_TRUE(matchesLine("…b…", "abab"));
  EXPECT_FALSE(matchesLine("a…c", "ab"));
  EXPECT_FALSE(matchesLine("ab…b", "ab"));
  EXPECT_FALSE(matchesLine("a…x…c", "abc"));
}

TEST(ExpectedLinesTest, KeepsWhatABackslashProtects) {
  EXPECT_TRUE(matchesLine("\\> quoted", "> quoted"));
  EXPECT_TRUE(matchesLine("\\…", "…"));
  EXPECT_FALSE(matchesLine("\\…", "anything"));
  EXPECT_TRUE(matchesLine("a\\…", "a…"));
  EXPECT_TRUE(matchesLine("C:\\x", "C:\\x"));
  EXPECT_TRUE(matchesLine("\\\\x", "\\x"));
}

TEST(ExpectedLinesTest, LeavesOutBlankLinesAtTheEndOfWhatIsExpected) {
  EXPECT_TRUE(matchesLines({"1", "", " "}, {"1"}));
  EXPECT_TRUE(matchesLines({"1", ""}, {"1", ""}));
  EXPECT_FALSE(matchesLines({"1"}, {"1", ""}));
  EXPECT_FALSE(matchesLines({"1", "", "2"}, {"1"}));
}

TEST(ExpectedLinesTest, NeedsNoLineForAnEmptyResult) {
  EXPECT_TRUE(matchesLines({}, {""}));
  EXPECT_TRUE(matchesLines({""}, {""}));
  EXPECT_FALSE(matchesLines({}, {"1"}));
  EXPECT_FALSE(matchesLines({"1"}, {""}));
}

}  // namespace
}  // namespace orlocal::host
