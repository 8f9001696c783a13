#include "store/time/clock_name.h"

#include "store/time/civil_days.h"

namespace orlocal::store {
namespace {

constexpr std::string_view kDateClock = "=date", kFloatingClock = "=floating", kUtcClock = "=utc";
}  // namespace

std::string_view clockName(const CalendarTime& time) {
  switch (time.kind) {
    case CalendarTime::Kind::kDate:
      return kDateClock;
    case CalendarTime::Kind::kFloating:
      return kFloatingClock;
    case CalendarTime::Kind::kUtc:
      return kUtcClock;
    case CalendarTime::Kind::kZoned:
      break;
  }
  return time.zone;
}

std::optional<CalendarTime> timeOnClock(std::int64_t seconds, std::string_view clock) {
  CalendarTime time;
  time.local = localTime(seconds);
  if (clock == kDateClock) {
    time.kind = CalendarTime::Kind::kDate;
  } else if (clock == kFloatingClock) {
    time.kind = CalendarTime::Kind::kFloating;
  } else if (clock == kUtcClock) {
    time.kind = CalendarTime::Kind::kUtc;
  } else if (clock.starts_with('=')) {
    return std::nullopt;
  } else {
    time.kind = CalendarTime::Kind::kZoned;
    time.zone = clock;
  }
  return time;
}

}  // namespace orlocal::store
