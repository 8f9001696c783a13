#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/time/time.h"

// Times and lengths of time as calendar files write them (RFC 5545, 3.3).
namespace orlocal::store {

/// "20261121", "20261121T090000" (floating) or "20261121T090000Z"; none when it is no such date.
std::optional<CalendarTime> parseTime(std::string_view text);
/// The value alone; the zone goes into a parameter.
std::string timeText(const CalendarTime& time);
std::string momentText(Moment moment);

/// A length of time: days are days of the calendar, the rest is exact.
struct Duration {
  std::int64_t days = 0;
  std::int64_t seconds = 0;
};
std::optional<Duration> parseDuration(std::string_view text);
std::string durationText(std::chrono::seconds length);

/// "+0130", "-05:00" or with seconds; in seconds.
std::optional<int> parseOffset(std::string_view text);
std::string offsetText(int seconds);

}  // namespace orlocal::store
