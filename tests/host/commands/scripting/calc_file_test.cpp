#include "host/commands/scripting/calc_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::pair<std::size_t, std::string>> calculationsIn(std::string_view text) {
  std::vector<std::pair<std::size_t, std::string>> result;
  for (const Calculation& calculation : readCalculations(text)) {
    result.emplace_back(calculation.line, calculation.text);
  }
  return result;
}

using Line = std::pair<std::size_t, std::string>;

TEST(CalcFileTest, TakesACalculationALine) {
  EXPECT_THAT(calculationsIn("1\n2\n"), ElementsAre(Line{1, "1"}, Line{2, "2"}));
}

TEST(CalcFileTest, GoesOnWhileABracketOrATextIsOpen) {
  EXPECT_THAT(calculationsIn("List (\n  1 ;\n\n  2 )\n3"),
              ElementsAre(Line{1, "List (\n  1 ;\n\n  2 )"}, Line{5, "3"}));
  EXPECT_THAT(calculationsIn("\"a\nb\"\n3"), ElementsAre(Line{1, "\"a\nb\""}, Line{3, "3"}));
}

TEST(CalcFileTest, ReadsACalculationOfManyLinesOnce) {
  std::string text = "Sum (\n1";
  for (int i = 0; i < 200'000; ++i) { text += ";\n1"; }
  text += ")\n2\n";
  const auto lines = calculationsIn(text);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[1], (Line{200'003, "2"}));
}

TEST(CalcFileTest, GoesOnBehindATextAndACommentOfSeveralLines) {
  EXPECT_THAT(calculationsIn("Left ( \"a\n)\nb\" ; /* (\n( */ 2\n)\n3\n"),
              ElementsAre(Line{1, "Left ( \"a\n)\nb\" ; /* (\n( */ 2\n)"}, Line{6, "3"}));
}

TEST(CalcFileTest, LeavesOutBlankLinesAndComments) {
  EXPECT_THAT(calculationsIn("#!/usr/bin/orlocal run\n\n  # note\n1\n// note\n/* two\nlines */\n2"),
              ElementsAre(Line{4, "1"}, Line{8, "2"}));
}

TEST(CalcFileTest, KeepsANumberSignInsideACalculation) {
  EXPECT_THAT(calculationsIn("List (\n# 1 )"), ElementsAre(Line{1, "List (\n# 1 )"}));
}

TEST(CalcFileTest, TakesAnyLineEndAndAByteOrderMark) {
  EXPECT_THAT(calculationsIn("\uFEFF1\r\n2\r3"), ElementsAre(Line{1, "1"}, Line{2, "2"}, Line{3, "3"}));
}

TEST(CalcFileTest, KeepsACalculationThatNeverEnds) {
  EXPECT_THAT(calculationsIn("1\nLeft ( 2\n3"), ElementsAre(Line{1, "1"}, Line{2, "Left ( 2\n3"}));
}

TEST(CalcFileTest, FindsNothingInNothing) { EXPECT_THAT(calculationsIn(""), IsEmpty()); }

}  // namespace
}  // namespace orlocal::host
