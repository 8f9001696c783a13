#include "host/fmwrapper/date_time.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "host/fmwrapper/unicode.h"

namespace orlocal::host {
namespace {

std::string date(std::int64_t year, std::int64_t month, std::int64_t day) {
  const auto made = DateTime::fromDate(year, month, day);
  return made ? toUtf8(made->dateText()) : "none";
}

std::string time(std::int64_t hour, std::int64_t minute, std::int64_t second, std::int64_t micros = 0) {
  return toUtf8(DateTime::fromTime(hour, minute, second, micros).timeText());
}

DateTime onDay(std::int64_t year, std::int64_t month, std::int64_t day) {
  return DateTime::fromDate(year, month, day).value();
}

TEST(DateTime, CountsDaysFromTheFirstOfYearOne) {
  EXPECT_EQ(onDay(1, 1, 1).days(), 1);
  EXPECT_EQ(onDay(1970, 1, 1).days(), 719163);
  EXPECT_EQ(onDay(4000, 12, 31).days(), DateTime::kLastDay);
}

TEST(DateTime, FindsThePartsOfEveryDay) {
  DateTime previous = onDay(1, 1, 1);
  for (std::int32_t day = 2; day <= DateTime::kLastDay; ++day) {
    const DateTime current = DateTime::fromDays(Number(day)).value();
    const bool nextDay =
        current.year() == previous.year() && current.month() == previous.month() && current.day() == previous.day() + 1;
    const bool nextMonth = current.day() == 1 && (current.month() == previous.month() + 1 ||
                                                  (current.month() == 1 && current.year() == previous.year() + 1));
    ASSERT_TRUE(nextDay || nextMonth) << day;
    ASSERT_EQ(onDay(current.year(), current.month(), current.day()).days(), day);
    previous = current;
  }
}

TEST(DateTime, CarriesOverflowOfDates) {
  EXPECT_EQ(date(2026, 14, 1), "2027-02-01");
  EXPECT_EQ(date(2026, 0, 1), "2025-12-01");
  EXPECT_EQ(date(2026, -11, 1), "2025-01-01");
  EXPECT_EQ(date(2026, 3, 0), "2026-02-28");
  EXPECT_EQ(date(2024, 2, 30), "2024-03-01");
}

TEST(DateTime, KnowsNoDateOutsideItsYears) {
  EXPECT_EQ(date(0, 12, 31), "none");
  EXPECT_EQ(date(4000, 12, 32), "none");
  EXPECT_EQ(date(INT64_MAX, 1, 1), "none");
  EXPECT_EQ(date(0, 13, 1), "0001-01-01");
}

TEST(DateTime, CarriesOverflowOfTimes) {
  EXPECT_EQ(time(0, 90, 0), "01:30:00");
  EXPECT_EQ(time(1, -1, 0), "00:59:00");
  EXPECT_EQ(time(0, 0, 59, 1'500'000), "00:01:00.5");
  EXPECT_EQ(time(30, 0, 0), "30:00:00");
  EXPECT_EQ(time(0, 0, -1), "-00:00:01");
}

TEST(DateTime, GivesPartsOfLongAndNegativeTimes) {
  EXPECT_EQ(DateTime::fromTime(30, 15, 5).hour(), 30);
  const DateTime negative = DateTime::fromTime(-1, -30, 0);
  EXPECT_EQ(negative.hour(), -1);
  EXPECT_EQ(negative.minute(), -30);
}

TEST(DateTime, StopsAbsurdHoursAtALimit) {
  EXPECT_GT(DateTime::fromTime(INT64_MAX, 0, 0).micros(), 0);
  EXPECT_LT(DateTime::fromTime(INT64_MIN, 0, 0).micros(), 0);
}

TEST(DateTime, CarriesATimeBeyondADayIntoTheDate) {
  EXPECT_EQ(toUtf8(DateTime::combine(onDay(2026, 12, 31), DateTime::fromTime(25, 0, 0))->timestampText()),
            "2027-01-01 01:00:00");
  EXPECT_EQ(toUtf8(DateTime::combine(onDay(2026, 1, 1), DateTime::fromTime(0, -1, 0))->timestampText()),
            "2025-12-31 23:59:00");
  EXPECT_FALSE(DateTime::combine(DateTime(), DateTime::fromTime(1, 0, 0)));
}

TEST(DateTime, CountsSecondsFromTheFirstMidnight) {
  EXPECT_EQ(onDay(1, 1, 1).secondsSinceEpoch(), Number(0));
  EXPECT_EQ(onDay(1970, 1, 1).secondsSinceEpoch(), Number(62135596800));
  EXPECT_EQ(toUtf8(DateTime::fromSecondsSinceEpoch(Number::parse(u"62135596800.25"))->timestampText()),
            "1970-01-01 00:00:00.25");
  EXPECT_FALSE(DateTime::fromSecondsSinceEpoch(Number(-1)));
  EXPECT_FALSE(DateTime::fromSecondsSinceEpoch(Number::notANumber() / 1 + Number(INT64_MAX) * 9));
}

TEST(DateTime, CountsDaysOfTheWeekFromSunday) {
  EXPECT_EQ(onDay(2026, 11, 1).dayOfWeek(), 1);
  EXPECT_EQ(onDay(2026, 11, 7).dayOfWeek(), 7);
  EXPECT_EQ(onDay(1, 1, 1).dayOfWeek(), 2);
}

TEST(DateTime, CountsDaysAndWeeksOfTheYear) {
  EXPECT_EQ(onDay(2024, 12, 31).dayOfYear(), 366);
  EXPECT_EQ(onDay(2026, 1, 1).weekOfYear(), 1);
  EXPECT_EQ(onDay(2026, 1, 3).weekOfYear(), 1);
  EXPECT_EQ(onDay(2026, 1, 4).weekOfYear(), 2);
  EXPECT_EQ(onDay(2000, 12, 31).weekOfYear(), 54);
  EXPECT_EQ(onDay(2023, 1, 1).weekOfYear(), 1);
}

TEST(DateTime, KnowsLeapYears) {
  EXPECT_TRUE(onDay(2024, 1, 1).isLeapYear());
  EXPECT_TRUE(onDay(2000, 1, 1).isLeapYear());
  EXPECT_FALSE(onDay(1900, 1, 1).isLeapYear());
  EXPECT_FALSE(DateTime().isLeapYear());
}

TEST(DateTime, GivesZerosWithoutADate) {
  const DateTime empty;
  EXPECT_TRUE(empty.isEmpty());
  EXPECT_EQ(empty.year() + empty.month() + empty.day() + empty.dayOfWeek() + empty.dayOfYear() + empty.weekOfYear(), 0);
  EXPECT_EQ(empty.dateText() + empty.timeText() + empty.timestampText(), u"");
}

TEST(DateTime, WritesEarlyYearsWithFourDigits) { EXPECT_EQ(date(33, 4, 3), "0033-04-03"); }

TEST(DateTime, ReadsThePinnedClockInTheZoneOfTheProgram) {
  EXPECT_EQ(DateTime::now().timestampText(), u"2026-11-02 09:00:00");
}

TEST(DateTime, ReadsTheSystemsClockWhenItIsNotPinned) {
  const auto pinned = DateTime::currentMoment();
  DateTime::pinClock(std::nullopt);
  EXPECT_GE(DateTime::currentMoment(), std::chrono::system_clock::now().time_since_epoch() - std::chrono::hours(1));
  DateTime::pinClock(pinned);
}

TEST(DateTime, TakesOnePartOfAnother) {
  DateTime moment = DateTime::parseTimestamp(u"2026-11-02 09:00:00").value();
  moment.setDateOf(onDay(2000, 1, 1));
  moment.setTimeOf(DateTime::fromTime(1, 2, 3));
  EXPECT_EQ(moment.timestampText(), u"2000-01-01 01:02:03");
  EXPECT_EQ(moment.dateOnly().timestampText(), u"2000-01-01 00:00:00");
  EXPECT_EQ(moment.timeOnly().timestampText(), u"01:02:03");
}

}  // namespace
}  // namespace orlocal::host
