#include "host/commands/accounts/account_add.h"

#include <algorithm>
#include <filesystem>
#include <ostream>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "accounts/adding.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/duration_words.h"
#include "host/commands/accounts/sync_run.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

using accounts::Account;

Account accountOf(const AddWords& words) {
  Account account;
  account.name = words.name.empty() ? accounts::usualNameFor(words.address) : words.name;
  account.settings.address = words.address;
  account.settings.user = words.user;
  account.settings.secret = textOf(secretSourceIn(words.secret).value_or(accounts::KeptPassword{}));
  account.settings.every = durationOf(words.every);
  if (!words.caFile.empty()) { account.settings.caFile = std::filesystem::absolute(words.caFile); }
  return account;
}

std::vector<std::string> titlesOf(const std::vector<accounts::RemoteCalendar>& calendars) {
  std::vector<std::string> titles;
  for (const accounts::RemoteCalendar& calendar : calendars) {
    titles.push_back(calendar.displayName.empty() ? calendar.url : calendar.displayName);
  }
  std::sort(titles.begin(), titles.end());
  return titles;
}

void tellFound(const Account& account, const std::vector<std::string>& titles, CommandContext& context) {
  std::ostream& out = context.streams.out;
  if (context.options.json) {
    printJson(nlohmann::json{{"name", account.name}, {"address", addressOf(account)}, {"calendars", titles}}, out);
    return;
  }
  out << trn("The account \"{}\" is added. It has {} calendar{}\n",
             "The account \"{}\" is added. It has {} calendars{}\n", titles.size(), printable(account.name),
             titles.size(), titles.empty() ? "." : ":");
  for (const std::string& title : titles) { out << "  " << printable(title) << '\n'; }
  out << tr("orlocal sync fetches what is in them; orlocal sync --follow keeps both sides the same.\n");
}

/// The password stays only with an account that is there, and no account stays without its password.
Status put(accounts::AccountBook& book, Account& account, const std::optional<std::string>& typed,
           accounts::SecretsFile& secrets) {
  ORLOCAL_CHECK(book.add(account));
  if (!typed) { return {}; }
  Status kept = secrets.keep(account.identifier, *typed);
  if (!kept) { ORLOCAL_CHECK(book.remove(account)); }
  return kept;
}

}  // namespace

Result<ExitStatus> addAccount(const AddWords& words, CommandContext& context) {
  Streams& streams = context.streams;
  if (accounts::hasCredentials(words.address)) {
    return wordsAreOff(streams,
                       tr("Leave user and password out of the address: --user says who, and the password is asked "
                          "for or comes from --password-command or --password-file."));
  }
  Account account = accountOf(words);
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  ORLOCAL_TRY(auto secrets, userSecrets());
  accounts::AccountBook book(*store);
  ORLOCAL_CHECK(book.mustBeFree(account.name));
  std::optional<std::string> typed;
  if (account.settings.secret == textOf(accounts::KeptPassword{})) {
    typed = askPasswordOf(account, streams);
    if (!typed) {
      return wordsAreOff(streams, tr("No password was given, and nobody can be asked here: give --password-command, "
                                     "--password-file or --token-command."));
    }
  }
  const Interruption interruption;
  const auto calendars = lookedFor(account, secrets, typed, streams);
  if (!calendars) {
    return failure(ErrorCode::kIo,
                   tr("The account \"{}\" was not added. {}", account.name, failureText(calendars.error())));
  }
  ORLOCAL_CHECK(put(book, account, typed, secrets));
  tellFound(account, titlesOf(*calendars), context);
  return ExitStatus::kDone;
}

}  // namespace orlocal::host
