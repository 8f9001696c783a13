#include "host/commands/accounts/account_trial.h"

#include <cstdlib>
#include <filesystem>

#include <fmt/format.h>

#include "accounts/connection.h"
#include "base/translation.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/password_question.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/command_line/terminal_text.h"

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

}  // namespace

std::optional<SecretSource> secretSourceIn(const SecretWords& words) {
  if (words.passwordCommand) { return accounts::PasswordCommand{*words.passwordCommand}; }
  if (words.tokenCommand) { return accounts::TokenCommand{*words.tokenCommand}; }
  if (words.passwordFile) { return accounts::PasswordFile{passwordFileOf(*words.passwordFile)}; }
  return std::nullopt;
}

std::optional<std::string> askPasswordOf(const Account& account, Streams& streams) {
  return askPassword(streams,
                     tr("Password of {} at {}: ", printable(account.settings.user), printable(addressOf(account))));
}

accounts::Answer<std::vector<accounts::RemoteCalendar>> lookedFor(Account& account,
                                                                  const accounts::SecretsFile& secrets,
                                                                  const std::optional<std::string>& typed,
                                                                  Streams& streams) {
  ProgressLine progress(streams.err, streams.errIsTerminal, tr("Looking for the account"));
  progress.announce(printable(addressOf(account)));
  // Where it was found before says nothing of who gets the password while it is found.
  account.state = {};
  const auto transport = connectionFor(account, secrets, &Interruption::flag(), typed);
  return findCalendars(*transport, account, accounts::systemServiceLookup);
}

}  // namespace orlocal::host
