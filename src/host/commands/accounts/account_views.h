#pragma once

#include "accounts/account_book.h"
#include "base/result.h"
#include "host/commands/command_line/command.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// All accounts and subscriptions, a line each.
Result<ExitStatus> listAccounts(CommandContext& context);
/// One of them with its calendars and what could not be carried over.
Result<ExitStatus> showAccount(const std::string& name, CommandContext& context);

}  // namespace orlocal::host
