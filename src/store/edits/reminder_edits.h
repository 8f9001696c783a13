#pragma once

#include "store/edits/item_edit.h"
#include "store/edits/series_edits.h"

namespace orlocal::store {

/// Saves and removes reminders. See `CalendarStore`.
class ReminderEdits {
 public:
  ReminderEdits(StoreCore& core, Queries& queries) : m_core(core), m_series(core, queries) {}

  Result<Item> save(const ItemEdit& edit);
  Status remove(const Item& reminder);

 private:
  Result<Item> insertNew(const ItemEdit& edit);
  Result<Item> saveStored(const ItemEdit& edit);
  Status check(const Item& edited);
  /// A repeating reminder that was completed: what was done is kept as a reminder of its own, and the series moves on
  /// to its next occurrence. Without a next one the series itself is completed.
  Status moveOn(Item& edited);

  StoreCore& m_core;
  SeriesEdits m_series;
};

}  // namespace orlocal::store
