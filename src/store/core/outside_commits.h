#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/result.h"

namespace orlocal::store {

class ChangeLog;

/// A place in the log of changes.
struct LogPosition {
  std::int64_t row = 0;
  std::uint64_t file = 0;  ///< whose log it is: the file may be replaced by another while the store is open
};

/// Public identifiers of what a commit inserted, updated and deleted: each once, in one list only, in the order in
/// which they were touched. What was both inserted and deleted is in none.
struct ChangedRecords {
  std::vector<std::string> inserted, updated, deleted;

  bool empty() const { return inserted.empty() && updated.empty() && deleted.empty(); }
};

/// What one commit of somebody else did. A changed occurrence that comes, changes or goes is an update of its series.
struct OutsideCommit {
  ChangedRecords events;
  ChangedRecords reminders;
  ChangedRecords calendars;
  ChangedRecords reminderLists;

  bool empty() const { return events.empty() && reminders.empty() && calendars.empty() && reminderLists.empty(); }
};

/// The commits of others after the log's row `position`, in their order, those that did nothing of all this left out;
/// moves `position` to the newest row. Inside a read transaction.
Result<std::vector<OutsideCommit>> outsideCommitsAfter(ChangeLog& log, std::int64_t& position);

}  // namespace orlocal::store
