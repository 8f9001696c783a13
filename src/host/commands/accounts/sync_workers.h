#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "accounts/account_book.h"
#include "accounts/sync/sync_report.h"
#include "base/result.h"
#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// A sync of an account, or a refresh of a subscription, that has come to an end.
struct FinishedSync {
  accounts::Account account;            ///< as it is afterwards
  std::string failureBefore;            ///< of the try before; empty when it went well
  Result<accounts::SyncReport> report;  ///< fails when the store or the system did
  /// Nothing was done: another command has the account in hand, or has removed it.
  bool passedOver = false;
};

/// Syncs accounts beside one another, so that a server that is silent holds up nobody else's: each sync has a thread
/// and a connection to the user's store of its own. Main thread only; the threads touch nothing of the caller's.
///
/// Signals go to the thread that made this. Who wants it to end early says `stop`.
class SyncWorkers {
 public:
  /// Needs a `SyncLock` of the store, which is held for longer.
  static Result<std::unique_ptr<SyncWorkers>> make();
  /// Stops what runs, and waits until it has.
  ~SyncWorkers();
  SyncWorkers(const SyncWorkers&) = delete;
  SyncWorkers& operator=(const SyncWorkers&) = delete;

  /// Begins to sync the account, of which nothing runs.
  Status start(const accounts::Account& account);
  bool isSyncing(store::SourceId account) const { return m_running.contains(account); }
  bool areIdle() const { return m_running.empty(); }
  /// Ends the account's sync soon; what was done stays.
  void stop(store::SourceId account);
  void stopAll();
  /// The accounts of which something runs.
  std::vector<store::SourceId> running() const;

  /// Can be read when there is something to take: finished syncs or news.
  int descriptor() const { return m_bell; }
  /// Those that came to an end since the last call, in that order.
  std::vector<FinishedSync> takeFinished();
  /// What is done now, said by whoever spoke last: "Work: sending 3 of 12"; empty when there is nothing new.
  std::string takeWords();

 private:
  struct Worker {
    std::atomic<bool> stop{false};
    std::thread thread;
  };

  explicit SyncWorkers(int bell) : m_bell(bell) {}
  void run(const accounts::Account& account, const std::atomic<bool>& stop);
  void ring() const;

  int m_bell;
  std::map<store::SourceId, std::unique_ptr<Worker>> m_running;
  std::mutex m_mutex;  ///< of what follows
  std::vector<FinishedSync> m_finished;
  std::string m_words;
};

}  // namespace orlocal::host
