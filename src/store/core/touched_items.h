#pragma once

#include <cstdint>
#include <vector>

#include "base/result.h"
#include "store/model/model.h"

namespace orlocal::store {

class ChangeLog;

/// Which events, series and reminders somebody inserted, changed or removed, each once; a changed occurrence is its
/// series.
struct TouchedItems {
  /// Whether that is all. When the log does not reach back so far anything may have been touched.
  bool complete = true;
  std::int64_t upTo = 0;  ///< the log's newest row: where to go on next time
  std::vector<ItemId> items;
};

/// After the log's row `after`, by others than the log's own writer. Inside a read transaction.
Result<TouchedItems> touchedItemsAfter(ChangeLog& log, std::int64_t after);

}  // namespace orlocal::store
