#include "host/commands/accounts/account_add.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "accounts/adding.h"
#include "accounts/connection.h"
#include "accounts/remedy.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/password_question.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"

namespace orlocal::host {
namespace {

using accounts::Account;
using accounts::SecretSource;

/// A name alone is a credential where the service manager hands such out; else it is a file of the folder here.
std::filesystem::path passwordFileOf(const std::string& name) {
  const bool nameAlone = name.find('/') == name.npos;
  const char* credentials = std::getenv("CREDENTIALS_DIRECTORY");
  if (nameAlone && credentials != nullptr && *credentials != '\0') { return name; }
  return std::filesystem::absolute(name);
}

SecretSource secretSourceOf(const AddWords& words) {
  if (words.passwordCommand) { return accounts::PasswordCommand{*words.passwordCommand}; }
  if (words.tokenCommand) { return accounts::TokenCommand{*words.tokenCommand}; }
  if (words.passwordFile) { return accounts::PasswordFile{passwordFileOf(*words.passwordFile)}; }
  return accounts::KeptPassword{};
}

Account accountOf(const AddWords& words) {
  Account account;
  account.name = words.name.empty() ? accounts::usualNameFor(words.address) : words.name;
  account.settings.address = words.address;
  account.settings.user = words.user;
  account.settings.secret = textOf(secretSourceOf(words));
  if (!words.caFile.empty()) { account.settings.caFile = std::filesystem::absolute(words.caFile); }
  return account;
}

ExitStatus wordsAreOff(Streams& streams, const std::string& sentence) {
  tellTrouble(streams.err, sentence);
  return ExitStatus::kUsage;
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
  out << fmt::format("The account \"{}\" is added. It has {}{}\n", printable(account.name),
                     counted(titles.size(), "calendar"), titles.empty() ? "." : ":");
  for (const std::string& title : titles) { out << "  " << printable(title) << '\n'; }
  out << "orlocal sync fetches what is in them; orlocal sync --follow keeps both sides the same.\n";
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
                       "Leave user and password out of the address: --user says who, and the password is asked "
                       "for or comes from --password-command or --password-file.");
  }
  Account account = accountOf(words);
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  ORLOCAL_TRY(auto secrets, userSecrets());
  accounts::AccountBook book(*store);
  ORLOCAL_CHECK(book.mustBeFree(account.name));
  std::optional<std::string> typed;
  if (account.settings.secret == textOf(accounts::KeptPassword{})) {
    typed = askPassword(streams,
                        fmt::format("Password of {} at {}: ", printable(words.user), printable(addressOf(account))));
    if (!typed) {
      return wordsAreOff(streams,
                         "No password was given, and nobody can be asked here: give --password-command, "
                         "--password-file or --token-command.");
    }
  }
  const Interruption interruption;
  ProgressLine progress(streams.err, streams.errIsTerminal, "Looking for the account");
  progress.announce(printable(addressOf(account)));
  const auto transport = connectionFor(account, secrets, &Interruption::flag(), typed);
  const auto calendars = findCalendars(*transport, account, accounts::systemServiceLookup);
  progress.clear();
  if (!calendars) {
    return failure(ErrorCode::kIo, fmt::format("The account \"{}\" was not added. {} {}", account.name,
                                               calendars.error().message, remedyFor(calendars.error().trouble)));
  }
  ORLOCAL_CHECK(put(book, account, typed, secrets));
  tellFound(account, titlesOf(*calendars), context);
  return ExitStatus::kDone;
}

}  // namespace orlocal::host
