#include "platform/linux/zone_linux.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace orlocal {
namespace {

using namespace std::chrono;

std::shared_ptr<const TimeZone> berlin() { return timeZoneNamed("Europe/Berlin"); }
Date moment(const char* text) { return dateWithString(text).value(); }

DateComponents parts(int year, int month, int day, int hour, int minute) {
  DateComponents made;
  made.year = year;
  made.month = month;
  made.day = day;
  made.hour = hour;
  made.minute = minute;
  made.second = 0;
  return made;
}

TEST(LinuxTimeZone, KnowsTheOffsetOfNowAndItsName) {
  // Now is pinned to a winter's day.
  EXPECT_EQ(berlin()->secondsFromGMT(), 3600);
  EXPECT_EQ(berlin()->abbreviation(), "CET");
  EXPECT_EQ(berlin()->name(), "Europe/Berlin");
}

TEST(LinuxTimeZone, ChangesItsOffsetWithTheClocks) {
  EXPECT_EQ(berlin()->secondsFromGMTForDate(moment("2026-03-29 00:59:59 +0000")), 3600);
  EXPECT_EQ(berlin()->secondsFromGMTForDate(moment("2026-03-29 01:00:00 +0000")), 7200);
  EXPECT_EQ(berlin()->secondsFromGMTForDate(moment("2026-10-25 00:59:59 +0000")), 7200);
  EXPECT_EQ(berlin()->secondsFromGMTForDate(moment("2026-10-25 01:00:00 +0000")), 3600);
}

/// Any date must give what the zone's own rules give, near and far.
TEST(LinuxTimeZone, HasTheOffsetsOfItsRulesInEveryYear) {
  for (const char* name : {"Europe/Berlin", "America/New_York", "Asia/Kolkata", "Africa/Casablanca", "UTC",
                           "Australia/Lord_Howe", "Pacific/Apia", "America/Sao_Paulo"}) {
    const auto zone = timeZoneNamed(name);
    const auto rules = store::Zone::named(name).value();
    for (Date date = sys_days(year(1800) / 1 / 1); date < Date(sys_days(year(2300) / 1 / 1));
         date += hours(24 * 5 + 7)) {
      ASSERT_EQ(zone->secondsFromGMTForDate(date), rules.offsetSeconds(date)) << name << " " << formatDate(date, 0);
    }
  }
}

TEST(LinuxTimeZone, AnswersSeveralThreadsAtOnce) {
  const auto zone = makeTimeZone(store::Zone::named("Europe/Paris").value());
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&zone] { EXPECT_EQ(zone->secondsFromGMTForDate(sys_days(year(2026) / 7 / 1)), 7200); });
  }
  for (auto& thread : threads) thread.join();
}

TEST(LinuxTimeZone, TakesAMomentApart) {
  const auto made = berlin()->components(moment("2026-07-01 09:30:15 +0200"));
  EXPECT_EQ(made.year, 2026);
  EXPECT_EQ(made.month, 7);
  EXPECT_EQ(made.day, 1);
  EXPECT_EQ(made.hour, 9);
  EXPECT_EQ(made.minute, 30);
  EXPECT_EQ(made.second, 15);
  EXPECT_EQ(made.timeZone, std::nullopt);
}

TEST(LinuxTimeZone, PutsAMomentTogether) {
  EXPECT_EQ(berlin()->dateFromComponents(parts(2026, 7, 1, 9, 30)), moment("2026-07-01 09:30:00 +0200"));
}

TEST(LinuxTimeZone, ReadsASkippedTimeWithTheOffsetBeforeTheGap) {
  EXPECT_EQ(berlin()->dateFromComponents(parts(2026, 3, 29, 2, 30)), moment("2026-03-29 03:30:00 +0200"));
}

TEST(LinuxTimeZone, TakesTheFirstOfARepeatedTime) {
  EXPECT_EQ(berlin()->dateFromComponents(parts(2026, 10, 25, 2, 30)), moment("2026-10-25 02:30:00 +0200"));
}

TEST(LinuxTimeZone, TakesTheFirstPossibleValueForMissingParts) {
  DateComponents yearOnly;
  yearOnly.year = 2026;
  EXPECT_EQ(berlin()->dateFromComponents(yearOnly), moment("2026-01-01 00:00:00 +0100"));
}

TEST(LinuxTimeZone, MakesNoMomentWithoutAYear) {
  DateComponents noYear;
  noYear.month = 3;
  EXPECT_EQ(berlin()->dateFromComponents(noYear), std::nullopt);
}

TEST(LinuxTimeZone, ReadsPartsInTheZoneThatTheyName) {
  auto made = parts(2026, 7, 1, 9, 30);
  made.timeZone = "Asia/Tokyo";
  EXPECT_EQ(berlin()->dateFromComponents(made), moment("2026-07-01 09:30:00 +0900"));
  made.timeZone = "Nowhere/Else";
  EXPECT_EQ(berlin()->dateFromComponents(made), moment("2026-07-01 09:30:00 +0200"));
}

TEST(TimeZoneNamed, FindsNothingUnderAnotherName) { EXPECT_EQ(timeZoneNamed("Nowhere/Else"), nullptr); }

TEST(TimeZoneNamed, GivesTheSameZoneAgain) { EXPECT_EQ(berlin(), berlin()); }

}  // namespace
}  // namespace orlocal
