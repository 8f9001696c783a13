#pragma once

#include <optional>

#include "store/model/model.h"
#include "store/model/occurrence.h"
#include "store/time/zone.h"

namespace orlocal::store {

/// The times of an event as people see and set them. An all-day event lasts from the midnight before
/// its first day to 23:59:59 of its last day on the viewer's wall clock; the store's exclusive end date stays inside.
struct ShownTimes {
  std::optional<Moment> start, end;
  bool allDay = false;

  /// The same times with start and end where they lie for an all-day event, when it is one.
  ShownTimes onWholeDays(const Zone& viewer) const;

  friend bool operator==(const ShownTimes&, const ShownTimes&) = default;
};

/// The times of one occurrence of `event`; without an occurrence those that the event itself has.
ShownTimes shownTimes(const Item& event, const std::optional<Occurrence>& occurrence, const Zone& viewer);

/// 23:59:59 of the day before `exclusiveEnd`, or of the day of `start` when the event has no length.
Moment lastSecondOfDays(Moment start, Moment exclusiveEnd, const Zone& viewer);

/// Puts times into `event`: whole days as dates, others on the wall clock of the event's zone, a new event's in the
/// viewer's. Where `before` has the same time, the event keeps its own to the letter.
void writeTimes(Item& event, const ShownTimes& shown, const ShownTimes& before, const Zone& viewer);

/// Gives a series the start and end of one of its occurrences, in its own kind and zone.
void moveToOccurrence(Item& series, const Occurrence& occurrence, const Zone& viewer);

/// The date-time that means `moment` on the viewer's wall clock and keeps meaning it: zoned, or UTC when the viewer's
/// zone has no name that others know.
CalendarTime zonedTime(Moment moment, const Zone& viewer);

}  // namespace orlocal::store
