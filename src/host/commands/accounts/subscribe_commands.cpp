#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "accounts/adding.h"
#include "accounts/connection.h"
#include "accounts/remedy.h"
#include "accounts/subscription.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_commands.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/duration_words.h"
#include "host/commands/accounts/sync_run.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

using accounts::Account;

struct SubscribeWords {
  std::string address, name, every;
};

/// An address, or a local file with its whole path; none for what is neither.
std::optional<std::string> addressFrom(const std::string& given) {
  for (const std::string_view scheme : {"http://", "https://", "webcal://", "webcals://"}) {
    if (given.starts_with(scheme)) { return given; }
  }
  constexpr std::string_view kFile = "file://";
  if (given.starts_with(kFile)) { return given.substr(kFile.size()); }
  if (given.find("://") != given.npos) { return std::nullopt; }
  return std::filesystem::absolute(given).lexically_normal().string();
}

Result<ExitStatus> runSubscribe(const SubscribeWords& words, CommandContext& context) {
  Streams& streams = context.streams;
  const auto address = addressFrom(words.address);
  if (!address) { return wordsAreOff(streams, tr("Give an address of webcal, http or https, or a file.")); }
  if (accounts::hasCredentials(*address)) {
    return wordsAreOff(streams,
                       tr("Leave user and password out of the address; subscriptions have none. A calendar that "
                          "wants them is reached by an account (orlocal account add)."));
  }
  Account account;
  account.name = words.name;
  account.settings.kind = accounts::AccountSettings::Kind::kSubscription;
  account.settings.address = *address;
  account.settings.secret = textOf(accounts::SecretSource(accounts::NoPassword{}));
  if (!words.every.empty()) { account.settings.every = durationOf(words.every); }
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  ORLOCAL_CHECK(accounts::AccountBook(*store).mustBeFree(account.name));
  ORLOCAL_TRY(const auto secrets, userSecrets());
  const Interruption interruption;
  ProgressLine progress(streams.err, streams.errIsTerminal, tr("Fetching"));
  progress.announce(printable(addressOf(account)));
  const auto transport = connectionFor(account, secrets, &Interruption::flag());
  const auto report = subscribe(*store, *transport, SystemClock(), account, {&Interruption::flag(), {}});
  progress.clear();
  if (!report) { return failure(ErrorCode::kIo, tr("No subscription was made. {}", failureText(report.error()))); }
  if (!context.options.json) {
    streams.out << trn("The calendar \"{}\" is subscribed, with {} item.\n",
                       "The calendar \"{}\" is subscribed, with {} items.\n", report->received, printable(account.name),
                       report->received);
    streams.out.flush();
  }
  tellTroubles(account, *report, context);
  return ExitStatus::kDone;
}

Result<ExitStatus> runUnsubscribe(const std::string& title, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  accounts::AccountBook book(*store);
  ORLOCAL_TRY(const Account account, book.named(title));
  if (!isSubscription(account)) {
    return failure(ErrorCode::kRefused, tr("\"{}\" is an account; orlocal account remove removes it.", account.name));
  }
  const Interruption interruption;
  ORLOCAL_TRY(const auto lock, takeInHand(book, account, context));
  ORLOCAL_CHECK(book.remove(account));
  return ExitStatus::kDone;
}

}  // namespace

void registerSubscribeCommands(CommandLine& line) {
  const auto words = std::make_shared<SubscribeWords>();
  CLI::App& subscribe =
      line.add("subscribe", "Show a calendar that others publish, and keep it up to date (orlocal sync).",
               [words](CommandContext& context) { return runSubscribe(*words, context); });
  subscribe.footer("  orlocal subscribe webcal://example.com/holidays.ics --name Holidays");
  subscribe.add_option("address", words->address, "Where it is: webcal, http, https, or a local file")
      ->type_name("URL|FILE")
      ->required();
  subscribe.add_option("--name", words->name, "Its title here (default: its own)")->type_name("TITLE");
  subscribe
      .add_option("--every", words->every, "How often it is fetched: 30m, 6h, 1d (default: as it says itself, or 6h)")
      ->type_name("DURATION")
      ->check(objectionToDuration);

  const auto title = std::make_shared<std::string>();
  CLI::App& unsubscribe = line.add("unsubscribe", "End a subscription, and remove its calendar.",
                                   [title](CommandContext& context) { return runUnsubscribe(*title, context); });
  unsubscribe.footer("  orlocal unsubscribe Holidays");
  unsubscribe.add_option("subscription", *title, "The subscription")->type_name("TITLE")->required();
}

}  // namespace orlocal::host
