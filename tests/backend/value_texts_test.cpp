#include "backend/value_texts.h"

#include <limits>

#include <gtest/gtest.h>

#include "fakes/fake_platform.h"

namespace orlocal {
namespace {

TEST(BooleanText, IsCapitalised) {
  EXPECT_EQ(booleanText(true), "True");
  EXPECT_EQ(booleanText(false), "False");
}

TEST(FixedText, WritesSixDecimals) {
  EXPECT_EQ(fixedText(-900, 6), "-900.000000");
  EXPECT_EQ(fixedText(0.5, 6), "0.500000");
  EXPECT_EQ(fixedText(1e15, 6), "1000000000000000.000000");
}

TEST(FixedText, RoundsToWholeNumbers) {
  EXPECT_EQ(fixedText(127.5, 0), "128");
  EXPECT_EQ(fixedText(254.9999, 0), "255");
}

TEST(FixedText, WritesTheLongestNumber) { EXPECT_EQ(fixedText(-std::numeric_limits<double>::max(), 6).size(), 317u); }

TEST(DateText, ShowsTheOffsetInForceAtThatMoment) {
  using namespace std::chrono;
  const auto made = std::make_shared<fakes::FakePlatform>();
  made->m_defaultTimeZone = std::make_shared<fakes::FakeTimeZone>(fakes::FakeTimeZone::berlin());
  setPlatform(made);
  EXPECT_EQ(dateText(sys_days{2026y / 11 / 3} + 9h), "2026-11-03 10:00:00 +0100");
  EXPECT_EQ(dateText(sys_days{2026y / 7 / 3} + 9h + 30min + 15s), "2026-07-03 11:30:15 +0200");
  EXPECT_EQ(dateText(std::nullopt), std::nullopt);
  setPlatform(nullptr);
}

TEST(ListText, PutsReturnsBetweenItems) {
  EXPECT_EQ(listText(std::vector<long>{2, 6}), "2\r6");
  EXPECT_EQ(listText(std::vector<long>{-1}), "-1");
  EXPECT_EQ(listText(std::vector<long>{}), "");
  EXPECT_EQ(listText(std::vector<std::string>{"2,3", "", "x"}), "2,3\r\rx");
}

TEST(PairText, PutsACommaBetween) { EXPECT_EQ(pairText(-1, 3), "-1,3"); }

struct IntegerCase {
  const char* text;
  std::int32_t value;
};

TEST(IntegerValue, ReadsTheNumberThatATextStartsWith) {
  const IntegerCase cases[] = {
      {"15", 15},
      {"-900", -900},
      {"+7", 7},
      {"  12", 12},
      {"12 minutes", 12},
      {"3.9", 3},
      {"", 0},
      {"x", 0},
      {"-", 0},
      {"--1", 0},
      {"2147483647", 2147483647},
      {"2147483648", 2147483647},
      {"99999999999999999999", 2147483647},
      {"-2147483648", std::numeric_limits<std::int32_t>::min()},
      {"-99999999999999999999", std::numeric_limits<std::int32_t>::min()},
  };
  for (const auto& row : cases) { EXPECT_EQ(integerValue(row.text), row.value) << row.text; }
}

struct DoubleCase {
  const char* text;
  double value;
};

TEST(DoubleValue, ReadsTheNumberThatATextStartsWith) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const DoubleCase cases[] = {
      {"255", 255},
      {"-1.5", -1.5},
      {"+2", 2},
      {".5", 0.5},
      {"1e2x", 100},
      {" 7", 7},
      {"", 0},
      {"x", 0},
      {"inf", 0},
      {"nan", 0},
      {"-inf", 0},
      {"1e999", kInfinity},
      {"-1e999", -kInfinity},
      {"1e-999", 0},
      {"0,5", 0},
  };
  for (const auto& row : cases) { EXPECT_EQ(doubleValue(row.text), row.value) << row.text; }
}

TEST(DoubleValue, TellsTheTooLongFromTheTooSmallWithoutAnExponent) {
  const std::string zeros(400, '0');
  EXPECT_EQ(doubleValue("1" + zeros), std::numeric_limits<double>::infinity());
  EXPECT_EQ(doubleValue("10" + zeros + ".5"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(doubleValue("0." + zeros + "1"), 0);
  EXPECT_EQ(doubleValue("." + zeros + "1"), 0);
}

TEST(UrlWithString, KeepsWhatAnAddressCanCarry) {
  for (const char* url : {"https://example.org/a?b=c&d=%20#e", "mailto:me@example.org", "file:///tmp/x.txt", "",
                          "AZaz09-._~:/?#[]@!$&'()*+,;=", "%09%aF%Fa"}) {
    EXPECT_EQ(urlWithString(url), url);
  }
  EXPECT_EQ(urlWithString(std::nullopt), std::nullopt);
}

TEST(UrlWithString, EncodesTheRest) {
  EXPECT_EQ(urlWithString("https://example.org/a b"), "https://example.org/a%20b");
  EXPECT_EQ(urlWithString("https://example.org/\xC3\xBC"), "https://example.org/%C3%BC");
  EXPECT_EQ(urlWithString("100%"), "100%25");
  EXPECT_EQ(urlWithString("%zz"), "%25zz");
  EXPECT_EQ(urlWithString("%0g%G0%0"), "%250g%25G0%250");
  EXPECT_EQ(urlWithString("^`{|}\"<>\\\x7F"), "%5E%60%7B%7C%7D%22%3C%3E%5C%7F");
  EXPECT_EQ(urlWithString("a\r\nb"), "a%0D%0Ab");
}

}  // namespace
}  // namespace orlocal
