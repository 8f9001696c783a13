#include "store/zone_names.h"

#include <string>

#include <gtest/gtest.h>

#include "store/zone.h"

namespace orlocal::store {
namespace {

struct Name {
  const char* tzid;
  const char* zone;
};

class KnownName : public testing::TestWithParam<Name> {};

TEST_P(KnownName, NamesASystemZone) { EXPECT_EQ(systemZoneOf(GetParam().tzid), GetParam().zone); }

INSTANTIATE_TEST_SUITE_P(
    Tzids, KnownName,
    testing::Values(Name{"Europe/Berlin", "Europe/Berlin"}, Name{"America/New York", "America/New_York"},
                    Name{"US/Eastern", "US/Eastern"}, Name{"utc", "UTC"},
                    Name{"/freeassociation.sourceforge.net/Tzfile/Europe/Berlin", "Europe/Berlin"},
                    Name{"/citadel.org/20210210_1/Europe/Berlin", "Europe/Berlin"},
                    Name{"/mozilla.org/20050126_1/America/Argentina/San_Juan", "America/Argentina/San_Juan"},
                    Name{"W. Europe Standard Time", "Europe/Berlin"}, Name{"Eastern Standard Time", "America/New_York"},
                    Name{"Tokyo Standard Time", "Asia/Tokyo"}, Name{"AUS Eastern Standard Time", "Australia/Sydney"},
                    Name{"India Standard Time", "Asia/Kolkata"},
                    Name{"(UTC+01:00) Amsterdam, Berlin, Bern, Rome, Stockholm, Vienna", "Europe/Amsterdam"},
                    Name{"(GMT+01.00) Sarajevo/Skopje/Warsaw/Zagreb", "Europe/Sarajevo"},
                    Name{"(UTC-05:00) Eastern Time (US & Canada)", "America/New_York"},
                    Name{"(UTC+05:30) Chennai, Kolkata, Mumbai, New Delhi", "Asia/Kolkata"},
                    Name{"(UTC) Coordinated Universal Time", "UTC"},
                    Name{"(UTC+10:00) Canberra, Melbourne, Sydney", "Australia/Canberra"}));

TEST(UnknownNames, NameNothing) {
  for (const char* tzid :
       {"", "Customized Time Zone", "local", "GMT+1", "/etc/passwd", "../Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3"})
    EXPECT_EQ(systemZoneOf(tzid), std::nullopt) << tzid;
}

TEST(DisplayNames, AreNotBelievedWhenTheOffsetIsAnother) {
  EXPECT_EQ(systemZoneOf("(UTC+09:00) Berlin"), std::nullopt);
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
