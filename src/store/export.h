#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"
#include "store/model/model.h"

namespace orlocal::store {

/// Takes a piece of the text; a failure ends the export and becomes its result.
using TextSink = std::function<Status(std::string_view)>;

/// What did not come out as it is in the store, a sentence each; empty as a rule.
struct ExportReport {
  std::vector<std::string> notes;
  std::size_t items = 0;  ///< single items and series that were written
};

struct ExportOptions {
  /// Only these events, reminders and series (each whole); all of them when there is none.
  std::optional<std::unordered_set<ItemId>> items = std::nullopt;
  bool emptyOnes = true;  ///< calendars without anything to write are written, too
};

/// Writes the calendars as iCalendar text (RFC 5545): a VCALENDAR for each, with its zones in full and its items in the
/// order in which they came to the store.
///
/// What is written is read back first: an item with kept lines that would spoil what stands around it is written
/// without them, one that does not read as one item even then is left out; both are told.
Result<ExportReport> exportCalendars(CalendarStore& store, const std::vector<Calendar>& calendars, const TextSink& sink,
                                     const ExportOptions& options = {});

}  // namespace orlocal::store
