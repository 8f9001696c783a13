#pragma once

#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/command_line/command.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Keeps the accounts of those names (all without names) and their servers the same, until interrupted: what is changed
/// here goes out at once, and servers are asked in their turns. Needs an `Interruption` and a `SyncLock` that is held.
Result<ExitStatus> followAccounts(store::CalendarStore& store, const std::vector<std::string>& names,
                                  CommandContext& context);

}  // namespace orlocal::host
