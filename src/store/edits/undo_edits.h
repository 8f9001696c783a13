#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "store/core/store_core.h"
#include "store/rows/journal_rows.h"

namespace orlocal::store {

/// Takes commands back. See `CalendarStore::undo`.
class UndoEdits {
 public:
  explicit UndoEdits(StoreCore& core) : m_core(core), m_journal(core.database) {}

  Result<JournalEntry> undo(std::string_view person, std::optional<std::int64_t> number);

 private:
  Result<JournalEntry> undoRecorded(std::string_view person, std::int64_t number);
  /// The one of that number; without one the newest that still counts and takes nothing back itself.
  Result<JournalEntry> chosen(std::string_view person, std::optional<std::int64_t> number);
  /// What others and later commands did to these items since.
  Status checkUntouched(const JournalEntry& entry, const JournalRows::Part& part, const ReplacedItems& items,
                        const std::vector<ChangeRange>& cancelled);
  /// What came after `row` and was taken back since: neither of both counts.
  Result<std::vector<ChangeRange>> cancelledAfter(std::int64_t row);
  Failure touched(const JournalEntry& entry, const Item& item, std::int64_t row);
  Status checkCalendars(const ReplacedItems& items);
  Status putBack(const ReplacedItems& items);
  /// Writes a row as it was, whether one stands there or not.
  Status writeBack(const Item& item, bool repeats);

  StoreCore& m_core;
  JournalRows m_journal;
};

}  // namespace orlocal::store
