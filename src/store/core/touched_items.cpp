#include "store/core/touched_items.h"

#include <unordered_set>

#include "base/try.h"
#include "store/file/change_log.h"

namespace orlocal::store {

Result<TouchedItems> touchedItemsAfter(ChangeLog& log, std::int64_t after) {
  TouchedItems touched;
  ORLOCAL_TRY(touched.upTo, log.newest());
  ORLOCAL_TRY(const std::int64_t oldest, log.oldest());
  // A log that was begun anew after a restore leaves a gap, too.
  touched.complete = touched.upTo == after || (after < touched.upTo && oldest != 0 && oldest <= after + 1);
  if (!touched.complete) { return touched; }
  std::unordered_set<ItemId> known;
  ORLOCAL_CHECK(log.visitAfter(after, [&](const LoggedChange& change) {
    const bool ofItem = change.subject == Subject::kEvent || change.subject == Subject::kReminder;
    if (!ofItem || change.writer == log.writer()) { return; }
    const ItemId item = change.series.value_or(change.row);
    if (known.insert(item).second) { touched.items.push_back(item); }
  }));
  return touched;
}

}  // namespace orlocal::store
