#pragma once

#include <optional>
#include <string>

#include "platform/date.h"

namespace orlocal {

/// A time zone: civil time and offsets. Any thread. A value that is out of range for a zone's rules uses the nearest
/// rule.
class TimeZone {
 public:
  virtual ~TimeZone() = default;

  /// IANA name, or the name under which the store keeps a private zone.
  virtual std::string name() const = 0;

  /// Seconds east of Greenwich in force now.
  virtual int secondsFromGMT() const = 0;

  /// Seconds east of Greenwich in force at `date`.
  virtual int secondsFromGMTForDate(Date date) const = 0;

  /// Short name in force now, such as "CEST".
  virtual std::string abbreviation() const = 0;

  /// The parts of `date` on this zone's wall clock, year to second; `timeZone` of the result is absent.
  virtual DateComponents components(Date date) const = 0;

  /// The moment of `parts`, read on their own zone when they name one that is known, else on this one. Missing parts
  /// count as the first possible value (month and day 1, time 0). A skipped time is read with the offset before the
  /// gap; a repeated one is the first. None without a year.
  virtual std::optional<Date> dateFromComponents(const DateComponents& parts) const = 0;
};

}  // namespace orlocal
