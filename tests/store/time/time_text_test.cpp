#include "store/time/time_text.h"

#include <gtest/gtest.h>

namespace orlocal::store {
namespace {

TEST(TimeTexts, ComeBackAsTheyWere) {
  for (const char* text : {"20261121", "20261121T090000", "20261121T090000Z", "00010101T000000", "99991231T235959Z"}) {
    const auto time = parseTime(text);
    ASSERT_TRUE(time) << text;
    EXPECT_EQ(timeText(*time), text);
  }
}

TEST(TimeTexts, AreOfTheirKind) {
  EXPECT_EQ(parseTime("20261121")->kind, CalendarTime::Kind::kDate);
  EXPECT_EQ(parseTime("20261121T090000")->kind, CalendarTime::Kind::kFloating);
  EXPECT_EQ(parseTime("20261121T090000Z")->kind, CalendarTime::Kind::kUtc);
}

TEST(TimeTexts, ShowALeapSecondAsTheOneBefore) {
  EXPECT_EQ(timeText(*parseTime("20161231T235960Z")), "20161231T235959Z");
}

TEST(TimeTexts, AreRefusedWhenThereIsNoSuchDate) {
  for (const char* text :
       {"", "2026", "20260229", "20261301", "20260100", "00000101", "20260101T240000", "20260101T006000",
        "20260101T0000", "20260101T000000ZZ", "20260101 000000", "2026-01-01", "20260101T00000a", "-0011130T100000"}) {
    EXPECT_FALSE(parseTime(text)) << text;
  }
}

struct Length {
  const char* text;
  std::int64_t days, seconds;
};

TEST(Durations, SeparateDaysFromExactTime) {
  for (const Length& length :
       {Length{"P1D", 1, 0}, Length{"PT24H", 0, 86400}, Length{"P2W", 14, 0}, Length{"-PT15M", 0, -900},
        Length{"P1DT2H3M4S", 1, 7384}, Length{"+P1D", 1, 0}, Length{"PT0S", 0, 0}, Length{"-P1DT6H", -1, -21600},
        Length{"PT", 0, 0}, Length{"p1d", 1, 0}}) {
    const auto read = parseDuration(length.text);
    ASSERT_TRUE(read) << length.text;
    EXPECT_EQ(read->days, length.days) << length.text;
    EXPECT_EQ(read->seconds, length.seconds) << length.text;
  }
}

TEST(Durations, AreRefusedWhenTheyAreNone) {
  for (const char* text : {"", "P", "1D", "PD", "P1", "PT1X", "P1DT1HT1M", "P99999999999D", "P-1D"}) {
    EXPECT_FALSE(parseDuration(text)) << text;
  }
}

TEST(Durations, AreWrittenInTheirShortestForm) {
  using std::chrono::seconds;
  EXPECT_EQ(durationText(seconds(0)), "PT0S");
  EXPECT_EQ(durationText(seconds(-900)), "-PT15M");
  EXPECT_EQ(durationText(seconds(86400)), "P1D");
  EXPECT_EQ(durationText(seconds(-7 * 86400)), "-P1W");
  EXPECT_EQ(durationText(seconds(86400 + 3600 + 60 + 1)), "P1DT1H1M1S");
}

TEST(Offsets, ComeWithAndWithoutColonsAndSeconds) {
  EXPECT_EQ(parseOffset("+0130"), 5400);
  EXPECT_EQ(parseOffset("-05:00"), -18000);
  EXPECT_EQ(parseOffset("+005328"), 3208);
  EXPECT_EQ(offsetText(3208), "+005328");
  EXPECT_EQ(offsetText(-12600), "-0330");
  for (const char* text : {"", "0100", "+1", "+0160", "+2400", "+01000"}) { EXPECT_FALSE(parseOffset(text)) << text; }
}

}  // namespace
}  // namespace orlocal::store
