#include "store/time/clock.h"

#include <chrono>
#include <cstdlib>

#include <gtest/gtest.h>

#include "store/time/zone.h"

namespace orlocal::store {
namespace {

Moment nine() { return Zone().toMoment(LocalTime(2026, 11, 21, 9)); }

/// Leaves clock and environment as they were.
class Clock : public testing::Test {
 protected:
  ~Clock() override {
    pinClock(m_before);
    ::setenv("ORLOCAL_NOW", "2026-11-02T08:00:00Z", 1);
  }

 private:
  const Moment m_before = now();
};

TEST_F(Clock, StandsWhereTheUserPinsIt) {
  EXPECT_EQ(now(), Zone().toMoment(LocalTime(2026, 11, 2, 8))) << "as the tests' settings say";
}

TEST_F(Clock, StandsWhereItWasPinnedLast) {
  pinClock(nine());
  EXPECT_EQ(now(), nine());
  ::setenv("ORLOCAL_NOW", "2026-11-22T09:00:00Z", 1);
  EXPECT_EQ(now(), nine()) << "the setting is read once";
}

TEST_F(Clock, RunsWhenItIsLetGo) {
  pinClock(nine());
  pinClock(std::nullopt);
  const auto before = std::chrono::system_clock::now();
  EXPECT_GE(now(), std::chrono::floor<std::chrono::microseconds>(before));
}

TEST_F(Clock, IsPinnedToAMomentInOneFormOnly) {
  EXPECT_EQ(parseMoment("2026-11-21T09:00:00Z"), nine());
  EXPECT_EQ(parseMoment("1969-12-31T23:59:59Z"), Moment(std::chrono::seconds(-1)));
  for (const char* text :
       {"", "soon", "2026-03-02T08:00:00", "2026-03-02 08:00:00Z", "2026-03-02T08:00Z", "20260302T080000Z",
        "2026-03-02T08:00:00+00:00", "2026-03-02T08:00:00z", "2026-02-30T08:00:00Z", "2026-03-02T24:00:00Z",
        "2026-03-02T08:60:00Z", "0000-03-02T08:00:00Z", " 2026-03-02T08:00:00Z", "2026-03-02T08:00:00Z ",
        "2026-3-02T008:00:00Z", "1/2/26", "2026-03-02"}) {
    EXPECT_FALSE(parseMoment(text)) << text;
  }
}

TEST_F(Clock, IsNotPinnedByAnEmptySetting) {
  ::setenv("ORLOCAL_NOW", "", 1);
  EXPECT_EQ(momentPinnedByUser().value(), std::nullopt);
  ::unsetenv("ORLOCAL_NOW");
  EXPECT_EQ(momentPinnedByUser().value(), std::nullopt);
}

TEST_F(Clock, SaysWhatASettingShouldBe) {
  ::setenv("ORLOCAL_NOW", "2026-03-02T08:00:00", 1);
  EXPECT_EQ(
      momentPinnedByUser().error().message,
      "ORLOCAL_NOW is \"2026-03-02T08:00:00\", which is no moment such as 2026-11-02T08:00:00Z; the system's clock "
      "is used.");
}

TEST(ClockDeathTest, TakesASettingThatIsNoMomentForNoneAndSaysSoOnce) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        ::setenv("ORLOCAL_NOW", "2026-03-02T08:00:00", 1);
        const auto apart = std::chrono::system_clock::now() - now();
        now();
        std::exit(apart < std::chrono::hours(1) && apart > std::chrono::hours(-1) ? 0 : 1);
      },
      testing::ExitedWithCode(0), "^orlocal: ORLOCAL_NOW is [^\n]*\n$");
}

}  // namespace
}  // namespace orlocal::store
