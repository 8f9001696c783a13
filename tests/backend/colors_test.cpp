#include "backend/colors.h"

#include <gtest/gtest.h>

namespace orlocal {
namespace {

struct NamedCase {
  const char* name;
  Color color;
};

TEST(ColorNamed, KnowsTheFifteenNames) {
  const NamedCase cases[] = {
      {"black", Color::calibratedWhite(0)},           {"blue", Color::calibratedRgb(0, 0, 1)},
      {"brown", Color::calibratedRgb(0.6, 0.4, 0.2)}, {"clear", Color::calibratedWhite(0, 0)},
      {"cyan", Color::calibratedRgb(0, 1, 1)},        {"darkgray", Color::calibratedWhite(1.0 / 3)},
      {"gray", Color::calibratedWhite(0.5)},          {"green", Color::calibratedRgb(0, 1, 0)},
      {"lightgray", Color::calibratedWhite(2.0 / 3)}, {"magenta", Color::calibratedRgb(1, 0, 1)},
      {"orange", Color::calibratedRgb(1, 0.5, 0)},    {"purple", Color::calibratedRgb(0.5, 0, 0.5)},
      {"red", Color::calibratedRgb(1, 0, 0)},         {"white", Color::calibratedWhite(1)},
      {"yellow", Color::calibratedRgb(1, 1, 0)},
  };
  for (const auto& row : cases) { EXPECT_EQ(colorNamed(row.name), row.color) << row.name; }
}

TEST(ColorNamed, ComparesWithoutCase) { EXPECT_EQ(colorNamed("DarkGray"), Color::calibratedWhite(1.0 / 3)); }

TEST(ColorNamed, KnowsNoOtherName) {
  for (const char* name : {"grey", "pink", "", "red ", "255 0 0"}) {
    EXPECT_EQ(colorNamed(name), std::nullopt) << name;
  }
  EXPECT_EQ(colorNamed(std::nullopt), std::nullopt);
}

TEST(ColorFromNumbers, DividesThreeNumbersBy255) {
  EXPECT_EQ(colorFromNumbers("255 128 0"), Color::calibratedRgb(1, 128.0 / 255, 0));
  EXPECT_EQ(colorFromNumbers("0\t127.5\t255"), Color::calibratedRgb(0, 0.5, 1));
}

TEST(ColorFromNumbers, WantsExactlyThreePieces) {
  for (const char* text : {"", "255", "255 128", "255 128 0 0", "255 128 0 ", " 255 128 0", "255  128 0"}) {
    EXPECT_EQ(colorFromNumbers(text), std::nullopt) << '"' << text << '"';
  }
  EXPECT_EQ(colorFromNumbers(std::nullopt), std::nullopt);
}

TEST(ColorFromNumbers, RejectsNegativeComponents) {
  for (const char* text : {"-1 0 0", "0 -0.5 0", "0 0 -255"}) {
    EXPECT_EQ(colorFromNumbers(text), std::nullopt) << text;
  }
}

TEST(ColorFromNumbers, TestsTheUpperBoundAfterTheDivision) {
  EXPECT_EQ(colorFromNumbers("300 0 0"), Color::calibratedRgb(300.0 / 255, 0, 0));
  EXPECT_EQ(colorFromNumbers("65025 0 0"), Color::calibratedRgb(255, 0, 0));
  EXPECT_EQ(colorFromNumbers("65026 0 0"), std::nullopt);
  EXPECT_EQ(colorFromNumbers("0 0 1e300"), std::nullopt);
}

TEST(ColorFromNumbers, ReadsWordsAsZero) { EXPECT_EQ(colorFromNumbers("red inf nan"), Color::calibratedRgb(0, 0, 0)); }

TEST(ColorText, WritesWholeNumbersBetweenBlanks) {
  EXPECT_EQ(colorText(Color::calibratedRgb(1, 128.0 / 255, 0)), "255 128 0");
  EXPECT_EQ(colorText(Color::calibratedWhite(0.5)), "128 128 128");
  EXPECT_EQ(colorText(Color::calibratedRgb(300.0 / 255, 0.1, 0)), "300 26 0");
}

TEST(ColorText, IsAbsentForAColorWithoutComponents) {
  Color pattern;
  pattern.space = Color::Space::kPattern;
  EXPECT_EQ(colorText(pattern), std::nullopt);
  EXPECT_EQ(colorText(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace orlocal
