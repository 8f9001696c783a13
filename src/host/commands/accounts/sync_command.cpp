#include <algorithm>
#include <memory>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "accounts/syncing.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_commands.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/sync_follow.h"
#include "host/commands/accounts/sync_run.h"
#include "host/commands/accounts/sync_workers.h"
#include "host/commands/command_line/change_wait.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "store/location.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using accounts::Account;

struct SyncWords {
  std::vector<std::string> names;
  bool follow = false;
};

/// Syncs accounts once, beside one another; what is said of them comes in their order.
class OneRound {
 public:
  OneRound(SyncWorkers& workers, CommandContext& context)
      : m_workers(workers),
        m_context(context),
        m_progress(context.streams.err, context.streams.errIsTerminal, tr("Syncing")) {}

  /// A store that cannot be written ends the round; what a server does, only its own account.
  Status sync(const std::vector<Account>& accounts) {
    for (const Account& account : accounts) {
      m_all.push_back({account, std::nullopt});
      if (!account.settings.paused) { ORLOCAL_CHECK(m_workers.start(account)); }
    }
    const int descriptor = m_workers.descriptor();
    while (tellWhatIsDone(), !m_workers.areIdle()) {
      ORLOCAL_TRY(const Woken woken, waitForAnyOf(std::span(&descriptor, 1)));
      if (woken == Woken::kByInterruption) { return stopped(); }
      for (FinishedSync& each : m_workers.takeFinished()) { ORLOCAL_CHECK(take(each)); }
      if (const std::string words = m_workers.takeWords(); !words.empty()) { m_progress.tell(printable(words)); }
    }
    return {};
  }

  ExitStatus finish() {
    if (m_context.options.json) { printJson(m_list, m_context.streams.out); }
    return m_failed ? ExitStatus::kFailed : ExitStatus::kDone;
  }

 private:
  /// An account of the round, and what came of its sync; none while that runs.
  struct Entry {
    Account account;
    std::optional<FinishedSync> finished;
  };

  static Failed stopped() { return failure(ErrorCode::kInterrupted, tr("The sync was stopped.")); }

  Status take(FinishedSync& finished) {
    if (!finished.report && !finished.passedOver) { return failure(finished.report.error()); }
    const auto entry = std::find_if(m_all.begin(), m_all.end(),
                                    [&](const Entry& each) { return each.account.source == finished.account.source; });
    entry->finished = std::move(finished);
    return {};
  }

  void tellWhatIsDone() {
    for (; m_told < m_all.size(); ++m_told) {
      const Entry& entry = m_all[m_told];
      if (entry.account.settings.paused) {
        add(entry.account, "paused", {});
        continue;
      }
      if (!entry.finished) { return; }
      m_progress.clear();
      tell(*entry.finished);
    }
  }

  void tell(const FinishedSync& finished) {
    accounts::SyncReport report;
    if (finished.report) {
      report = *finished.report;
    } else {
      report.failure = accounts::ServerFailure{accounts::Trouble::kLocked, finished.report.error().message, 0, {}};
    }
    m_failed = m_failed || report.failure || report.conflicts > 0;
    add(finished.account, report.failure ? "failed" : "done", report);
  }

  void add(const Account& account, const char* state, const accounts::SyncReport& report) {
    m_list.push_back(syncJson(account, state, report));
    if (m_context.options.json) { return; }
    std::ostream& out = m_context.streams.out;
    const std::string name = printable(account.name);
    if (account.settings.paused) {
      out << tr("{}: paused; orlocal account resume lets it go on\n", name);
      return;
    }
    if (!report.failure || didSomething(report)) { out << fmt::format("{}: {}\n", name, summaryOf(report)); }
    out.flush();
    tellTroubles(account, report, m_context);
    if (report.failure) { tellTrouble(m_context.streams.err, failureText(*report.failure), account.name); }
    if (report.conflicts > 0) { m_context.streams.err << tr("orlocal conflicts lists what could not be merged.\n"); }
  }

  SyncWorkers& m_workers;
  CommandContext& m_context;
  ProgressLine m_progress;
  std::vector<Entry> m_all;
  std::size_t m_told = 0;
  nlohmann::json m_list = nlohmann::json::array();
  bool m_failed = false;
};

/// A subscription whose time has not come is left alone, unless it is named.
bool isDue(const Account& account) {
  const auto now = store::now();
  return !isSubscription(account) || nextTry(account, now, 0) <= now;
}

Result<ExitStatus> syncOnce(std::vector<Account> chosen, bool named, CommandContext& context) {
  if (chosen.empty() && !context.options.json) {
    context.streams.out << tr(
        "There is no account and no subscription; orlocal account add and orlocal subscribe make "
        "one.\n");
  }
  if (!named) {
    std::erase_if(chosen, [](const Account& account) { return !isDue(account); });
  }
  ORLOCAL_TRY(const auto workers, SyncWorkers::make());
  OneRound round(*workers, context);
  ORLOCAL_CHECK(round.sync(chosen));
  return round.finish();
}

Result<ExitStatus> runSync(const SyncWords& words, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  accounts::AccountBook book(*store);
  std::vector<Account> chosen;
  for (const std::string& name : words.names) {
    auto account = book.named(name);
    if (!account && account.error().code == ErrorCode::kNotFound) {
      tellTrouble(context.streams.err, account.error().message);
      return ExitStatus::kUsage;
    }
    if (!account) { return failure(std::move(account.error())); }
    const bool known =
        std::any_of(chosen.begin(), chosen.end(), [&](const Account& each) { return each.source == account->source; });
    if (!known) { chosen.push_back(*std::move(account)); }
  }
  const Interruption interruption;
  ORLOCAL_TRY(const auto file, store::userStoreFile());
  ORLOCAL_TRY(const auto lock, accounts::SyncLock::take(file));
  if (words.follow) { return followAccounts(*store, words.names, context); }
  if (words.names.empty()) { ORLOCAL_TRY(chosen, book.all()); }
  return syncOnce(std::move(chosen), !words.names.empty(), context);
}

}  // namespace

void registerSyncCommand(CommandLine& line) {
  const auto words = std::make_shared<SyncWords>();
  CLI::App& sync = line.add("sync",
                            "Carry changes both ways between the store and the servers of its accounts, and refresh\n"
                            "subscriptions that are due.",
                            [words](CommandContext& context) { return runSync(*words, context); });
  sync.add_option("accounts", words->names, "Only these accounts and subscriptions, due or not")->type_name("NAME");
  sync.add_flag("--follow", words->follow,
                "Go on until interrupted: changes here go out at once, servers are asked\n"
                "every minute");
  sync.footer(
      tr("Ends with status 1 when an account failed or has new conflicts; the others are synced all the same.\n") +
      "  orlocal sync\n  orlocal sync Cloud");
}

}  // namespace orlocal::host
