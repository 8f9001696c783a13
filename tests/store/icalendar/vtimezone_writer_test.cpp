#include "store/icalendar/vtimezone_writer.h"

#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "store/icalendar/private_zone.h"
#include "store/icalendar/vtimezone.h"
#include "store/time/zone.h"
#include "store/time/zone_names.h"

namespace orlocal::store {
namespace {

std::string zoneText(const char* name, int fromYear) {
  std::string out;
  writeZone(out, name, fromYear);
  return out;
}

class WrittenZone : public testing::TestWithParam<const char*> {};

TEST_P(WrittenZone, DoesWhatTheZoneDoes) {
  const Zone zone = Zone::named(GetParam()).value();
  const std::string text = zoneText(GetParam(), 1975);
  const auto rules = rulesOfVTimeZone(text);
  ASSERT_TRUE(rules) << rules.error().message;
  const std::string name = std::string("Written ") + GetParam();
  ASSERT_TRUE(registerPrivateZone(name, text));
  const Zone copy = Zone::named(name).value();
  for (Moment at = zone.toMoment(LocalTime(1975, 1, 1)); at < Zone().toMoment(LocalTime(2037, 12, 31));
       at += std::chrono::hours(3)) {
    ASSERT_EQ(copy.offsetSeconds(at), zone.offsetSeconds(at)) << text << at.time_since_epoch().count();
  }
}

INSTANTIATE_TEST_SUITE_P(Zones, WrittenZone,
                         testing::Values("Europe/Berlin", "America/New_York", "Asia/Tokyo", "Australia/Lord_Howe",
                                         "Asia/Jerusalem", "America/Sao_Paulo", "Africa/Casablanca", "Europe/Dublin",
                                         "Pacific/Apia", "Asia/Kathmandu", "America/Havana", "Asia/Tehran"));

TEST(WriteZone, SaysARuleOnce) {
  EXPECT_EQ(zoneText("Europe/Berlin", 2020),
            "BEGIN:VTIMEZONE\r\nTZID:Europe/"
            "Berlin\r\nBEGIN:STANDARD\r\nDTSTART:20200101T000000\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0100\r\nTZNAME:"
            "CET\r\nEND:STANDARD\r\n"
            "BEGIN:DAYLIGHT\r\nDTSTART:20200329T020000\r\nTZOFFSETFROM:+0100\r\nTZOFFSETTO:+0200\r\nTZNAME:"
            "CEST\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\r\nEND:DAYLIGHT\r\n"
            "BEGIN:STANDARD\r\nDTSTART:20201025T030000\r\nTZOFFSETFROM:+0200\r\nTZOFFSETTO:+0100\r\nTZNAME:"
            "CET\r\nRRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n");
}

TEST(WriteZone, WritesNothingForAnUnknownName) { EXPECT_EQ(zoneText("Nowhere", 2020), ""); }

TEST(WriteZone, IsRecognisedByItsRules) {
  EXPECT_EQ(systemZoneByRules(*rulesOfVTimeZone(zoneText("America/New_York", 2000))), "America/New_York");
}

}  // namespace
}  // namespace orlocal::store
