#pragma once

#include <optional>
#include <string>

#include "host/commands/command_line/terminal_text.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// What an item is marked with behind its title: "↻" repeats, "♪" has an alarm, "✎" has notes; with a blank before it,
/// empty when it has none of them. Whether it is tentative or cancelled is said in words.
std::string marksOf(const store::Item& item);

/// The title as it is shown; what is cancelled is struck through on a terminal and says so elsewhere.
std::string shownTitle(const store::Item& item, const Ink& ink);

/// "Mon 2 Nov 2026 09:00–10:00", "Mon 2 Nov 2026 22:00 – Tue 3 Nov 2026 06:00", "Mon 2 Nov 2026 – Wed 4 Nov 2026".
std::string spanWords(store::Moment start, store::Moment end, bool allDay, const store::Zone& viewer);

/// "Mon 2 Nov 2026 17:00", "Mon 2 Nov 2026".
std::string timeWords(const store::CalendarTime& time, const store::Zone& viewer);

/// The day on the item's own clock from which its rule counts; none without a date.
std::optional<store::LocalDay> firstDayOf(const store::Item& item, const store::Zone& viewer);

/// Where a reminder stands in a list.
enum class ReminderBlock { kOverdue, kToCome, kUndated, kDone };

/// A day is over when it is over; what is due at a moment is overdue from then on.
ReminderBlock blockOf(const store::Item& reminder, store::Moment now, const store::Zone& viewer);

}  // namespace orlocal::host
