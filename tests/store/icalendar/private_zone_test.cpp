#include "store/icalendar/private_zone.h"

#include <string>

#include <gtest/gtest.h>

#include "store/icalendar/vtimezone.h"
#include "store/time/zone.h"
#include "store/time/zone_names.h"

namespace orlocal::store {
namespace {

Moment utc(int year, int month, int day, int hour = 0, int minute = 0) {
  return Zone().toMoment(LocalTime(year, month, day, hour, minute));
}

constexpr const char* kCustom =
    "BEGIN:VTIMEZONE\nTZID:Customized Time Zone\n"
    "BEGIN:STANDARD\nDTSTART:16010101T030000\nTZOFFSETFROM:+0200\nTZOFFSETTO:+0100\n"
    "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10\nEND:STANDARD\n"
    "BEGIN:DAYLIGHT\nDTSTART:16010101T020000\nTZOFFSETFROM:+0100\nTZOFFSETTO:+0200\n"
    "RRULE:FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3\nEND:DAYLIGHT\nEND:VTIMEZONE\n";

TEST(PrivateZone, FollowsTheRulesOfItsText) {
  ASSERT_TRUE(registerPrivateZone("Customized Time Zone", kCustom));
  const auto zone = Zone::named("Customized Time Zone");
  ASSERT_TRUE(zone);
  const Zone berlin = *Zone::named("Europe/Berlin");
  for (Moment at = utc(1997, 1, 1); at < utc(2040, 1, 1); at += std::chrono::hours(5)) {
    ASSERT_EQ(zone->offsetSeconds(at), berlin.offsetSeconds(at));
  }
  EXPECT_EQ(zone->privateText(), kCustom);
}

TEST(PrivateZone, MayBeRegisteredAgainWithTheSameText) {
  ASSERT_TRUE(registerPrivateZone("Twice", kCustom));
  EXPECT_TRUE(registerPrivateZone("Twice", kCustom));
}

TEST(PrivateZone, KeepsItsNameFromAnotherText) {
  ASSERT_TRUE(registerPrivateZone("Taken", kCustom));
  EXPECT_FALSE(registerPrivateZone("Taken", std::string(kCustom) + "X"));
  EXPECT_FALSE(registerPrivateZone("Europe/Berlin", kCustom));
}

TEST(PrivateZone, NeedsAUsableObservance) {
  const auto status = registerPrivateZone("Empty", "BEGIN:VTIMEZONE\nTZID:Empty\nEND:VTIMEZONE\n");
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().message, "time zone \"Empty\": it has no part with DTSTART, TZOFFSETFROM and TZOFFSETTO");
}

TEST(PrivateZone, ChangesAtTheDatesOfRdate) {
  ASSERT_TRUE(registerPrivateZone(
      "Dated",
      "BEGIN:VTIMEZONE\nTZID:Dated\nBEGIN:STANDARD\nDTSTART:20000101T000000\nTZOFFSETFROM:+0000\nTZOFFSETTO:+0000\n"
      "RDATE:20200901T010000\nEND:STANDARD\nBEGIN:DAYLIGHT\nDTSTART:20200401T000000\nTZOFFSETFROM:+0000\n"
      "TZOFFSETTO:+0100\nTZNAME:DST\nEND:DAYLIGHT\nEND:VTIMEZONE\n"));
  const Zone zone = *Zone::named("Dated");
  EXPECT_EQ(zone.offsetSeconds(utc(2020, 3, 31, 23, 59)), 0);
  EXPECT_EQ(zone.offsetSeconds(utc(2020, 4, 1)), 3600);
  EXPECT_EQ(zone.abbreviation(utc(2020, 4, 1)), "DST");
  EXPECT_EQ(zone.offsetSeconds(utc(2020, 9, 1, 1)), 0);
}

std::string blockOf(const char* name, const char* winter, const char* summer, const char* toWinter,
                    const char* toSummer) {
  const std::string from(summer), to(winter);
  return std::string("BEGIN:VTIMEZONE\nTZID:") + name +
         "\nBEGIN:STANDARD\nDTSTART:16010101T030000\nTZOFFSETFROM:" + from + "\nTZOFFSETTO:" + to +
         "\nRRULE:FREQ=YEARLY;" + toWinter +
         "\nEND:STANDARD\nBEGIN:DAYLIGHT\nDTSTART:16010101T020000\nTZOFFSETFROM:" + to + "\nTZOFFSETTO:" + from +
         "\nRRULE:FREQ=YEARLY;" + toSummer + "\nEND:DAYLIGHT\nEND:VTIMEZONE\n";
}

const std::string kBerlinRules =
    blockOf("Customized", "+0100", "+0200", "BYMONTH=10;BYDAY=-1SU", "BYMONTH=3;BYDAY=-1SU");
const std::string kOwnRules = blockOf("Customized", "+0100", "+0200", "BYMONTH=9;BYDAY=-1SU", "BYMONTH=4;BYDAY=-1SU");

TEST(ZoneByRules, IsTheKnownZoneWithTheSameClock) {
  EXPECT_EQ(systemZoneByRules(*rulesOfVTimeZone(kBerlinRules)), "Europe/Berlin");
}

TEST(ZoneByRules, KnowsAClockThatNeverChanges) {
  const auto rules = rulesOfVTimeZone(
      "BEGIN:VTIMEZONE\nTZID:X\nBEGIN:STANDARD\nDTSTART:16010101T000000\nTZOFFSETFROM:+0900\n"
      "TZOFFSETTO:+0900\nEND:STANDARD\nEND:VTIMEZONE\n");
  ASSERT_TRUE(rules);
  EXPECT_EQ(systemZoneByRules(*rules), "Asia/Tokyo");
}

TEST(ZoneByRules, IsNoneForAClockOfItsOwn) { EXPECT_EQ(systemZoneByRules(*rulesOfVTimeZone(kOwnRules)), std::nullopt); }

TEST(PrivateZones, AreNamedByTheirRules) {
  const auto zone = privateZoneOf("Customized", kOwnRules);
  EXPECT_TRUE(zone.name.starts_with("Customized #")) << zone.name;
  EXPECT_NE(zone.vtimezone.find("\nTZID:" + zone.name + "\n"), std::string::npos);
  const auto other = privateZoneOf(
      "Customized", blockOf("Customized", "+0100", "+0200", "BYMONTH=9;BYDAY=-1SA", "BYMONTH=4;BYDAY=-1SU"));
  EXPECT_NE(other.name, zone.name);
}

TEST(PrivateZones, KeepTheirNameThroughAnExport) {
  const auto zone = privateZoneOf("Customized", kOwnRules);
  EXPECT_EQ(privateZoneOf(zone.name, zone.vtimezone).name, zone.name);
  EXPECT_EQ(privateZoneOf(zone.name, zone.vtimezone).vtimezone, zone.vtimezone);
}

TEST(ZoneRules, NeedAPartOfTheBlock) { EXPECT_FALSE(rulesOfVTimeZone("BEGIN:VTIMEZONE\nTZID:X\nEND:VTIMEZONE\n")); }

}  // namespace
}  // namespace orlocal::store
