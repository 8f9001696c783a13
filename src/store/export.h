#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "store/calendar_store.h"
#include "store/model.h"
#include "store/result.h"

namespace orlocal::store {

/// Takes a piece of the text; a failure ends the export and becomes its result.
using TextSink = std::function<Status(std::string_view)>;

/// Writes the calendars as iCalendar text (RFC 5545): a VCALENDAR for each, with its zones in full and its items in the
/// order in which they came to the store.
Status exportCalendars(CalendarStore& store, const std::vector<Calendar>& calendars, const TextSink& sink);

}  // namespace orlocal::store
