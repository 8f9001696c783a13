#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Opens the store that `--store`, the environment or the settings name, seen from the user's zone. One that is not
/// there is `kNotFound`: whoever only looks, or mistyped a name, makes none.
Result<std::unique_ptr<store::CalendarStore>> openUserStore();
/// The same for what brings something along: a store that is not there is made.
Result<std::unique_ptr<store::CalendarStore>> openOrMakeUserStore();

/// Event calendars and reminder lists, in that order; one of both stands among the calendars.
Result<std::vector<store::Calendar>> allCalendars(store::CalendarStore& store);

/// Those of `calendars` that bear one of `titles`, all of them without titles. A title that none bears is
/// `kNotFound`.
Result<std::vector<store::Calendar>> calendarsTitled(std::vector<store::Calendar> calendars,
                                                     const std::vector<std::string>& titles);

}  // namespace orlocal::host
