#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"
#include "store/icalendar/free_busy_writer.h"

// Which events take a person's time; docs/availability.md says it for people.
namespace orlocal::host {

/// Whose time it is, and what of it counts.
struct TimeOwner {
  std::vector<std::string> addresses;  ///< under which the person is invited; the setting "addresses"
  bool ignoresAllDay = false;          ///< events of whole days take no time

  /// As the settings say it.
  static TimeOwner ofUser();
};

/// How the event takes the owner's time; none when it takes none.
std::optional<store::BusyKind> takenBy(const store::Item& event, const TimeOwner& owner);

/// An occurrence that takes time.
struct TakenTime {
  store::Occurrence when;
  store::BusyKind kind = store::BusyKind::kBusy;
};
/// What takes time between two moments, in the order of `occurrences`.
Result<std::vector<TakenTime>> takenBetween(store::CalendarStore& store, store::Moment from, store::Moment to,
                                            const std::vector<store::Calendar>& calendars, const TimeOwner& owner);

}  // namespace orlocal::host
