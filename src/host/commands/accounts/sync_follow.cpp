#include "host/commands/accounts/sync_follow.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <set>

#include <fmt/format.h>

#include "accounts/sync/local_changes.h"
#include "accounts/syncing.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/sync_run.h"
#include "host/commands/accounts/sync_workers.h"
#include "host/commands/command_line/change_wait.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using accounts::Account;
using std::chrono::steady_clock;

/// Nobody waits for longer, so that somebody who sets the clock or wakes the machine is not forgotten.
constexpr std::chrono::minutes kLongestSleep{10};
/// After a failure of the store itself, which has no count of failures of its own.
constexpr std::chrono::minutes kAfterStoreFailure{1};
/// While another command has an account in hand.
constexpr std::chrono::seconds kAfterPassingOver{1};

double anyPart() {
  std::random_device random;
  return std::uniform_real_distribution<double>(0, 1)(random);
}

class Follower {
 public:
  Follower(store::CalendarStore& store, SyncWorkers& workers, const std::vector<std::string>& names,
           CommandContext& context)
      : m_store(store), m_workers(workers), m_names(names), m_context(context) {}

  Result<ExitStatus> run() {
    // First the ear, then the place in the log: what is committed in between is heard.
    ORLOCAL_TRY(const auto signal, m_store.listen());
    ORLOCAL_TRY(m_position, m_store.newestChange());
    m_context.streams.err << tr("orlocal: keeping the accounts and their servers the same; Ctrl-C ends it\n")
                          << std::flush;
    while (!Interruption::flag()) {
      // What cannot be read now can be read later: a service goes on.
      std::optional<steady_clock::time_point> next;
      if (auto turn = onTurn(); turn) {
        next = *turn;
      } else {
        tellOnce(turn.error().message);
        next = steady_clock::now() + kAfterStoreFailure;
      }
      const auto patience = std::chrono::ceil<std::chrono::milliseconds>(*next - steady_clock::now());
      const std::array descriptors{signal->descriptor(), m_workers.descriptor()};
      ORLOCAL_TRY(const Woken woken,
                  waitForAnyOf(descriptors, std::clamp<std::chrono::milliseconds>(
                                                patience, std::chrono::milliseconds(0), kLongestSleep)));
      if (woken == Woken::kByInterruption) { break; }
      signal->drain();
    }
    return ExitStatus::kDone;
  }

 private:
  /// When an account is synced next, as its settings are; made anew when somebody has changed those.
  struct Plan {
    std::string settings;
    steady_clock::time_point next;
  };

  /// Begins whatever is due; when something will be next.
  Result<steady_clock::time_point> onTurn() {
    for (FinishedSync& finished : m_workers.takeFinished()) { take(finished); }
    (void)m_workers.takeWords();
    accounts::AccountBook book(m_store);
    ORLOCAL_TRY(auto all, book.all());
    std::erase_if(all, [&](const Account& account) {
      return account.settings.paused ||
             (!m_names.empty() && std::find(m_names.begin(), m_names.end(), account.name) == m_names.end());
    });
    forgetAllBut(all);
    ORLOCAL_TRY(const auto hurried, withNews(book, all));
    m_hurried.insert(hurried.begin(), hurried.end());
    auto next = steady_clock::now() + kLongestSleep;
    for (const Account& account : all) {
      if (m_workers.isSyncing(account.source)) { continue; }
      Plan& plan = m_plans[account.source];
      if (std::string settings = account.settings.text(); plan.settings != settings) {
        plan = {std::move(settings), whenNext(account)};
      }
      if (plan.next <= steady_clock::now() || m_hurried.contains(account.source)) {
        m_hurried.erase(account.source);
        if (const Status started = m_workers.start(account); started) { continue; }
        plan.next = steady_clock::now() + kAfterStoreFailure;
      }
      next = std::min(next, plan.next);
    }
    return next;
  }

  /// Whoever pauses or removes an account need not wait for its server; when it is resumed it is looked at anew.
  void forgetAllBut(const std::vector<Account>& all) {
    const auto isGone = [&](store::SourceId source) {
      return std::none_of(all.begin(), all.end(), [&](const Account& account) { return account.source == source; });
    };
    std::erase_if(m_plans, [&](const auto& each) { return isGone(each.first); });
    for (const store::SourceId running : m_workers.running()) {
      if (isGone(running)) { m_workers.stop(running); }
    }
  }

  /// The accounts that have something to send which somebody has just changed. One that fails waits for its turn.
  Result<std::set<store::SourceId>> withNews(accounts::AccountBook& book, const std::vector<Account>& all) {
    std::set<store::SourceId> hurried;
    const std::uint64_t generation = m_store.generation();
    if (m_generation == generation) { return hurried; }
    ORLOCAL_TRY(const auto commits, m_store.outsideCommits(m_position));
    m_generation = generation;
    if (commits.empty()) { return hurried; }
    ORLOCAL_CHECK(accounts::noteLocalChanges(m_store));
    for (const Account& account : all) {
      if (isSubscription(account) || account.state.failures > 0) { continue; }
      ORLOCAL_TRY(const bool news, book.hasNews(account, commits));
      if (news) { hurried.insert(account.source); }
    }
    return hurried;
  }

  steady_clock::time_point whenNext(const Account& account) const {
    const auto now = store::now();
    const auto wait = nextTry(account, now, m_part) - now;
    return steady_clock::now() + std::min<std::chrono::microseconds>(wait, std::chrono::hours(24 * 8));
  }

  void take(const FinishedSync& finished) {
    const Account& account = finished.account;
    auto& next = m_plans[account.source].next;
    if (finished.passedOver) {
      next = steady_clock::now() + kAfterPassingOver;
      return;
    }
    if (!finished.report) {
      tellOnce(finished.report.error().message);
      next = steady_clock::now() + kAfterStoreFailure;
      return;
    }
    m_told.clear();
    next = whenNext(account);
    const accounts::SyncReport& report = *finished.report;
    if (report.failure) {
      m_hurried.erase(account.source);
      if (report.failure->trouble == accounts::Trouble::kInterrupted) {
        // Whoever paused it need not be told that it was stopped, and it is no failure.
        m_plans.erase(account.source);
        return;
      }
    }
    tell(account, report, finished.failureBefore);
  }

  /// A failure is said when it comes and when it is over, and not at each try.
  void tell(const Account& account, const accounts::SyncReport& report, const std::string& failedBefore) {
    const bool failsAnew = report.failure && report.failure->message != failedBefore;
    const bool recovered = !report.failure && !failedBefore.empty();
    if (!didSomething(report) && !failsAnew && !recovered) { return; }
    if (m_context.options.json) {
      const char* state = report.failure ? "failed" : "done";
      m_context.streams.out
          << syncJson(account, state, report).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
          << std::endl;
      return;
    }
    if (didSomething(report) || recovered) {
      m_context.streams.out << (recovered ? tr("{}: works again; {}", printable(account.name), summaryOf(report))
                                          : fmt::format("{}: {}", printable(account.name), summaryOf(report)))
                            << std::endl;
    }
    tellTroubles(account, report, m_context);
    if (failsAnew) { tellTrouble(m_context.streams.err, failureText(*report.failure), account.name); }
  }

  void tellOnce(const std::string& sentence) {
    if (std::exchange(m_told, sentence) != sentence) { tellTrouble(m_context.streams.err, sentence); }
  }

  store::CalendarStore& m_store;
  SyncWorkers& m_workers;
  const std::vector<std::string>& m_names;
  CommandContext& m_context;
  std::map<store::SourceId, Plan> m_plans;
  std::set<store::SourceId> m_hurried;  ///< what was changed while their sync ran goes out right after it
  store::LogPosition m_position;
  std::uint64_t m_generation = 0;
  std::string m_told;  ///< of the store
  /// Another one on each machine.
  double m_part = anyPart();
};

}  // namespace

Result<ExitStatus> followAccounts(store::CalendarStore& store, const std::vector<std::string>& names,
                                  CommandContext& context) {
  ORLOCAL_TRY(const auto workers, SyncWorkers::make());
  return Follower(store, *workers, names, context).run();
}

}  // namespace orlocal::host
