#pragma once

#include <atomic>
#include <cstdint>
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

/// Held by whoever syncs: two at once would do everything twice. Ends with the process at the latest.
class SyncLock {
 public:
  /// Of the command that syncs the store at `file`. `kBusy` when another one does.
  static Result<SyncLock> take(const std::filesystem::path& file);
  /// Of one account or subscription, beside the one of the command: whoever removes an account holds it, too. `kBusy`
  /// when somebody else has it.
  static Result<SyncLock> takeAccount(const std::filesystem::path& file, store::SourceId account);
  /// The same, once whoever has it lets go of it; `kInterrupted` when `stop` comes before that.
  static Result<SyncLock> waitForAccount(const std::filesystem::path& file, store::SourceId account,
                                         const std::atomic<bool>& stop);
  ~SyncLock();
  SyncLock(SyncLock&& other) noexcept;
  SyncLock& operator=(SyncLock&&) = delete;

 private:
  explicit SyncLock(int descriptor) : m_descriptor(descriptor) {}
  static Result<SyncLock> takeByte(const std::filesystem::path& file, std::int64_t byte);
  int m_descriptor;
};

/// Syncs one account or refreshes one subscription now, and keeps what was learned: how it went, and when the next
/// try makes sense. Where an answer was lost on its way it tries a second time.
Result<SyncReport> syncNow(store::CalendarStore& store, Account& account, const SecretsFile& secrets,
                           const Clock& clock, const SyncOptions& options);
/// The same over a connection to the account's server that the caller has.
Result<SyncReport> syncNow(store::CalendarStore& store, Account& account, Transport& transport, const Clock& clock,
                           const SyncOptions& options);

/// When the account is to be looked at next: after what its owner or server wished, later and later while it fails, by
/// a part that differs from machine to machine, so that a server that comes back is not met by all at once. `part` is
/// from 0 to 1. A try that lies ahead of `now` was noted before the clock was set back, and holds up nothing.
store::Moment nextTry(const Account& account, store::Moment now, double part);

}  // namespace orlocal::accounts
