#include "host/commands/accounts/account_commands.h"

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_add.h"
#include "host/commands/accounts/account_set.h"
#include "host/commands/accounts/account_views.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/duration_words.h"
#include "host/commands/accounts/sync_run.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/remote_reader.h"

namespace orlocal::host {
namespace {

using accounts::Account;

struct RemoveWords {
  std::string name;
  bool discard = false;
};

Result<ExitStatus> setPaused(const std::string& name, bool paused) {
  ORLOCAL_TRY(const auto store, openUserStore());
  accounts::AccountBook book(*store);
  ORLOCAL_TRY(const Account account, book.named(name));
  if (account.settings.paused == paused) { return ExitStatus::kDone; }
  ORLOCAL_CHECK(book.changeSettings(account.source, [&](auto& settings) { settings.paused = paused; }));
  return ExitStatus::kDone;
}

Failed notRemoved(const Account& account, const std::string& reason) {
  return failure(ErrorCode::kRefused,
                 tr("The account \"{}\" was not removed: {} --discard removes it all the same.", account.name, reason));
}

Result<std::size_t> conflictsOf(store::CalendarStore& store, const Account& account) {
  store::RemoteReader reader(store);
  ORLOCAL_TRY(const auto mirrors, reader.mirrors(account.source));
  ORLOCAL_TRY(const auto conflicts, reader.conflicts());
  std::size_t count = 0;
  for (const store::Conflict& conflict : conflicts) {
    for (const store::Mirror& mirror : mirrors) { count += conflict.mirror == mirror.id; }
  }
  return count;
}

/// Carries over what is here alone; fails when something would be lost.
Status syncForTheLastTime(store::CalendarStore& store, Account& account, CommandContext& context) {
  ORLOCAL_TRY(const accounts::SyncReport report, syncVisibly(store, account, context));
  tellTroubles(account, report, context);
  if (report.failure) { return notRemoved(account, failureText(*report.failure)); }
  ORLOCAL_TRY(const std::size_t unsent, accounts::AccountBook(store).unsentOf(account));
  if (unsent > 0) {
    return notRemoved(account,
                      trn("{} change could not be sent (orlocal account show {}).",
                          "{} changes could not be sent (orlocal account show {}).", unsent, unsent, account.name));
  }
  ORLOCAL_TRY(const std::size_t conflicts, conflictsOf(store, account));
  if (conflicts == 0) { return {}; }
  return notRemoved(account,
                    trn("it has {} conflict that nobody has decided (orlocal conflicts).",
                        "it has {} conflicts that nobody has decided (orlocal conflicts).", conflicts, conflicts));
}

Result<ExitStatus> removeAccount(const RemoveWords& words, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  accounts::AccountBook book(*store);
  ORLOCAL_TRY(Account account, book.named(words.name));
  if (isSubscription(account)) {
    return failure(ErrorCode::kRefused, tr("\"{}\" is a subscription; orlocal unsubscribe ends it.", account.name));
  }
  const Interruption interruption;
  ORLOCAL_TRY(const auto lock, takeInHand(book, account, context));
  // A sync that was waited for may have learned something.
  ORLOCAL_TRY(account, book.named(words.name));
  if (!words.discard) { ORLOCAL_CHECK(syncForTheLastTime(*store, account, context)); }
  ORLOCAL_TRY(auto secrets, userSecrets());
  ORLOCAL_CHECK(book.remove(account));
  ORLOCAL_CHECK(secrets.forget(account.identifier));
  if (!context.options.json) {
    context.streams.out << tr("The account \"{}\" is removed; its server keeps what it has.\n",
                              printable(account.name));
  }
  return ExitStatus::kDone;
}

std::vector<CLI::Option*> addSecretOptions(CLI::App& command, SecretWords& words) {
  CLI::Option* password = command.add_option("--password-command", words.passwordCommand,
                                             "A command whose first line of output is the password");
  CLI::Option* file = command.add_option("--password-file", words.passwordFile,
                                         "A file with the password in its first line, this user's alone; where the\n"
                                         "service manager gives credentials, a name alone is one of them");
  CLI::Option* token = command.add_option("--token-command", words.tokenCommand,
                                          "A command whose first line of output is a bearer token");
  password->type_name("CMD")->excludes(file)->excludes(token);
  file->type_name("FILE")->excludes(token);
  token->type_name("CMD");
  return {password, file, token};
}

void addCaFileOption(CLI::App& command, std::string& caFile) {
  command.add_option("--ca-file", caFile, "Certificates to trust in place of the system's (PEM)")
      ->type_name("FILE")
      ->check(CLI::ExistingFile);
}

void registerAdd(CommandLine& line, CLI::App& account) {
  const auto words = std::make_shared<AddWords>();
  CLI::App& add = line.addUnder(account, "add", "Find an account on its server, and add it.",
                                [words](CommandContext& context) { return addAccount(*words, context); });
  add.add_option("address", words->address,
                 "Any address of the server: its root, a principal, a calendar; or a mail address")
      ->type_name("URL")
      ->required();
  add.add_option("--user", words->user, "Who signs in")->type_name("NAME")->required();
  add.add_option("--name", words->name, "What the account is called here (default: the server's name)")
      ->type_name("NAME");
  add.add_option("--every", words->every, "How often sync --follow asks the server: 5m, 1h (default: each minute)")
      ->type_name("DURATION")
      ->check(objectionToDuration);
  addCaFileOption(add, words->caFile);
  addSecretOptions(add, words->secret);
  add.footer(tr("Without a command or file the password is asked for on the terminal, and kept in a file that only you "
                "may\nread. The store never holds it.\n") +
             "  orlocal account add https://cloud.example.com --user ada\n  orlocal account add ada@example.com --user "
             "ada --password-command 'pass show cloud'");
}

void registerSet(CommandLine& line, CLI::App& account) {
  const auto words = std::make_shared<SetWords>();
  CLI::App& set = line.addUnder(account, "set", "Change where an account's password comes from, its name, and so on.",
                                [words](CommandContext& context) { return setAccount(*words, context); });
  set.footer("  orlocal account set Cloud --password\n  orlocal account set Cloud --every 1h");
  set.add_option("account", words->name, "The account; of a subscription only --every can be set")
      ->type_name("NAME")
      ->required();
  set.add_option("--name", words->newName, "Another name for it here")->type_name("NEW");
  set.add_option("--every", words->every, "How often sync --follow asks the server: 5m, 1h; default is as without this")
      ->type_name("DURATION")
      ->check([](const std::string& given) { return given == kDefaultEvery ? "" : objectionToDuration(given); });
  addCaFileOption(set, words->caFile);
  CLI::Option* ask = set.add_flag("--password", words->asks, "Ask for the password on the terminal, and keep it");
  for (CLI::Option* option : addSecretOptions(set, words->secret)) { ask->excludes(option); }
  set.add_flag("--no-check", words->unchecked, "Keep what is given without trying whether the server takes it");
}

void registerNamed(CommandLine& line, CLI::App& account, const char* name, const char* description,
                   Result<ExitStatus> (*body)(const std::string&, CommandContext&)) {
  const auto word = std::make_shared<std::string>();
  CLI::App& command =
      line.addUnder(account, name, description, [word, body](CommandContext& context) { return body(*word, context); });
  command.add_option("account", *word, "The account or subscription")->type_name("NAME")->required();
  command.footer(std::string("  orlocal account ") + name + " Cloud");
}

}  // namespace

void registerAccountCommands(CommandLine& line) {
  CLI::App& account =
      line.addGroup("account", "Accounts on calendar servers: add, set, list, show, pause, resume, remove.");
  registerAdd(line, account);
  registerSet(line, account);
  account.footer("  orlocal account list");
  line.addUnder(account, "list", "List accounts and subscriptions, and how they are.", listAccounts)
      .footer("  orlocal account list --json");
  registerNamed(line, account, "show", translatable("Show an account's calendars, and what could not be carried over."),
                showAccount);
  registerNamed(line, account, "pause", translatable("Leave an account alone until it is resumed."),
                [](const std::string& name, CommandContext&) { return setPaused(name, true); });
  registerNamed(line, account, "resume", translatable("Sync a paused account again."),
                [](const std::string& name, CommandContext&) { return setPaused(name, false); });
  const auto words = std::make_shared<RemoveWords>();
  CLI::App& remove = line.addUnder(account, "remove",
                                   "Remove an account from the store, after a last sync. Its server keeps what it has.",
                                   [words](CommandContext& context) { return removeAccount(*words, context); });
  remove.footer("  orlocal account remove Cloud");
  remove.add_option("account", words->name, "The account")->type_name("NAME")->required();
  remove.add_flag("--discard", words->discard, "Without a last sync: what was not sent is lost");
}

}  // namespace orlocal::host
