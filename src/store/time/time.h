#pragma once

#include <chrono>
#include <string>

#include <cctz/civil_time.h>

namespace orlocal::store {

/// A point in time: microseconds since 1970-01-01 00:00:00 UTC.
using Moment = std::chrono::sys_time<std::chrono::microseconds>;
/// A wall-clock date and time, and a date; proleptic Gregorian, no zone.
using LocalTime = cctz::civil_second;
using LocalDay = cctz::civil_day;

/// A date or date-time as calendar files have it (RFC 5545, 3.3.4 and 3.3.5). It comes back as it went in.
struct CalendarTime {
  enum class Kind : std::uint8_t {
    kDate,      ///< a whole day; `local` is its midnight, no zone
    kFloating,  ///< the wall clock of whoever looks
    kUtc,       ///< `local` is UTC
    kZoned,     ///< the wall clock of `zone`
  };
  Kind kind = Kind::kDate;
  LocalTime local;
  std::string zone;  ///< an IANA name or a private zone's name; empty unless `kZoned`

  friend bool operator==(const CalendarTime&, const CalendarTime&) = default;
};

}  // namespace orlocal::store
