#pragma once

#include <string>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"
#include "store/import.h"

namespace orlocal::store {

/// What imports brought, and what is to be removed because they did not bring it.
struct PruneOptions {
  std::vector<std::string> calendarTitles;  ///< calendars of events that become what was brought
  std::vector<std::string> listTitles;      ///< lists of reminders that do
  bool subscriptions = false;               ///< and all subscribed calendars that the files speak of
};

/// Removes from these calendars what none of the reports (of imports that listed their items) has: what was refused is
/// there and cannot be read, and stays. All or nothing; each removal stands in the log as a deletion. Gives what was
/// removed.
Result<std::vector<ImportedItem>> removeOthers(CalendarStore& store, const std::vector<ImportReport>& brought,
                                               const PruneOptions& options);

}  // namespace orlocal::store
