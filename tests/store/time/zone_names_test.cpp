#include "store/time/zone_names.h"

#include <gtest/gtest.h>

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
  for (const char* tzid : {"", "Customized Time Zone", "local", "GMT+1", "/etc/passwd", "../Europe/Berlin",
                           "CET-1CEST,M3.5.0,M10.5.0/3"}) {
    EXPECT_EQ(systemZoneOf(tzid), std::nullopt) << tzid;
  }
}

TEST(DisplayNames, AreNotBelievedWhenTheOffsetIsAnother) {
  EXPECT_EQ(systemZoneOf("(UTC+09:00) Berlin"), std::nullopt);
}

}  // namespace
}  // namespace orlocal::store
