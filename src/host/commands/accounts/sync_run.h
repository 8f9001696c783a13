#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "accounts/account_book.h"
#include "accounts/sync/sync_report.h"
#include "accounts/syncing.h"
#include "base/result.h"
#include "host/commands/command_line/command.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Takes an account or subscription in hand, so that no sync of it begins. One that runs is ended where a service does
/// it, and waited for else. Needs an `Interruption`.
Result<accounts::SyncLock> takeInHand(accounts::AccountBook& book, const accounts::Account& account,
                                      CommandContext& context);

/// Syncs an account or refreshes a subscription now, with a word on a terminal when that takes long. Needs an
/// `Interruption`, and the account in hand.
Result<accounts::SyncReport> syncVisibly(store::CalendarStore& store, accounts::Account& account,
                                         CommandContext& context);

bool didSomething(const accounts::SyncReport& report);
/// "3 received, 1 sent"; "nothing new".
std::string summaryOf(const accounts::SyncReport& report);
/// What somebody can do about a failure stands behind it.
std::string failureText(const accounts::ServerFailure& failure);
nlohmann::json syncJson(const accounts::Account& account, const char* state, const accounts::SyncReport& report);
/// What could not be carried over, a line each.
void tellTroubles(const accounts::Account& account, const accounts::SyncReport& report, CommandContext& context);

}  // namespace orlocal::host
