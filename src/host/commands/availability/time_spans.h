#pragma once

#include <bitset>
#include <chrono>
#include <string>
#include <vector>

#include "host/commands/words/week_words.h"
#include "store/icalendar/free_busy_writer.h"
#include "store/time/zone.h"

// What becomes of times that are taken: put together, and what is left between them.
namespace orlocal::host {

struct TimeSpan {
  store::Moment start, end;  ///< `end` is exclusive

  std::chrono::microseconds length() const { return end - start; }
  friend bool operator==(const TimeSpan&, const TimeSpan&) = default;
};

/// Which part of each day counts.
struct WantedHours {
  TimeRange hours{TimeOfDay(0), std::chrono::hours(24)};
  WeekDays weekDays = WeekDays().set();

  bool areWholeDays() const { return hours.start == TimeOfDay(0) && hours.end == std::chrono::hours(24); }
};

/// The wanted part of the days from `first` to `last` on the clock of `zone`; parts that touch are one. A time that the
/// clock skips is the moment at which it does, one that comes twice the first.
std::vector<TimeSpan> wantedSpans(store::LocalDay first, store::LocalDay last, const WantedHours& wanted,
                                  const store::Zone& zone);

/// In order and each moment once: of several kinds the one that counts most. What touches is one.
std::vector<store::BusyTime> merged(const std::vector<store::BusyTime>& times);

/// The parts of merged times that lie in the spans, which are in order and none over another.
std::vector<store::BusyTime> partsWithin(const std::vector<store::BusyTime>& times, const std::vector<TimeSpan>& spans);

/// What the merged times leave of the spans, where that is not shorter than `least`.
std::vector<TimeSpan> gapsBetween(const std::vector<store::BusyTime>& times, const std::vector<TimeSpan>& spans,
                                  std::chrono::minutes least);

/// What of `span` lies on `day`, as people write it: "09:00–12:00", "22:00–…" and "…–06:00" where it goes on, "all
/// day"; empty when nothing does.
std::string spanInWords(const TimeSpan& span, store::LocalDay day, const store::Zone& zone);

/// "3h 30m", "45m", "2 days 1h": what exact time there is, days of 24 hours.
std::string shortLength(std::chrono::microseconds length);

}  // namespace orlocal::host
