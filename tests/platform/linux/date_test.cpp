#include "platform/date.h"

#include <gtest/gtest.h>

namespace orlocal {
namespace {

using namespace std::chrono_literals;

constexpr Date at(std::chrono::sys_days day, std::chrono::microseconds time = 0us) { return day + time; }

TEST(DateWithString, ReadsDateTimeAndOffset) {
  using namespace std::chrono;
  EXPECT_EQ(dateWithString("2014-03-09 02:30:00 -0500"), at(2014y / March / 9, 7h + 30min));
  EXPECT_EQ(dateWithString("2026-07-01 00:00:59 +0530"), at(2026y / June / 30, 18h + 30min + 59s));
}

TEST(DateWithString, ReadsGreenwichWithEitherSign) {
  EXPECT_EQ(dateWithString("2026-01-01 12:00:00 -0000"), dateWithString("2026-01-01 12:00:00 +0000"));
}

TEST(DateWithString, ReadsYearsOfAnyLength) {
  using namespace std::chrono;
  EXPECT_EQ(dateWithString("1-01-01 00:00:00 +0000"), at(1y / January / 1));
  EXPECT_EQ(dateWithString("0999-12-31 00:00:00 +0000"), at(999y / December / 31));
  EXPECT_EQ(dateWithString("12026-01-01 00:00:00 +0000"), at(12026y / January / 1));
  EXPECT_EQ(dateWithString("-44-03-15 00:00:00 +0000"), at(year(-44) / March / 15));
}

TEST(DateWithString, KnowsLeapDays) {
  EXPECT_TRUE(dateWithString("2024-02-29 00:00:00 +0000"));
  EXPECT_TRUE(dateWithString("2000-02-29 00:00:00 +0000"));
  EXPECT_FALSE(dateWithString("1900-02-29 00:00:00 +0000"));
  EXPECT_FALSE(dateWithString("2026-02-29 00:00:00 +0000"));
}

TEST(DateWithString, RefusesWhatIsNotOfItsForm) {
  for (const char* text : {
           "",
           "2026-01-01",
           "2026-01-01 12:00:00",
           "2026-01-01 12:00:00 ",
           "2026-01-01 12:00:00 +01",
           "2026-01-01 12:00:00 +01:00",
           "2026-01-01 12:00:00 +051800",  // what a zone of half an hour leads to
           "2026-01-01 12:00:00 0100",
           "2026-01-01 12:00:00  +0100",
           "2026-01-01  12:00:00 +0100",
           "2026-01-01T12:00:00 +0100",
           "2026/01/01 12:00:00 +0100",
           "2026-1-01 12:00:00 +0100",
           "2026-01-01 12:00 +0100",
           "2026-01-01 12:00:00 +0100 ",
           " 2026-01-01 12:00:00 +0100",
           "999999-01-01 12:00:00 +0000",
       }) {
    EXPECT_FALSE(dateWithString(text)) << text;
  }
}

TEST(DateWithString, RefusesPartsThatOverflow) {
  for (const char* text : {
           "2026-13-01 12:00:00 +0100",
           "2026-00-01 12:00:00 +0100",
           "2026-01-00 12:00:00 +0100",
           "2026-04-31 12:00:00 +0100",
           "2026-01-01 24:00:00 +0100",
           "2026-01-01 12:60:00 +0100",
           "2026-01-01 12:00:75 +0100",
           "2026-01-01 12:00:00 +2400",
           "2026-01-01 12:00:00 +0160",
       }) {
    EXPECT_FALSE(dateWithString(text)) << text;
  }
}

TEST(FormatDate, WritesTheWallClockAndItsOffset) {
  using namespace std::chrono;
  EXPECT_EQ(formatDate(at(2014y / March / 9, 7h + 30min), -5 * 3600), "2014-03-09 02:30:00 -0500");
  EXPECT_EQ(formatDate(at(2026y / June / 30, 18h + 30min + 59s), 19'800), "2026-07-01 00:00:59 +0530");
}

TEST(FormatDate, WritesGreenwichWithAPlus) {
  using namespace std::chrono;
  EXPECT_EQ(formatDate(at(1970y / January / 1), 0), "1970-01-01 00:00:00 +0000");
}

TEST(FormatDate, CutsFractionsOfASecondTowardsThePast) {
  using namespace std::chrono;
  EXPECT_EQ(formatDate(at(1969y / December / 31, 23h + 59min + 59s + 900ms), 0), "1969-12-31 23:59:59 +0000");
}

TEST(FormatDate, CutsSecondsOfTheOffset) {
  using namespace std::chrono;
  EXPECT_EQ(formatDate(at(1880y / January / 1), 3208), "1880-01-01 00:53:28 +0053");
}

TEST(FormatDate, ReachesTheDistantPastAndFuture) {
  EXPECT_EQ(formatDate(distantPast(), 0), "0001-01-01 00:00:00 +0000");
  EXPECT_EQ(formatDate(distantFuture(), 0), "4001-01-01 00:00:00 +0000");
  EXPECT_EQ(formatDate(distantPast(), -3600), "0000-12-31 23:00:00 -0100");
}

TEST(FormatDate, WritesWhatCanBeReadAgainOnEveryDayOfFourCenturies) {
  using namespace std::chrono;
  for (sys_days day = 1799y / December / 31; day < sys_days(2200y / January / 2); day += days(1)) {
    const Date date = at(day, 13h + 14min + 15s);
    ASSERT_EQ(dateWithString(formatDate(date, 3600)), date);
  }
}

}  // namespace
}  // namespace orlocal
