#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Opens the store that `--store`, the environment or the settings name, seen from the user's zone unless another is
/// given. One that is not there is `kNotFound`: whoever only looks, or mistyped a name, makes none.
Result<std::unique_ptr<store::CalendarStore>> openUserStore(const store::Zone& viewer = store::Zone::ofUser());
/// The same for what brings something along: a store that is not there is made.
Result<std::unique_ptr<store::CalendarStore>> openOrMakeUserStore();

enum class NoStore { kIsAFailure, kIsMade };
/// The store of a command that changes something. `dryRun`: it rehearses, so that nothing is written; a store that
/// would be made is then an empty one in a temporary folder, which goes when it is closed.
Result<std::shared_ptr<store::CalendarStore>> openStoreToChange(bool dryRun, NoStore noStore = NoStore::kIsAFailure);

/// Event calendars and reminder lists, in that order; one of both stands among the calendars.
Result<std::vector<store::Calendar>> allCalendars(store::CalendarStore& store);

/// The calendars and reminder lists of these names, all of them without names. A name is an identifier, a title (then
/// all that bear it are meant), or a title with the account, subscription or other source that the calendar is of
/// behind it: "Team (Work)". One that names nothing is `kNotFound`.
Result<std::vector<store::Calendar>> calendarsTitled(store::CalendarStore& store,
                                                     const std::vector<std::string>& names);

/// Calendars and reminder lists as a person picks them, by names as above.
struct CalendarChoice {
  std::vector<std::string> only;  ///< empty: all of them
  std::vector<std::string> without;
};
/// Those of `only` but for those of `without`; none of them left is `kInvalid`.
Result<std::vector<store::Calendar>> calendarsChosen(store::CalendarStore& store, const CalendarChoice& choice);

/// The only one of that name, of those that hold items of `kind` when one is given. Several are `kRefused`, in a
/// sentence that says how to name each.
Result<store::Calendar> theCalendar(store::CalendarStore& store, const std::string& name,
                                    std::optional<store::ItemKind> kind = std::nullopt);

}  // namespace orlocal::host
