#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/describing/item_json.h"
#include "store/calendar_store.h"

// Removing many items at once.
namespace orlocal::host {

/// Whether items in it may be removed.
inline bool allowsChanges(const store::Calendar& calendar) { return !calendar.readOnly && !calendar.immutable; }

/// Removes in one turn, all or nothing, those that still stand as they are given here; gives which of them it removed.
Result<std::vector<bool>> removeUnchanged(store::CalendarStore& store,
                                          const std::vector<const store::WholeItem*>& items);

/// ` 3 of them are removed from the server of "Work", too.`; empty where no account has any.
std::string serversInWords(const std::vector<const store::WholeItem*>& items, const CalendarNames& names);

/// "3 events", "1 reminder", "3 events and 1 reminder".
std::string countedInWords(std::size_t events, std::size_t reminders);

}  // namespace orlocal::host
