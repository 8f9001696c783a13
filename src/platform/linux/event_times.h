#pragma once

#include <optional>

#include "platform/date.h"
#include "store/calendar_store.h"
#include "store/model.h"
#include "store/zone.h"

namespace orlocal {

/// The times of an event as callers of the platform see and set them. An all-day event lasts from the midnight before
/// its first day to 23:59:59 of its last day on the viewer's wall clock; the store's exclusive end date stays inside.
struct ShownTimes {
  std::optional<Date> start, end;
  bool allDay = false;

  /// The same times with start and end where they lie for an all-day event, when it is one.
  ShownTimes onWholeDays(const store::Zone& viewer) const;

  friend bool operator==(const ShownTimes&, const ShownTimes&) = default;
};

/// The times of one occurrence of `event`; without an occurrence those that the event itself has.
ShownTimes shownTimes(const store::Item& event, const std::optional<store::Occurrence>& occurrence,
                      const store::Zone& viewer);

/// 23:59:59 of the day before `exclusiveEnd`, or of the day of `start` when the event has no length.
Date lastSecondOfDays(Date start, Date exclusiveEnd, const store::Zone& viewer);

/// Puts times into `event`: whole days as dates, others on the wall clock of the event's zone, a new event's in the
/// viewer's. Where `before` has the same time, the event keeps its own to the letter.
void writeTimes(store::Item& event, const ShownTimes& shown, const ShownTimes& before, const store::Zone& viewer);

/// Gives a series the start and end of one of its occurrences, in its own kind and zone.
void moveToOccurrence(store::Item& series, const store::Occurrence& occurrence, const store::Zone& viewer);

/// The date-time that means `moment` on the viewer's wall clock and keeps meaning it: zoned, or UTC when the viewer's
/// zone has no name that others know.
store::CalendarTime zonedTime(Date moment, const store::Zone& viewer);

}  // namespace orlocal
