#pragma once

#include <functional>
#include <string>
#include <string_view>
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
};

/// Writes the calendars as iCalendar text (RFC 5545): a VCALENDAR for each, with its zones in full and its items in the
/// order in which they came to the store.
///
/// What is written is read back first: an item with kept lines that would spoil what stands around it is written
/// without them, one that does not read as one item even then is left out; both are told.
Result<ExportReport> exportCalendars(CalendarStore& store, const std::vector<Calendar>& calendars,
                                     const TextSink& sink);

}  // namespace orlocal::store
