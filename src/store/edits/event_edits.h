#pragma once

#include <optional>

#include "store/edits/item_edit.h"
#include "store/edits/series_edits.h"

namespace orlocal::store {

/// Saves and removes events. See `CalendarStore`.
class EventEdits {
 public:
  EventEdits(StoreCore& core, Queries& queries) : m_core(core), m_queries(queries), m_series(core, queries) {}

  Result<Item> save(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span);
  Status remove(const Item& event, const std::optional<Occurrence>& occurrence, Span span);

 private:
  Result<Item> insertNew(const ItemEdit& edit);
  Result<Item> saveStored(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span);
  Result<Item> saveSingle(const Item& stored, const ItemEdit& edit);
  /// A series, at one of its occurrences that has no row of its own.
  Result<Item> saveSeries(const Item& series, const Occurrence& at, const ItemEdit& edit, Span span);
  Result<Item> saveChanged(const Item& changed, const ItemEdit& edit, Span span);
  /// The series takes over what was set in one of its changed occurrences: fields, how far it moved, and a new length.
  Result<Item> carryToSeries(const Item& series, const Item& changed, const Item& edited, const ItemEdit& edit,
                             bool whole);
  /// One occurrence leaves its series, as an event of its own in another calendar.
  Result<Item> detach(const Item& series, Moment original, Item edited);
  Result<Item> seriesOf(const Item& changed);
  /// Refuses what the row, changed as it now is, may not be.
  Status check(const Item& stored, const Item& edited);

  StoreCore& m_core;
  Queries& m_queries;
  SeriesEdits m_series;
};

/// Refuses when the calendar is gone, of the wrong kind, or allows no changes.
Status checkThatCalendarTakes(StoreCore& core, CalendarId calendar, ItemKind kind);

}  // namespace orlocal::store
