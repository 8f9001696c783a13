#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/file/change_log.h"
#include "store/time/time.h"

namespace orlocal::store {

/// A place in the log of changes.
struct LogPosition {
  std::int64_t row = 0;
  std::uint64_t file = 0;  ///< whose log it is: the file may be replaced by another while the store is open
};

/// Public identifiers of what a commit inserted, updated and deleted: each once, in one list only, in the order in
/// which they were touched. What was both inserted and deleted is in none.
struct ChangedRecords {
  std::vector<std::string> inserted, updated, deleted;
  std::vector<Departed> departed;  ///< what is known of each of `deleted`, in their order

  bool empty() const { return inserted.empty() && updated.empty() && deleted.empty(); }
};

/// What one commit of somebody else did. A changed occurrence that comes, changes or goes is an update of its series.
struct OutsideCommit {
  ChangedRecords events;
  ChangedRecords reminders;
  ChangedRecords calendars;
  ChangedRecords reminderLists;
  std::optional<Moment> made;  ///< none of what was written before the log had it
  std::int64_t upTo = 0;       ///< the last of its rows in the log that it was made of: a place to go on from

  bool empty() const { return events.empty() && reminders.empty() && calendars.empty() && reminderLists.empty(); }
};

/// The commits of others after the log's row `position`, in their order, those that did nothing of all this left out;
/// moves `position` to the newest row. Inside a read transaction.
Result<std::vector<OutsideCommit>> outsideCommitsAfter(ChangeLog& log, std::int64_t& position);

}  // namespace orlocal::store
