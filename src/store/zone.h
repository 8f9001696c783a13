#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <cctz/time_zone.h>

#include "store/result.h"
#include "store/time.h"

namespace orlocal::store {

/// A time zone with the system's own rules, read at run time. A small value; copies share the rules. Any thread.
class Zone {
 public:
  /// UTC.
  Zone() = default;

  /// The zone of an IANA name in the system's zone files, or of a private zone registered in this process; none when
  /// there is no such zone. The name must be one path-safe name ("Europe/Berlin"), never a path.
  static std::optional<Zone> named(std::string_view name);

  /// The zone that `TZ` names: an IANA name, ":name", or a POSIX rule text ("CET-1CEST,M3.5.0,M10.5.0/3"); without it
  /// the system's zone. UTC when it names nothing, as everywhere on the system. Read anew at each call.
  static Zone ofUser();

  /// Makes a private zone known to this process under `name`, with the rules of an iCalendar VTIMEZONE component (its
  /// text, BEGIN to END). Registering the same name again with the same text is harmless.
  static Status registerPrivate(const std::string& name, std::string_view vtimezone);

  const std::string& name() const { return m_name; }

  /// A skipped time is read with the offset before the gap (02:30 becomes 03:30); a repeated one is the first
  /// (RFC 5545, 3.3.5).
  Moment toMoment(LocalTime local) const;
  LocalTime toLocal(Moment moment) const;
  /// Seconds east of Greenwich at `moment`.
  int offsetSeconds(Moment moment) const;
  std::string abbreviation(Moment moment) const;

 private:
  std::string m_name = "UTC";
  cctz::time_zone m_zone = cctz::utc_time_zone();
};

/// The moment of `time` for somebody whose wall clock runs in `viewer`: a date is its midnight there. A zone that is
/// not known any more reads as the viewer's.
Moment momentOf(const CalendarTime& time, const Zone& viewer);

/// The current time: the clock's, or the moment that `ORLOCAL_NOW` pins ("2026-11-21T09:00:00Z").
Moment now();

}  // namespace orlocal::store
