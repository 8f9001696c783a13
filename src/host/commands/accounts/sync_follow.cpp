#include "host/commands/accounts/sync_follow.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <ostream>
#include <random>
#include <set>

#include <fmt/format.h>

#include "accounts/sync/local_changes.h"
#include "accounts/syncing.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/sync_run.h"
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

double anyPart() {
  std::random_device random;
  return std::uniform_real_distribution<double>(0, 1)(random);
}

class Follower {
 public:
  Follower(store::CalendarStore& store, const std::vector<std::string>& names, CommandContext& context)
      : m_store(store), m_names(names), m_context(context) {}

  Result<ExitStatus> run() {
    // First the ear, then the place in the log: what is committed in between is heard.
    ORLOCAL_TRY(const auto signal, m_store.listen());
    ORLOCAL_TRY(m_position, m_store.newestChange());
    m_context.streams.err << "orlocal: keeping the accounts and their servers the same; Ctrl-C ends it\n" << std::flush;
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
      ORLOCAL_TRY(const Woken woken,
                  waitForChange(*signal, std::clamp<std::chrono::milliseconds>(patience, std::chrono::milliseconds(0),
                                                                               kLongestSleep)));
      if (woken == Woken::kByInterruption) { break; }
    }
    return ExitStatus::kDone;
  }

 private:
  /// Syncs whatever is due; when something will be next.
  Result<steady_clock::time_point> onTurn() {
    accounts::AccountBook book(m_store);
    ORLOCAL_TRY(auto all, book.all());
    std::erase_if(all, [&](const Account& account) {
      return account.settings.paused ||
             (!m_names.empty() && std::find(m_names.begin(), m_names.end(), account.name) == m_names.end());
    });
    ORLOCAL_TRY(const auto hurried, withNews(book, all));
    auto next = steady_clock::now() + kLongestSleep;
    for (Account& account : all) {
      const auto planned = m_next.try_emplace(account.source, whenNext(account)).first;
      const bool due = planned->second <= steady_clock::now() || hurried.contains(account.source);
      if (due && !Interruption::flag()) { planned->second = sync(account); }
      next = std::min(next, planned->second);
    }
    return next;
  }

  /// The accounts that have something to send which somebody has just changed. One that fails waits for its turn.
  Result<std::set<store::SourceId>> withNews(accounts::AccountBook& book, const std::vector<Account>& all) {
    std::set<store::SourceId> hurried;
    const std::uint64_t generation = m_store.generation();
    if (m_generation == generation) { return hurried; }
    ORLOCAL_TRY(const auto commits, m_store.outsideCommits(m_position));
    m_generation = generation;
    if (commits.empty()) { return hurried; }
    const bool calendars = std::any_of(commits.begin(), commits.end(), [](const store::OutsideCommit& commit) {
      return !commit.calendars.empty() || !commit.reminderLists.empty();
    });
    ORLOCAL_CHECK(accounts::noteLocalChanges(m_store));
    for (const Account& account : all) {
      if (isSubscription(account) || account.state.failures > 0) { continue; }
      ORLOCAL_TRY(const std::size_t unsent, book.unsentOf(account));
      if (calendars || unsent > 0) { hurried.insert(account.source); }
    }
    return hurried;
  }

  steady_clock::time_point whenNext(const Account& account) const {
    const auto wait = nextTry(account, m_part) - store::now();
    return steady_clock::now() + std::min<std::chrono::microseconds>(wait, std::chrono::hours(24 * 8));
  }

  steady_clock::time_point sync(Account& account) {
    const std::string failedBefore = account.state.failure;
    const auto report = syncVisibly(m_store, account, m_context);
    if (!report) {
      tellOnce(report.error().message);
      return steady_clock::now() + kAfterStoreFailure;
    }
    m_told.clear();
    if (!Interruption::flag()) { tell(account, *report, failedBefore); }
    return whenNext(account);
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
      m_context.streams.out << fmt::format("{}: {}{}", printable(account.name), recovered ? "works again; " : "",
                                           summaryOf(report))
                            << std::endl;
    }
    tellTroubles(account, report, m_context);
    if (failsAnew) { tellTrouble(m_context.streams.err, failureText(*report.failure), account.name); }
  }

  void tellOnce(const std::string& sentence) {
    if (std::exchange(m_told, sentence) != sentence) { tellTrouble(m_context.streams.err, sentence); }
  }

  store::CalendarStore& m_store;
  const std::vector<std::string>& m_names;
  CommandContext& m_context;
  std::map<store::SourceId, steady_clock::time_point> m_next;
  store::LogPosition m_position;
  std::uint64_t m_generation = 0;
  std::string m_told;  ///< of the store
  /// Another one on each machine.
  double m_part = anyPart();
};

}  // namespace

Result<ExitStatus> followAccounts(store::CalendarStore& store, const std::vector<std::string>& names,
                                  CommandContext& context) {
  return Follower(store, names, context).run();
}

}  // namespace orlocal::host
