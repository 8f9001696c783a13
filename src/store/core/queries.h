#pragma once

#include <optional>
#include <vector>

#include "store/core/query.h"
#include "store/core/store_core.h"
#include "store/model/occurrence_list.h"

namespace orlocal::store {

/// Answers questions about ranges of time.
class Queries {
 public:
  explicit Queries(StoreCore& core) : m_core(core) {}

  /// See `CalendarStore`; each in a snapshot of its own, or in the one that is open.
  Result<OccurrenceList> occurrences(const EventQuery& query);
  Result<std::vector<ItemId>> reminders(const ReminderQuery& query);
  Result<std::optional<Occurrence>> firstOccurrence(const Item& event);
  /// The one that the rule put at `originalStart`, as it now is: changed or not. None when there is none any more.
  Result<std::optional<Occurrence>> occurrenceAt(const Item& event, Moment originalStart);
  /// The occurrence that a row which does not repeat stands for.
  Result<Occurrence> onlyOccurrence(const Item& event);

 private:
  StoreCore& m_core;
};

}  // namespace orlocal::store
