#pragma once

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Names for files of one folder, made of titles: none leads elsewhere or is hidden, none that a common system would
/// refuse or take for another of them (which compares without case).
class FileNames {
 public:
  /// "Work.ics"; "Work (2).ics" when that was given already.
  std::string take(const std::string& title, const std::string& ending);

 private:
  std::set<std::string> m_taken;  ///< with case folded
};

/// Whether a name is meant for a folder: it ends in a slash, or is one.
bool namesFolder(const std::string& path);

/// The events with an occurrence, and the reminders that are due or were done, from `first` to `last` (included, none
/// without an end) as `viewer` has them; of series the series.
Result<std::unordered_set<store::ItemId>> itemsWithin(store::CalendarStore& store,
                                                      const std::vector<store::Calendar>& calendars,
                                                      const store::Zone& viewer, std::optional<store::LocalDay> first,
                                                      std::optional<store::LocalDay> last);

}  // namespace orlocal::host
