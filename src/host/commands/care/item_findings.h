#pragma once

#include <vector>

#include "base/result.h"
#include "host/commands/care/finding.h"
#include "host/commands/care/same_items.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// What is odd about the items of some calendars.
struct OddItems {
  std::vector<SameItems> same;
  std::vector<store::Item> empty;  ///< series whose rule and exceptions leave no occurrence
  /// Series that come so often that a query without bounds fails.
  std::vector<store::Item> tooMany;
};

/// Reads all items of these calendars.
Result<OddItems> oddItems(store::CalendarStore& store, const store::Zone& viewer,
                          const std::vector<store::Calendar>& calendars);

/// The same for `orlocal doctor`.
Result<Findings> itemFindings(store::CalendarStore& store);

}  // namespace orlocal::host
