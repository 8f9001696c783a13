#include "host/commands/accounts/sync_workers.h"

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "accounts/syncing.h"
#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/command_line/store_session.h"
#include "store/location.h"

namespace orlocal::host {
namespace {

using accounts::Account;

/// A thread that is begun while it lives gets no signals.
class SignalsKept {
 public:
  SignalsKept() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &m_before);
  }
  ~SignalsKept() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  SignalsKept(const SignalsKept&) = delete;
  SignalsKept& operator=(const SignalsKept&) = delete;

 private:
  sigset_t m_before{};
};

/// One sync, from the store's file on. What it finds of the account counts, not what its caller knew.
class OneSync {
 public:
  OneSync(FinishedSync& finished, accounts::SyncOptions options)
      : m_finished(finished), m_options(std::move(options)) {}

  Result<accounts::SyncReport> run() {
    Account& account = m_finished.account;
    ORLOCAL_TRY(const auto file, store::userStoreFile());
    const auto lock = accounts::SyncLock::takeAccount(file, account.source);
    m_finished.passedOver = !lock && lock.error().code == ErrorCode::kBusy;
    if (!lock) { return failure(lock.error()); }
    ORLOCAL_TRY(const auto store, openUserStore());
    ORLOCAL_TRY(auto now, accounts::AccountBook(*store).with(account.source));
    m_finished.passedOver = !now;
    if (!now) { return accounts::SyncReport(); }
    account = *std::move(now);
    m_finished.failureBefore = account.state.failure;
    ORLOCAL_TRY(const auto secrets, userSecrets());
    return accounts::syncNow(*store, account, secrets, SystemClock(), m_options);
  }

 private:
  FinishedSync& m_finished;
  accounts::SyncOptions m_options;
};

}  // namespace

Result<std::unique_ptr<SyncWorkers>> SyncWorkers::make() {
  const int bell = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (bell < 0) { return failure(ErrorCode::kIo, tr("Syncs cannot be waited for: {}.", systemReason(errno))); }
  return std::unique_ptr<SyncWorkers>(new SyncWorkers(bell));
}

SyncWorkers::~SyncWorkers() {
  stopAll();
  for (auto& [account, worker] : m_running) { worker->thread.join(); }
  ::close(m_bell);
}

Status SyncWorkers::start(const Account& account) {
  auto worker = std::make_unique<Worker>();
  const SignalsKept kept;
  try {
    worker->thread = std::thread([this, account, &stop = worker->stop] { run(account, stop); });
  } catch (const std::system_error& error) {
    return failure(ErrorCode::kIo,
                   tr("The sync of \"{}\" cannot be begun: {}.", account.name, systemReason(error.code().value())));
  }
  m_running.emplace(account.source, std::move(worker));
  return {};
}

void SyncWorkers::run(const Account& account, const std::atomic<bool>& stop) {
  accounts::SyncOptions options;
  options.stop = &stop;
  options.progress = [this, &account](const std::string& text) {
    const std::lock_guard lock(m_mutex);
    m_words = account.name + ": " + text;
    ring();
  };
  FinishedSync finished{account, "", accounts::SyncReport()};
  finished.report = OneSync(finished, options).run();
  const std::lock_guard lock(m_mutex);
  m_finished.push_back(std::move(finished));
  ring();
}

void SyncWorkers::ring() const {
  const std::uint64_t once = 1;
  // Full only after more rings than anybody can make; then it can be read all the same.
  (void)!::write(m_bell, &once, sizeof once);
}

void SyncWorkers::stop(store::SourceId account) {
  if (const auto found = m_running.find(account); found != m_running.end()) { found->second->stop = true; }
}

void SyncWorkers::stopAll() {
  for (auto& [account, worker] : m_running) { worker->stop = true; }
}

std::vector<store::SourceId> SyncWorkers::running() const {
  std::vector<store::SourceId> accounts;
  for (const auto& [account, worker] : m_running) { accounts.push_back(account); }
  return accounts;
}

std::vector<FinishedSync> SyncWorkers::takeFinished() {
  std::uint64_t rings = 0;
  (void)!::read(m_bell, &rings, sizeof rings);
  std::vector<FinishedSync> finished;
  {
    const std::lock_guard lock(m_mutex);
    finished = std::exchange(m_finished, {});
  }
  for (const FinishedSync& each : finished) {
    const auto worker = m_running.find(each.account.source);
    worker->second->thread.join();
    m_running.erase(worker);
  }
  return finished;
}

std::string SyncWorkers::takeWords() {
  const std::lock_guard lock(m_mutex);
  return std::exchange(m_words, {});
}

}  // namespace orlocal::host
