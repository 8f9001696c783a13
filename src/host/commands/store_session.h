#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "store/calendar_store.h"

namespace orlocal::host {

/// Ends a command as failed, with a sentence for the person at the terminal.
class CommandFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What the store answered, or `CommandFailure` with its sentence.
template <class T>
T orFail(Result<T> result) {
  if (!result) throw CommandFailure(result.error().message);
  return *std::move(result);
}

/// Opens the store that `--store` or the environment names, seen from the user's zone.
std::unique_ptr<store::CalendarStore> openUserStore();

/// Event calendars and reminder lists, in that order.
std::vector<store::Calendar> allCalendars(store::CalendarStore& store);

/// Those of `calendars` that bear one of `titles`, all of them without titles. A title that none bears fails.
std::vector<store::Calendar> calendarsTitled(std::vector<store::Calendar> calendars,
                                             const std::vector<std::string>& titles);

}  // namespace orlocal::host
