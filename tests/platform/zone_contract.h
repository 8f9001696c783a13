#pragma once

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/zone.h"

// What every time zone promises. A test program includes this header once, and instantiates `TimeZoneContract` with
// makers of the zone Europe/Berlin, for which it is the 2nd of November 2026.

namespace orlocal::contract {

using MakeBerlin = std::shared_ptr<const TimeZone> (*)();

class TimeZoneContract : public testing::TestWithParam<MakeBerlin> {
 protected:
  static Date moment(const char* text) { return dateWithString(text).value(); }
  static DateComponents parts(int year, int month, int day, int hour, int minute) {
    DateComponents made;
    made.year = year;
    made.month = month;
    made.day = day;
    made.hour = hour;
    made.minute = minute;
    made.second = 0;
    return made;
  }

  std::shared_ptr<const TimeZone> berlin = GetParam()();
};

TEST_P(TimeZoneContract, HasItsName) { EXPECT_EQ(berlin->name(), "Europe/Berlin"); }

TEST_P(TimeZoneContract, KnowsTheOffsetAndTheShortNameInForceNow) {
  EXPECT_EQ(berlin->secondsFromGMT(), 3600);
  EXPECT_EQ(berlin->abbreviation(), "CET");
}

TEST_P(TimeZoneContract, ChangesItsOffsetWithTheClocks) {
  EXPECT_EQ(berlin->secondsFromGMTForDate(moment("2026-03-29 00:59:59 +0000")), 3600);
  EXPECT_EQ(berlin->secondsFromGMTForDate(moment("2026-03-29 01:00:00 +0000")), 7200);
  EXPECT_EQ(berlin->secondsFromGMTForDate(moment("2026-10-25 00:59:59 +0000")), 7200);
  EXPECT_EQ(berlin->secondsFromGMTForDate(moment("2026-10-25 01:00:00 +0000")), 3600);
}

TEST_P(TimeZoneContract, UsesTheNearestRuleForDatesThatNoRuleIsFor) {
  EXPECT_EQ(berlin->secondsFromGMTForDate(distantPast()),
            berlin->secondsFromGMTForDate(moment("1800-01-01 00:00:00 +0000")));
  EXPECT_EQ(berlin->secondsFromGMTForDate(distantFuture()), 3600);
}

TEST_P(TimeZoneContract, TakesAMomentApart) {
  const auto made = berlin->components(moment("2026-07-01 09:30:15 +0200"));
  EXPECT_EQ(made.year, 2026);
  EXPECT_EQ(made.month, 7);
  EXPECT_EQ(made.day, 1);
  EXPECT_EQ(made.hour, 9);
  EXPECT_EQ(made.minute, 30);
  EXPECT_EQ(made.second, 15);
  EXPECT_EQ(made.timeZone, std::nullopt);
}

TEST_P(TimeZoneContract, PutsAMomentTogether) {
  EXPECT_EQ(berlin->dateFromComponents(parts(2026, 7, 1, 9, 30)), moment("2026-07-01 09:30:00 +0200"));
  EXPECT_EQ(berlin->dateFromComponents(parts(2026, 12, 1, 9, 30)), moment("2026-12-01 09:30:00 +0100"));
}

TEST_P(TimeZoneContract, ReadsASkippedTimeWithTheOffsetBeforeTheGap) {
  EXPECT_EQ(berlin->dateFromComponents(parts(2026, 3, 29, 2, 30)), moment("2026-03-29 03:30:00 +0200"));
}

TEST_P(TimeZoneContract, TakesTheFirstOfARepeatedTime) {
  EXPECT_EQ(berlin->dateFromComponents(parts(2026, 10, 25, 2, 30)), moment("2026-10-25 02:30:00 +0200"));
}

TEST_P(TimeZoneContract, TakesTheFirstPossibleValueForMissingParts) {
  DateComponents yearOnly;
  yearOnly.year = 2026;
  EXPECT_EQ(berlin->dateFromComponents(yearOnly), moment("2026-01-01 00:00:00 +0100"));
}

TEST_P(TimeZoneContract, MakesNoMomentWithoutAYear) {
  DateComponents noYear;
  noYear.month = 3;
  noYear.timeZone = "UTC";
  EXPECT_EQ(berlin->dateFromComponents(noYear), std::nullopt);
}

TEST_P(TimeZoneContract, ReadsPartsInTheZoneThatTheyNameWhenItIsKnown) {
  auto made = parts(2026, 7, 1, 9, 30);
  made.timeZone = "UTC";
  EXPECT_EQ(berlin->dateFromComponents(made), moment("2026-07-01 09:30:00 +0000"));
  made.timeZone = "Nowhere/Else";
  EXPECT_EQ(berlin->dateFromComponents(made), moment("2026-07-01 09:30:00 +0200"));
}

TEST_P(TimeZoneContract, AnswersSeveralThreadsAtOnce) {
  const Date summer = moment("2026-07-01 09:30:00 +0200");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      EXPECT_EQ(berlin->secondsFromGMTForDate(summer), 7200);
      EXPECT_EQ(berlin->dateFromComponents(berlin->components(summer)), summer);
      EXPECT_EQ(berlin->abbreviation(), "CET");
    });
  }
  for (auto& thread : threads) { thread.join(); }
}

}  // namespace orlocal::contract
