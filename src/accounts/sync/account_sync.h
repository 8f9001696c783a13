#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "accounts/dav/calendar_server.h"
#include "accounts/sync/account_state.h"
#include "accounts/sync/clock.h"
#include "accounts/sync/sync_report.h"
#include "store/calendar_store.h"

namespace orlocal::accounts {

struct SyncOptions {
  const std::atomic<bool>* stop = nullptr;
  /// Told what is done now, for who watches.
  std::function<void(const std::string&)> progress;
};

/// Carries changes both ways between the store and the server of one account, once.
///
/// It may be ended at any moment: what was done stays, what was not is done next time, and nothing is done twice. What
/// went wrong stands in the report; `state` is written with what was learned.
SyncReport syncAccount(store::CalendarStore& store, CalendarServer& server, const Clock& clock, store::SourceId source,
                       AccountState& state, const SyncOptions& options = {});

}  // namespace orlocal::accounts
