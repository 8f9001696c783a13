#include "host/commands/availability/time_spans.h"

#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace orlocal::host {
namespace {

using store::BusyKind;
using store::BusyTime;
using store::LocalDay;
using store::LocalTime;
using store::Moment;
using store::Zone;
using testing::ElementsAre;
using testing::IsEmpty;

/// Of 2 November 2026, in UTC: 24 hours there are 24 hours.
Moment hour(int hours, int minutes = 0) {
  return Zone().toMoment(LocalTime(2026, 11, 2)) + std::chrono::hours(hours) + std::chrono::minutes(minutes);
}

std::string shown(Moment moment) {
  const auto minutes = std::chrono::floor<std::chrono::minutes>(moment - hour(0)).count();
  return fmt::format("{}{}", minutes / 60, minutes % 60 == 0 ? "" : fmt::format(":{:02}", minutes % 60));
}
/// "9-10 tentative": the kind where it is not simply busy.
std::vector<std::string> shown(const std::vector<BusyTime>& times) {
  std::vector<std::string> texts;
  for (const BusyTime& time : times) {
    const char* kind = time.kind == BusyKind::kBusy        ? ""
                       : time.kind == BusyKind::kTentative ? " tentative"
                                                           : " unavailable";
    texts.push_back(shown(time.start) + "-" + shown(time.end) + kind);
  }
  return texts;
}
std::vector<std::string> shown(const std::vector<TimeSpan>& spans) {
  std::vector<std::string> texts;
  for (const TimeSpan& span : spans) { texts.push_back(shown(span.start) + "-" + shown(span.end)); }
  return texts;
}

BusyTime busy(int from, int to, BusyKind kind = BusyKind::kBusy) { return {hour(from), hour(to), kind}; }
constexpr BusyKind kTentative = BusyKind::kTentative, kUnavailable = BusyKind::kUnavailable;

TEST(BusyTimes, AreOneWhereTheyOverlapOrTouch) {
  struct Case {
    std::vector<BusyTime> times;
    std::vector<std::string> merged;
  };
  const Case cases[] = {
      {{}, {}},
      {{busy(9, 10)}, {"9-10"}},
      {{busy(9, 10), busy(11, 12)}, {"9-10", "11-12"}},
      {{busy(9, 10), busy(10, 11)}, {"9-11"}},
      {{busy(9, 12), busy(10, 11)}, {"9-12"}},
      {{busy(11, 13), busy(9, 12)}, {"9-13"}},
      {{busy(9, 9)}, {}},
      {{busy(9, 10), busy(9, 10), busy(9, 10)}, {"9-10"}},
      // Of two kinds at one moment the one that counts more.
      {{busy(9, 12, kTentative), busy(10, 11)}, {"9-10 tentative", "10-11", "11-12 tentative"}},
      {{busy(9, 12), busy(10, 11, kTentative)}, {"9-12"}},
      {{busy(9, 10, kTentative), busy(10, 11)}, {"9-10 tentative", "10-11"}},
      {{busy(9, 11, kTentative), busy(10, 12, kUnavailable)}, {"9-10 tentative", "10-12 unavailable"}},
      {{busy(9, 12, kUnavailable), busy(10, 11)}, {"9-10 unavailable", "10-11", "11-12 unavailable"}},
  };
  for (const Case& each : cases) { EXPECT_EQ(shown(merged(each.times)), each.merged); }
}

TEST(FreeTimes, AreWhatBusyOnesLeaveOfTheAskedHours) {
  struct Case {
    std::vector<BusyTime> times;
    std::vector<TimeSpan> spans;
    int least;
    std::vector<std::string> gaps;
  };
  const TimeSpan day{hour(9), hour(17)};
  const Case cases[] = {
      {{}, {day}, 1, {"9-17"}},
      {{busy(10, 11)}, {day}, 1, {"9-10", "11-17"}},
      {{busy(9, 17)}, {day}, 1, {}},
      {{busy(0, 24)}, {day}, 1, {}},
      {{busy(8, 10), busy(16, 18)}, {day}, 1, {"10-16"}},
      {{busy(7, 9), busy(17, 18)}, {day}, 1, {"9-17"}},
      {{busy(10, 11), busy(12, 13)}, {day}, 60, {"9-10", "11-12", "13-17"}},
      {{busy(10, 11), busy(12, 13)}, {day}, 61, {"13-17"}},
      {{busy(10, 11)}, {day, {hour(33), hour(41)}}, 1, {"9-10", "11-17", "33-41"}},
      {{busy(16, 34)}, {day, {hour(33), hour(41)}}, 1, {"9-16", "34-41"}},
      {{busy(10, 11)}, {}, 1, {}},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(shown(gapsBetween(each.times, each.spans, std::chrono::minutes(each.least))), each.gaps);
  }
}

TEST(BusyTimes, AreCutToTheAskedHours) {
  const std::vector<TimeSpan> spans{{hour(9), hour(17)}, {hour(33), hour(41)}};
  EXPECT_THAT(shown(partsWithin({busy(8, 10), busy(12, 13, kTentative), busy(16, 40)}, spans)),
              ElementsAre("9-10", "12-13 tentative", "16-17", "33-40"));
  EXPECT_THAT(partsWithin({busy(8, 9), busy(17, 33)}, spans), IsEmpty());
}

/// The asked hours of some days, with the day and the length of each: "2 09:00+8h".
std::vector<std::string> asked(const char* zone, LocalDay first, LocalDay last, const WantedHours& wanted) {
  std::vector<std::string> texts;
  const Zone viewer = *Zone::named(zone);
  for (const TimeSpan& span : wantedSpans(first, last, wanted, viewer)) {
    const LocalTime start = viewer.toLocal(span.start);
    texts.push_back(
        fmt::format("{} {:02}:{:02}+{}", start.day(), start.hour(), start.minute(), shortLength(span.length())));
  }
  return texts;
}
WantedHours from(int start, int end, const char* days = "1111111") {
  return {{std::chrono::minutes(start), std::chrono::minutes(end)}, WeekDays(days)};
}

TEST(AskedHours, FollowTheClockOverItsChanges) {
  // On 25 October 2026 three o'clock comes twice in Berlin, on 29 March it has no time between two and three.
  const LocalDay back(2026, 10, 25), ahead(2026, 3, 29);
  constexpr int kHour = 60;
  EXPECT_THAT(asked("Europe/Berlin", back, back, {}), ElementsAre("25 00:00+1 day 1h"));
  EXPECT_THAT(asked("Europe/Berlin", ahead, ahead, {}), ElementsAre("29 00:00+23h"));
  EXPECT_THAT(asked("Europe/Berlin", back, back, from(1 * kHour, 4 * kHour)), ElementsAre("25 01:00+4h"));
  EXPECT_THAT(asked("Europe/Berlin", ahead, ahead, from(1 * kHour, 4 * kHour)), ElementsAre("29 01:00+2h"));
  // The first of both half past twos.
  EXPECT_THAT(asked("Europe/Berlin", back, back, from(2 * kHour, 2 * kHour + 30)), ElementsAre("25 02:00+30m"));
  // Hours that the clock skips are none; what begins or ends in them does so where it skips.
  EXPECT_THAT(asked("Europe/Berlin", ahead, ahead, from(2 * kHour, 3 * kHour)), IsEmpty());
  EXPECT_THAT(asked("Europe/Berlin", ahead, ahead, from(2 * kHour, 2 * kHour + 30)), IsEmpty());
  EXPECT_THAT(asked("Europe/Berlin", ahead, ahead, from(2 * kHour + 30, 4 * kHour)), ElementsAre("29 03:00+1h"));
  EXPECT_THAT(asked("Europe/Berlin", ahead, ahead, from(1 * kHour, 2 * kHour + 30)), ElementsAre("29 01:00+1h"));
  // Over the night of the change.
  EXPECT_THAT(asked("Europe/Berlin", back - 1, back - 1, from(22 * kHour, 6 * kHour)), ElementsAre("24 22:00+9h"));
  EXPECT_THAT(asked("Europe/Berlin", ahead - 1, ahead - 1, from(22 * kHour, 6 * kHour)), ElementsAre("28 22:00+7h"));
  // A day that begins at one o'clock.
  EXPECT_THAT(asked("America/Santiago", LocalDay(2026, 9, 6), LocalDay(2026, 9, 6), {}), ElementsAre("6 01:00+23h"));
}

TEST(AskedHours, AreThoseOfTheWantedDays) {
  const LocalDay sunday(2026, 11, 1);
  constexpr int kHour = 60;
  EXPECT_THAT(asked("Europe/Berlin", sunday, sunday + 7, from(9 * kHour, 17 * kHour, "0111110")),
              ElementsAre("2 09:00+8h", "3 09:00+8h", "4 09:00+8h", "5 09:00+8h", "6 09:00+8h"));
  EXPECT_THAT(asked("Europe/Berlin", sunday, sunday + 7, from(9 * kHour, 17 * kHour, "0000001")),
              ElementsAre("1 09:00+8h", "8 09:00+8h"));
  // Whole days that follow one another are one stretch, so that a night is not cut in two.
  EXPECT_THAT(asked("UTC", sunday, sunday + 2, {}), ElementsAre("1 00:00+3 days"));
  EXPECT_THAT(asked("UTC", sunday, sunday + 6, from(0, 24 * kHour, "0010001")),
              ElementsAre("1 00:00+1 day", "5 00:00+1 day"));
}

TEST(SpansInWords, AreThePartsThatLieOnADay) {
  const LocalDay day(2026, 11, 2);
  struct Case {
    TimeSpan span;
    const char* words;
  };
  const Case cases[] = {
      {{hour(9), hour(10, 30)}, "09:00–10:30"},
      {{hour(22), hour(24)}, "22:00–24:00"},
      {{hour(22), hour(30)}, "22:00–…"},
      {{hour(-2), hour(6)}, "…–06:00"},
      {{hour(0), hour(6)}, "00:00–06:00"},
      {{hour(0), hour(24)}, "all day"},
      {{hour(-5), hour(40)}, "all day"},
      {{hour(-5), hour(0)}, ""},
      {{hour(24), hour(30)}, ""},
  };
  for (const Case& each : cases) { EXPECT_EQ(spanInWords(each.span, day, Zone()), each.words); }
}

TEST(ShortLengths, AreReadAsTheyAreWritten) {
  EXPECT_EQ(shortLength(std::chrono::minutes(45)), "45m");
  EXPECT_EQ(shortLength(std::chrono::minutes(60)), "1h");
  EXPECT_EQ(shortLength(std::chrono::minutes(210)), "3h 30m");
  EXPECT_EQ(shortLength(std::chrono::hours(24)), "1 day");
  EXPECT_EQ(shortLength(std::chrono::hours(49)), "2 days 1h");
  EXPECT_EQ(shortLength(std::chrono::minutes(0)), "0m");
}

}  // namespace
}  // namespace orlocal::host
