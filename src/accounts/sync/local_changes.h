#pragma once

#include "store/calendar_store.h"

namespace orlocal::accounts {

/// Notes what changed here since it was called last, by others than this store object, in calendars that mirror a
/// server's: from then on it stands in the store's list of what is unsent, whatever happens to the log of changes.
Status noteLocalChanges(store::CalendarStore& store);

}  // namespace orlocal::accounts
