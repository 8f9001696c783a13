#pragma once

#include <optional>

#include "store/series_edits.h"

namespace orlocal::store {

/// Saves and removes events. See `CalendarStore`.
class EventEdits {
 public:
  EventEdits(StoreCore& core, Queries& queries) : m_core(core), m_queries(queries), m_series(core, queries) {}

  Status save(Item& edited, const std::optional<Occurrence>& occurrence, Span span);
  Status remove(const Item& event, const std::optional<Occurrence>& occurrence, Span span);

 private:
  Status insertNew(Item& edited);
  Status saveStored(const Item& stored, Item& edited, const std::optional<Occurrence>& occurrence, Span span);
  Status saveChanged(const Item& stored, Item& edited, Span span);
  Status saveOccurrence(const Item& series, Moment original, Item& edited, Span span);
  /// One occurrence leaves its series, as an event of its own in another calendar.
  Status detach(const Item& series, Moment original, Item& edited);
  Result<Item> seriesOf(const Item& changed);

  StoreCore& m_core;
  Queries& m_queries;
  SeriesEdits m_series;
};

/// Refuses when the calendar is gone, of the wrong kind, or allows no changes.
Status checkThatCalendarTakes(StoreCore& core, CalendarId calendar, ItemKind kind);

}  // namespace orlocal::store
