#include "store/time/steady_clock.h"

#include <random>

#include <gtest/gtest.h>

namespace orlocal::store {
namespace {

TEST(SteadyClock, ReadsWhatTheZoneReads) {
  std::mt19937 random(7);
  for (const char* name : {"Europe/Berlin", "America/New_York", "Africa/Casablanca", "Australia/Lord_Howe",
                           "Pacific/Apia", "Asia/Kolkata", "UTC", "TZ:CET-1CEST,M3.5.0,M10.5.0/3"}) {
    const Zone zone = *Zone::named(name);
    SteadyClock clock(zone);
    LocalSeconds local = localSeconds(LocalTime(2005, 1, 1));
    for (int i = 0; i < 20'000; ++i) {
      // Onwards mostly, now and then back.
      local += static_cast<LocalSeconds>(random() % 40'000) - (i % 7 == 0 ? 90'000 : 0);
      ASSERT_EQ(clock.toMoment(local), zone.toMoment(localTime(local))) << name << " " << localTime(local);
    }
    for (const LocalTime far : {LocalTime(1, 1, 1), LocalTime(9999, 12, 31), LocalTime(1700, 5, 5)}) {
      EXPECT_EQ(clock.toMoment(localSeconds(far)), zone.toMoment(far)) << name;
    }
  }
}

TEST(Zone, KnowsWhetherItsClockLeavesOutADay) {
  for (const char* name : {"Pacific/Apia", "Pacific/Fakaofo", "Pacific/Kwajalein"}) {
    EXPECT_TRUE(Zone::named(name)->skipsDay()) << name;
  }
  for (const char* name : {"Europe/Berlin", "America/New_York", "UTC", "TZ:CET-1CEST,M3.5.0,M10.5.0/3"}) {
    EXPECT_FALSE(Zone::named(name)->skipsDay()) << name;
  }
}

}  // namespace
}  // namespace orlocal::store
