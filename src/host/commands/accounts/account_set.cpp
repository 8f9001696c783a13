#include "host/commands/accounts/account_set.h"

#include <filesystem>
#include <optional>
#include <ostream>
#include <utility>

#include <fmt/format.h>

#include "accounts/account_book.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/duration_words.h"
#include "host/commands/accounts/sync_run.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

using accounts::Account;
using accounts::AccountSettings;

class Setting {
 public:
  Setting(const SetWords& words, CommandContext& context) : m_words(words), m_context(context) {
    m_source = words.asks ? accounts::KeptPassword{} : secretSourceIn(words.secret);
  }

  Result<ExitStatus> run() {
    const bool signsIn = m_source || !m_words.caFile.empty();
    if (!signsIn && m_words.newName.empty() && m_words.every.empty()) {
      return wordsAreOff(m_context.streams, tr("Say what is to be set; orlocal account set --help lists what can be."));
    }
    ORLOCAL_TRY(const auto store, openUserStore());
    accounts::AccountBook book(*store);
    ORLOCAL_TRY(m_account, book.named(m_words.name));
    if (isSubscription(m_account) && (signsIn || !m_words.newName.empty())) {
      return failure(ErrorCode::kRefused,
                     tr("\"{}\" is a subscription, of which only --every can be set.", m_account.name));
    }
    if (!m_words.newName.empty()) { ORLOCAL_CHECK(book.mustBeFree(m_words.newName)); }
    ORLOCAL_TRY(auto secrets, userSecrets());
    if (m_words.asks && !(m_typed = askPasswordOf(m_account, m_context.streams))) {
      return wordsAreOff(m_context.streams, tr("No password was given, and nobody can be asked here."));
    }
    if (signsIn && !m_words.unchecked) { ORLOCAL_CHECK(check(secrets)); }
    if (signsIn) { ORLOCAL_CHECK(forgetFailures(book)); }
    ORLOCAL_CHECK(keep(book, secrets));
    return ExitStatus::kDone;
  }

 private:
  void put(AccountSettings& settings) const {
    if (m_source) { settings.secret = textOf(*m_source); }
    if (!m_words.caFile.empty()) { settings.caFile = std::filesystem::absolute(m_words.caFile); }
    if (!m_words.every.empty()) { settings.every = durationOf(m_words.every); }
  }

  Status check(const accounts::SecretsFile& secrets) {
    const Interruption interruption;
    Account tried = m_account;
    put(tried.settings);
    const auto calendars = lookedFor(tried, secrets, m_typed, m_context.streams);
    if (calendars) {
      m_found = std::move(tried.state);
      return {};
    }
    return failure(ErrorCode::kIo,
                   tr("The account \"{}\" stays as it was. {}", m_account.name, failureText(calendars.error())));
  }

  Status keep(accounts::AccountBook& book, accounts::SecretsFile& secrets) {
    // A new password is there before the account says that it is used, and an old one goes last.
    if (m_typed) { ORLOCAL_CHECK(secrets.keep(m_account.identifier, *m_typed)); }
    if (!m_words.newName.empty()) { ORLOCAL_CHECK(book.rename(m_account.source, m_words.newName)); }
    ORLOCAL_CHECK(book.changeSettings(m_account.source, [this](AccountSettings& settings) { put(settings); }));
    if (m_source && !m_typed) { ORLOCAL_CHECK(secrets.forget(m_account.identifier)); }
    return {};
  }

  /// The next try need not wait as long as the last failures asked for. A service plans it when it sees other settings,
  /// so this comes before those.
  Status forgetFailures(accounts::AccountBook& book) {
    ORLOCAL_TRY(auto now, book.with(m_account.source));
    if (!now) { return {}; }
    if (m_found) {
      now->state.principal = m_found->principal;
      now->state.homes = m_found->homes;
      now->state.schedules = m_found->schedules;
    }
    now->state.failure.clear();
    now->state.trouble.reset();
    now->state.failures = 0;
    now->state.notBefore.reset();
    now->state.lastTry.reset();
    return book.saveState(*now);
  }

  const SetWords& m_words;
  CommandContext& m_context;
  std::optional<accounts::SecretSource> m_source;
  Account m_account;
  std::optional<std::string> m_typed;
  std::optional<accounts::AccountState> m_found;  ///< where the server says that it is now
};

}  // namespace

Result<ExitStatus> setAccount(const SetWords& words, CommandContext& context) { return Setting(words, context).run(); }

}  // namespace orlocal::host
