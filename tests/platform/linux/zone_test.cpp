#include "platform/linux/zone.h"

#include <chrono>
#include <memory>

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
