#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "store/calendar_store.h"

namespace orlocal::host {

/// At most `count` occurrences of an event or a series that are not over at `from`, in their order. Looks as far as the
/// store does: four years ahead.
Result<std::vector<store::Occurrence>> nextOccurrences(store::CalendarStore& store, const store::Item& event,
                                                       store::Moment from, std::size_t count);

/// At most `count` occurrences of a repeating reminder after the one that is due now, whether that is overdue or not.
/// `changed`: the changed occurrences of its series. As far ahead as those of events.
Result<std::vector<store::Occurrence>> nextDues(const store::Item& reminder, const std::vector<store::Item>& changed,
                                                std::size_t count);

/// The next one, or the last one of what is over; of a changed occurrence itself. None of reminders.
Result<std::optional<store::Occurrence>> nextOrLast(store::CalendarStore& store, const store::Item& item,
                                                    store::Moment from);

}  // namespace orlocal::host
