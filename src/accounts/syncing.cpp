#include "accounts/syncing.h"

#include <algorithm>
#include <cerrno>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "accounts/connection.h"
#include "accounts/dav/dav_server.h"
#include "accounts/subscription.h"
#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::accounts {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;

constexpr seconds kUsualInterval = minutes(1);
constexpr seconds kUsualSubscriptionInterval = std::chrono::hours(6);
constexpr seconds kLongestWait = minutes(30);
/// So often it is written down that an account was looked at and nothing was new: each writing is a commit, and wakes
/// everybody.
constexpr seconds kTellsEvery = minutes(10);
/// While somebody else's sync of an account is waited for.
constexpr std::chrono::milliseconds kBetweenLooks{20};

/// What counts as news of the account itself.
bool isWorthWriting(const AccountState& before, const AccountState& after) {
  AccountState compared = after;
  compared.lastTry = before.lastTry;
  compared.lastSuccess = before.lastSuccess;
  if (compared.text() != before.text() || !before.lastSuccess) { return true; }
  // A moment that lies ahead, of a clock that was set back since, gives way at once.
  return after.lastSuccess &&
         (*after.lastSuccess < *before.lastSuccess || *after.lastSuccess - *before.lastSuccess >= kTellsEvery);
}

}  // namespace

Result<SyncLock> SyncLock::takeByte(const std::filesystem::path& file, std::int64_t byte) {
  std::filesystem::path lock = file;
  lock += "-sync";
  const int descriptor = ::open(lock.c_str(), O_CREAT | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor < 0) {
    return failure(ErrorCode::kIo, tr("\"{}\", which keeps two syncs apart, cannot be made: {}. Check the "
                                      "permissions of the folder.",
                                      lock.string(), systemReason(errno)));
  }
  // The file is empty, and each byte that it might have stands for something. Locks of a descriptor, not of the
  // process: the threads of one process keep each other out, too.
  struct flock region {};
  region.l_type = F_WRLCK;
  region.l_whence = SEEK_SET;
  region.l_start = byte;
  region.l_len = 1;
  if (::fcntl(descriptor, F_OFD_SETLK, &region) == 0) { return SyncLock(descriptor); }
  const int reason = errno;
  ::close(descriptor);
  if (reason == EAGAIN || reason == EACCES) { return failure(ErrorCode::kBusy, ""); }
  return failure(ErrorCode::kIo,
                 tr("\"{}\", which keeps two syncs apart, cannot be locked: {}.", lock.string(), systemReason(reason)));
}

Result<SyncLock> SyncLock::take(const std::filesystem::path& file) {
  // Accounts are numbered from 1.
  auto lock = takeByte(file, 0);
  if (lock || lock.error().code != ErrorCode::kBusy) { return lock; }
  return failure(ErrorCode::kBusy, tr("Another sync of \"{}\" is running; wait for it, or end it.", file.string()));
}

Result<SyncLock> SyncLock::takeAccount(const std::filesystem::path& file, store::SourceId account) {
  auto lock = takeByte(file, account);
  if (lock || lock.error().code != ErrorCode::kBusy) { return lock; }
  return failure(ErrorCode::kBusy, tr("Another command is syncing or removing it; try again when that is done."));
}

Result<SyncLock> SyncLock::waitForAccount(const std::filesystem::path& file, store::SourceId account,
                                          const std::atomic<bool>& stop) {
  for (;;) {
    auto lock = takeAccount(file, account);
    if (lock || lock.error().code != ErrorCode::kBusy) { return lock; }
    if (stop.load()) { return failure(ErrorCode::kInterrupted, tr("It was stopped while a sync was waited for.")); }
    std::this_thread::sleep_for(kBetweenLooks);
  }
}

SyncLock::SyncLock(SyncLock&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

SyncLock::~SyncLock() {
  if (m_descriptor >= 0) { ::close(m_descriptor); }
}

Result<SyncReport> syncNow(store::CalendarStore& store, Account& account, const SecretsFile& secrets,
                           const Clock& clock, const SyncOptions& options) {
  const auto transport = connectionFor(account, secrets, options.stop);
  return syncNow(store, account, *transport, clock, options);
}

namespace {

SyncReport syncOnce(store::CalendarStore& store, Account& account, Transport& transport, const Clock& clock,
                    const SyncOptions& options) {
  if (account.settings.kind == AccountSettings::Kind::kSubscription) {
    return refreshSubscription(store, transport, clock, account, options);
  }
  DavServer server(transport);
  return syncAccount(store, server, clock, account.source, account.state, options);
}

/// What two of one account did, one after the other; how it ended is how the later one did.
SyncReport joined(const SyncReport& first, SyncReport second) {
  second.received += first.received;
  second.removedHere += first.removedHere;
  second.sent += first.sent;
  second.removedThere += first.removedThere;
  second.calendars += first.calendars;
  second.conflicts += first.conflicts;
  return second;
}

}  // namespace

Result<SyncReport> syncNow(store::CalendarStore& store, Account& account, Transport& transport, const Clock& clock,
                           const SyncOptions& options) {
  const AccountState before = account.state;
  ORLOCAL_TRY(const auto began, store.newestChange());
  SyncReport report = syncOnce(store, account, transport, clock, options);
  // Servers close connections that were kept just when the next request comes, and leave open whether it was done. The
  // next look shows that, so it comes at once, and once.
  if (report.failure && report.failure->trouble == Trouble::kAnswerLost) {
    report = joined(report, syncOnce(store, account, transport, clock, options));
  }
  AccountState& state = account.state;
  state.lastTry = clock.now();
  state.notBefore.reset();
  if (report.failure) {
    state.failure = report.failure->message;
    state.trouble = report.failure->trouble;
    ++state.failures;
    if (report.failure->retryAfter) { state.notBefore = *state.lastTry + *report.failure->retryAfter; }
  } else {
    state.failure.clear();
    state.trouble.reset();
    state.failures = 0;
    state.lastSuccess = state.lastTry;
  }
  // What a server said of a subscription's text is nothing to a store that was put in this one's place meanwhile.
  ORLOCAL_TRY(const bool isTheSame, store.reachesBackTo(began));
  if (!isTheSame) {
    state.etag.clear();
    state.lastModified.clear();
  }
  const bool interrupted = report.failure && report.failure->trouble == Trouble::kInterrupted;
  if (!interrupted && isWorthWriting(before, state)) { ORLOCAL_CHECK(AccountBook(store).saveState(account)); }
  return report;
}

store::Moment nextTry(const Account& account, store::Moment now, double part) {
  const AccountState& state = account.state;
  if (!state.lastTry || *state.lastTry > now) { return {}; }
  const bool subscription = account.settings.kind == AccountSettings::Kind::kSubscription;
  seconds interval = subscription ? kUsualSubscriptionInterval : kUsualInterval;
  if (subscription && state.wishedInterval) { interval = *state.wishedInterval; }
  if (account.settings.every) { interval = *account.settings.every; }
  if (state.failures > 0) {
    const seconds patience = kUsualInterval * (1LL << std::min(state.failures - 1, 10));
    interval = std::min(std::max(interval, patience), std::max(interval, kLongestWait));
  }
  const auto spread = std::chrono::duration_cast<std::chrono::microseconds>(interval * (part * 0.25));
  const store::Moment next = *state.lastTry + interval + spread;
  return state.notBefore ? std::max(next, *state.notBefore) : next;
}

}  // namespace orlocal::accounts
