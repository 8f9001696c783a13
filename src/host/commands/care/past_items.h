#pragma once

#include <cstddef>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// What lies wholly before a moment.
struct PastItems {
  std::vector<store::WholeItem> items;  ///< in the order of the calendars, then in which they came
  std::size_t goingOn = 0;              ///< series that began before and have occurrences from then on
};

/// Events whose last occurrence had ended, and reminders that had been completed. An open reminder is never over, and
/// neither is a series that goes on.
Result<PastItems> pastItems(store::CalendarStore& store, const store::Zone& viewer,
                            const std::vector<store::Calendar>& calendars, store::Moment before);

}  // namespace orlocal::host
