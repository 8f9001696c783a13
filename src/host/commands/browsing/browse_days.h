#pragma once

#include <map>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/views/agenda.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// What a screen knows of a store: some days, and the calendars.
struct BrowseDays {
  store::LocalDay first, last;  ///< both included
  /// Of days that have some; reminders that were done stand on the day when they were.
  std::map<store::LocalDay, std::vector<AgendaLine>> lines;
  std::vector<AgendaLine> overdue, undated;
  std::vector<store::Calendar> calendars;
  CalendarNames names;
};

/// Reads the days of these calendars.
Result<BrowseDays> readBrowseDays(store::CalendarStore& store, const store::Zone& viewer, store::LocalDay first,
                                  store::LocalDay last, const CalendarChoice& choice);

}  // namespace orlocal::host
