#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "store/time/clock.h"
#include "store/time/time.h"
#include "store/time/zone_rules.h"

namespace orlocal::store {

/// A time zone with the system's own rules, read at run time. A small value; copies share the rules, which stay for the
/// life of the process. Any thread.
class Zone {
 public:
  /// UTC.
  Zone();

  /// The zone of an IANA name in the system's zone files, of a private zone registered in this process, or of a POSIX
  /// rule text after "TZ:" ("TZ:CET-1CEST,M3.5.0,M10.5.0/3"); none when there is no such zone. A name is path-safe
  /// ("Europe/Berlin"), never a path.
  static std::optional<Zone> named(std::string_view name);

  /// The zone that `TZ` names: an IANA name, ":name", a zone file's path, or a POSIX rule text; without it the one of
  /// the settings files, then the system's. UTC when it names nothing, as everywhere on the system. Read anew at each
  /// call.
  static Zone ofUser();

  /// How the rules of a private zone are read from the text that defines it.
  using RulesReader = Result<ZoneRules> (*)(std::string_view text);
  /// Makes a private zone known to this process under `name`, with the rules that `read` finds in `text`. Registering
  /// the same name again with the same text is harmless; with another text, or with the name of an IANA zone, it fails.
  static Status registerPrivate(const std::string& name, std::string_view text, RulesReader read);

  /// The same without looking into the text: its rules are read when the zone is first asked for, and a text without
  /// usable ones is then no zone. What is known already under the name stays.
  static void announcePrivate(std::string name, std::string text, RulesReader read);

  /// The text a private zone was registered with; none for all others.
  std::optional<std::string> privateText() const;

  const std::string& name() const;

  /// A skipped time is read with the offset before the gap (02:30 becomes 03:30); a repeated one is the first
  /// (RFC 5545, 3.3.5).
  Moment toMoment(LocalTime local) const;
  LocalTime toLocal(Moment moment) const;
  /// Seconds east of Greenwich at `moment`.
  int offsetSeconds(Moment moment) const;
  std::string abbreviation(Moment moment) const;

  /// A change of the offset or its name.
  struct Change {
    Moment at;
    int offsetBefore = 0, offsetAfter = 0;
    bool daylight = false;
    std::string abbreviation;  ///< from then on

    friend bool operator==(const Change&, const Change&) = default;
  };
  /// The first change after `moment`.
  std::optional<Change> changeAfter(Moment moment) const;

  /// Whether its clock ever leaves out a whole day, as Samoa's did in 2011.
  bool skipsDay() const;

  friend bool operator==(const Zone& left, const Zone& right) { return left.m_entry == right.m_entry; }
  /// Some order, another one in each process.
  friend bool operator<(const Zone& left, const Zone& right) { return std::less<>()(left.m_entry, right.m_entry); }

 private:
  friend struct ZoneRegistry;
  struct Entry;
  explicit Zone(const Entry* entry) : m_entry(entry) {}

  const Entry* m_entry;
};

/// The moment of `time` for somebody whose wall clock runs in `viewer`: a date is its midnight there. A zone that is
/// not known any more reads as the viewer's.
Moment momentOf(const CalendarTime& time, const Zone& viewer);

}  // namespace orlocal::store
