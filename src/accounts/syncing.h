#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "accounts/account_book.h"
#include "accounts/sync/account_sync.h"
#include "accounts/transport/secret.h"
#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::accounts {

/// Held by whoever syncs a store: two at once would do everything twice.
class SyncLock {
 public:
  /// Of the store at `file`. `kBusy` when somebody else has it.
  static Result<SyncLock> take(const std::filesystem::path& file);
  ~SyncLock();
  SyncLock(SyncLock&& other) noexcept;
  SyncLock& operator=(SyncLock&&) = delete;

 private:
  explicit SyncLock(int descriptor) : m_descriptor(descriptor) {}
  int m_descriptor;
};

/// Syncs one account or refreshes one subscription now, and keeps what was learned: how it went, and when the next
/// try makes sense.
Result<SyncReport> syncNow(store::CalendarStore& store, Account& account, const SecretsFile& secrets,
                           const Clock& clock, const SyncOptions& options);
/// The same over a connection to the account's server that the caller has.
Result<SyncReport> syncNow(store::CalendarStore& store, Account& account, Transport& transport, const Clock& clock,
                           const SyncOptions& options);

/// When the account is to be looked at next: after what its owner or server wished, later and later while it fails, by
/// a part that differs from machine to machine, so that a server that comes back is not met by all at once. `part` is
/// from 0 to 1.
store::Moment nextTry(const Account& account, double part);

}  // namespace orlocal::accounts
