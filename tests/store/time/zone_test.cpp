#include "store/time/zone.h"

#include <cstdlib>
#include <optional>
#include <string>

#include <gtest/gtest.h>

namespace orlocal::store {
namespace {

/// Sets an environment variable for as long as it lives.
class Environment {
 public:
  Environment(const char* name, std::optional<std::string> value) : m_name(name) {
    if (const char* before = std::getenv(name)) { m_before = before; }
    set(value);
  }
  ~Environment() { set(m_before); }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

 private:
  void set(const std::optional<std::string>& value) {
    if (value) {
      setenv(m_name, value->c_str(), 1);
    } else {
      unsetenv(m_name);
    }
  }
  const char* m_name;
  std::optional<std::string> m_before;
};

Moment utc(int year, int month, int day, int hour = 0, int minute = 0) {
  return Zone().toMoment(LocalTime(year, month, day, hour, minute));
}

Zone userZone(const char* tz) {
  const Environment environment("TZ", tz);
  return Zone::ofUser();
}

TEST(ZoneNames, AreThoseOfTheSystemsZoneFiles) {
  ASSERT_TRUE(Zone::named("Europe/Berlin"));
  EXPECT_EQ(Zone::named("Europe/Berlin")->name(), "Europe/Berlin");
  EXPECT_TRUE(Zone::named("America/Argentina/Buenos_Aires"));
  EXPECT_TRUE(Zone::named("Etc/GMT+5"));
}

TEST(ZoneNames, NeverReachOutsideTheFolder) {
  for (const char* name :
       {"", "/etc/localtime", "../../etc/localtime", "Europe/../Europe/Berlin", "Europe//Berlin", "Europe",
        "libc:localtime", "Fixed/UTC+01:00:00", "file:/etc/localtime", "No/Such_Zone", "Europe/Berlin/"}) {
    EXPECT_FALSE(Zone::named(name)) << name;
  }
}

TEST(ZoneOfUser, IsTheNameInTz) { EXPECT_EQ(userZone("America/New_York").name(), "America/New_York"); }
TEST(ZoneOfUser, TakesANameAfterAColon) { EXPECT_EQ(userZone(":Asia/Tokyo").name(), "Asia/Tokyo"); }
TEST(ZoneOfUser, TakesAZoneFilesPath) { EXPECT_EQ(userZone(":/usr/share/zoneinfo/Asia/Tokyo").name(), "Asia/Tokyo"); }
TEST(ZoneOfUser, IsUtcWhenTzIsEmpty) { EXPECT_EQ(userZone("").name(), "UTC"); }
TEST(ZoneOfUser, IsUtcWhenTzNamesNothing) { EXPECT_EQ(userZone("No/Such_Zone").name(), "UTC"); }

TEST(ZoneOfUser, IsReadAnewAtEachCall) {
  EXPECT_EQ(userZone("Asia/Tokyo").name(), "Asia/Tokyo");
  EXPECT_EQ(userZone("Europe/Paris").name(), "Europe/Paris");
}

TEST(PosixZone, ChangesTheClockByItsRules) {
  const Zone zone = userZone("CET-1CEST,M3.5.0,M10.5.0/3");
  const Zone berlin = *Zone::named("Europe/Berlin");
  for (Moment at = utc(2000, 1, 1); at < utc(2040, 1, 1); at += std::chrono::hours(5)) {
    ASSERT_EQ(zone.offsetSeconds(at), berlin.offsetSeconds(at)) << at.time_since_epoch().count();
  }
  EXPECT_EQ(zone.abbreviation(utc(2026, 7, 1)), "CEST");
}

TEST(PosixZone, CanBeNamedByItsText) {
  EXPECT_EQ(userZone("<+0330>-3:30").name(), "TZ:<+0330>-3:30");
  ASSERT_TRUE(Zone::named("TZ:<+0330>-3:30"));
  EXPECT_EQ(Zone::named("TZ:<+0330>-3:30")->offsetSeconds(utc(2026, 7, 1)), 12600);
  EXPECT_FALSE(Zone::named("GMT+1"));
}

TEST(PosixZone, TakesTheUnitedStatesRulesWhenItHasNone) {
  const Zone zone = userZone("EST5EDT4");
  const Zone newYork = *Zone::named("America/New_York");
  for (Moment at = utc(2010, 1, 1); at < utc(2030, 1, 1); at += std::chrono::hours(7)) {
    ASSERT_EQ(zone.offsetSeconds(at), newYork.offsetSeconds(at));
  }
}

TEST(PosixZone, CountsDaysOfTheYearWithAndWithoutTheLeapDay) {
  const Zone zone = userZone("AAA0BBB,J60,300/0");
  EXPECT_EQ(zone.offsetSeconds(utc(2024, 3, 1, 1)), 0);
  EXPECT_EQ(zone.offsetSeconds(utc(2024, 3, 1, 2)), 3600);
  EXPECT_EQ(zone.offsetSeconds(utc(2023, 3, 1, 2)), 3600);
  EXPECT_EQ(zone.offsetSeconds(utc(2024, 10, 26, 22, 59)), 3600);  // day 300, counted from 0, of a leap year
  EXPECT_EQ(zone.offsetSeconds(utc(2024, 10, 26, 23)), 0);
}

TEST(PosixZone, MayBeOnTheSouthernHalf) {
  const Zone zone = userZone("AEST-10AEDT,M10.1.0,M4.1.0/3");
  const Zone sydney = *Zone::named("Australia/Sydney");
  for (Moment at = utc(2010, 1, 1); at < utc(2030, 1, 1); at += std::chrono::hours(7)) {
    ASSERT_EQ(zone.offsetSeconds(at), sydney.offsetSeconds(at));
  }
}

TEST(PosixZone, IsNoneWhenItsTextIsBroken) {
  for (const char* text : {"CE-1", "CEX", "CET-1CEST,", "CET-1CEST,M3.5.0", "CET-1CEST,M13.5.0,M10.5.0", "CET-99",
                           "CET-1CEST,M3.5.0,M10.5.0x"}) {
    EXPECT_EQ(userZone(text).name(), "UTC") << text;
  }
}

TEST(ZoneConversion, ReadsASkippedTimeWithTheOffsetBeforeTheGap) {
  const Zone berlin = *Zone::named("Europe/Berlin");
  const Moment moment = berlin.toMoment(LocalTime(2026, 3, 29, 2, 30));
  EXPECT_EQ(moment, utc(2026, 3, 29, 1, 30));
  EXPECT_EQ(berlin.toLocal(moment), LocalTime(2026, 3, 29, 3, 30));
}

TEST(ZoneConversion, ReadsARepeatedTimeAsTheFirst) {
  EXPECT_EQ(Zone::named("Europe/Berlin")->toMoment(LocalTime(2026, 10, 25, 2, 30)), utc(2026, 10, 25, 0, 30));
}

TEST(ZoneConversion, KeepsFractionsOutOfTheWallClock) {
  const Moment moment = utc(1969, 12, 31, 23) - std::chrono::microseconds(1);
  EXPECT_EQ(Zone().toLocal(moment), LocalTime(1969, 12, 31, 22, 59, 59));
}

TEST(ZoneConversion, SurvivesTheDistantPastAndFuture) {
  const Zone berlin = *Zone::named("Europe/Berlin");
  for (const Moment moment : {utc(1, 1, 1), utc(4001, 1, 1), Moment::max()}) {
    EXPECT_EQ(berlin.toMoment(berlin.toLocal(moment)), std::chrono::floor<std::chrono::seconds>(moment));
  }
}

TEST(ZoneConversion, StopsWhereMomentsEnd) {
  EXPECT_LT(Zone().toMoment(LocalTime(-400'000, 1, 1)), utc(-200'000, 1, 1));
  EXPECT_GT(Zone().toMoment(LocalTime(400'000, 1, 1)), utc(200'000, 1, 1));
}

TEST(ZoneChanges, ComeInTheirOrder) {
  const auto change = Zone::named("Europe/Berlin")->changeAfter(utc(2026, 1, 1));
  ASSERT_TRUE(change);
  EXPECT_EQ(*change, (Zone::Change{utc(2026, 3, 29, 1), 3600, 7200, true, "CEST"}));
  const auto next = Zone::named("Europe/Berlin")->changeAfter(change->at);
  ASSERT_TRUE(next);
  EXPECT_EQ(*next, (Zone::Change{utc(2026, 10, 25, 1), 7200, 3600, false, "CET"}));
}

TEST(ZoneChanges, AreNoneInUtc) { EXPECT_FALSE(Zone().changeAfter(utc(1900, 1, 1))); }

TEST(MomentOfATime, DependsOnItsKind) {
  const Zone tokyo = *Zone::named("Asia/Tokyo");
  const LocalTime nine(2026, 11, 2, 9);
  EXPECT_EQ(momentOf({CalendarTime::Kind::kUtc, nine, ""}, tokyo), utc(2026, 11, 2, 9));
  EXPECT_EQ(momentOf({CalendarTime::Kind::kFloating, nine, ""}, tokyo), utc(2026, 11, 2, 0));
  EXPECT_EQ(momentOf({CalendarTime::Kind::kZoned, nine, "Europe/Berlin"}, tokyo), utc(2026, 11, 2, 8));
  EXPECT_EQ(momentOf({CalendarTime::Kind::kDate, LocalTime(2026, 11, 2), ""}, tokyo), utc(2026, 11, 1, 15));
  EXPECT_EQ(momentOf({CalendarTime::Kind::kZoned, nine, "Gone"}, tokyo), utc(2026, 11, 2, 0));
}

}  // namespace
}  // namespace orlocal::store
