#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "accounts/dav/calendar_server.h"
#include "accounts/sync/account_state.h"
#include "accounts/sync/clock.h"
#include "accounts/sync/sync_report.h"
#include "store/calendar_store.h"
#include "store/model/remote.h"

namespace orlocal::accounts {

/// What all parts of one account's sync share. All of it outlives them.
struct SyncContext {
  store::CalendarStore& store;
  CalendarServer& server;
  const Clock& clock;
  store::SourceId source = 0;
  AccountState& account;
  SyncReport& report;
  const std::atomic<bool>* stop = nullptr;
  /// Told what is done now, for who watches: "Team: 200 of 10,000".
  std::function<void(const std::string&)> progress;

  /// Where the log stood when this sync began, or wrote last.
  store::LogPosition position = {};

  /// A turn to write. Refused when the store that this sync began with is no longer there, as when somebody restores a
  /// backup: what is known of the server by now is not what that one holds, and the next sync goes by what it does.
  Result<std::unique_ptr<store::ItemWriter>> startWriting();

  bool stopped() const { return stop != nullptr && stop->load(); }
};

/// A failure of the store is one of this side, and ends the account's sync.
inline Refusal refusedByStore(const Failure& failure) {
  return refusal(failure.code == ErrorCode::kInterrupted ? Trouble::kInterrupted : Trouble::kStore, failure.message);
}

/// ORLOCAL_TRY and ORLOCAL_CHECK for what the store says, in functions that give an `Answer`.
#define ORLOCAL_STORE_TRY(declaration, expression) \
  ORLOCAL_STORE_TRY_NAMED(ORLOCAL_JOIN(storeResult, __LINE__), declaration, expression)
#define ORLOCAL_STORE_TRY_NAMED(name, declaration, expression) \
  auto name = (expression);                                    \
  if (!name) { return refusedByStore(name.error()); }          \
  declaration = std::move(*name)
#define ORLOCAL_STORE_CHECK(expression)                                                                  \
  do {                                                                                                   \
    if (auto&& storeStatus = (expression); !storeStatus) { return refusedByStore(storeStatus.error()); } \
  } while (false)

}  // namespace orlocal::accounts
