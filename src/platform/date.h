#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace orlocal {

/// A moment: microseconds since 1970-01-01 00:00:00 UTC, proleptic Gregorian. An absent moment is `std::nullopt`.
using Date = std::chrono::sys_time<std::chrono::microseconds>;

/// The most distant past that the platform names: 0001-01-01 00:00:00 UTC.
Date distantPast();
/// The most distant future that the platform names: 4001-01-01 00:00:00 UTC.
Date distantFuture();

/// Reads "2014-03-09 02:30:00 -0500": year-month-day, 24-hour time, sign and exactly four digits of offset (hours below
/// 24, minutes below 60), single blanks between the three fields. Parts that overflow (month 13, second 75) are
/// refused. Anything else gives none; an offset of six digits in particular.
std::optional<Date> dateWithString(std::string_view text);

/// Writes `date` in the form that `dateWithString` reads, with `offsetSeconds` (east of Greenwich, signed) as the zone
/// in force. Seconds below a minute in the offset are cut.
std::string formatDate(Date date, int offsetSeconds);

/// A date by its parts, any of which may be missing. A due date is one of these.
struct DateComponents {
  std::optional<int> year;    ///< proleptic Gregorian
  std::optional<int> month;   ///< 1 to 12
  std::optional<int> day;     ///< 1 to 31
  std::optional<int> hour;    ///< 0 to 23
  std::optional<int> minute;  ///< 0 to 59
  std::optional<int> second;  ///< 0 to 60
  /// Zone of the parts. Absent: the wall clock of whoever looks.
  std::optional<std::string> timeZone;

  friend bool operator==(const DateComponents&, const DateComponents&) = default;
};

}  // namespace orlocal
