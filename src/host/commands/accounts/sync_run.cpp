#include "host/commands/accounts/sync_run.h"

#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "accounts/remedy.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/progress_line.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "store/location.h"

namespace orlocal::host {
namespace {

using accounts::SyncReport;

struct CountWord {
  const char* json;
  std::size_t SyncReport::*count;
  const char* words;
};
constexpr CountWord kCounts[] = {
    {"received", &SyncReport::received, translatable("received")},
    {"removedHere", &SyncReport::removedHere, translatable("removed here")},
    {"sent", &SyncReport::sent, translatable("sent")},
    {"removedThere", &SyncReport::removedThere, translatable("removed there")},
    {"conflicts", &SyncReport::conflicts, translatable("in conflict")},
};

}  // namespace

Result<accounts::SyncLock> takeInHand(accounts::AccountBook& book, const accounts::Account& account,
                                      CommandContext& context) {
  ORLOCAL_TRY(const auto file, store::userStoreFile());
  auto lock = accounts::SyncLock::takeAccount(file, account.source);
  if (lock || lock.error().code != ErrorCode::kBusy) { return lock; }
  ProgressLine progress(context.streams.err, context.streams.errIsTerminal, printable(account.name));
  progress.announce(tr("waiting for the sync that runs"));
  // A service ends the sync of an account that is paused, and need not wait for its server.
  const auto pause = [&](bool paused) {
    return book.changeSettings(account.source, [&](auto& settings) { settings.paused = paused; });
  };
  ORLOCAL_CHECK(pause(true));
  auto waited = accounts::SyncLock::waitForAccount(file, account.source, Interruption::flag());
  ORLOCAL_CHECK(pause(account.settings.paused));
  return waited;
}

Result<SyncReport> syncVisibly(store::CalendarStore& store, accounts::Account& account, CommandContext& context) {
  ORLOCAL_TRY(const auto secrets, userSecrets());
  ProgressLine progress(context.streams.err, context.streams.errIsTerminal, tr("Syncing {}", printable(account.name)));
  accounts::SyncOptions options;
  options.stop = &Interruption::flag();
  options.progress = [&progress](const std::string& text) { progress.tell(printable(text)); };
  return syncNow(store, account, secrets, SystemClock(), options);
}

bool didSomething(const SyncReport& report) {
  for (const CountWord& row : kCounts) {
    if (report.*row.count > 0) { return true; }
  }
  return report.calendars > 0 || !report.troubles.empty();
}

std::string summaryOf(const SyncReport& report) {
  std::vector<std::string> parts;
  for (const CountWord& row : kCounts) {
    if (report.*row.count > 0) { parts.push_back(fmt::format("{} {}", report.*row.count, translated(row.words))); }
  }
  if (report.calendars > 0) {
    parts.push_back(trn("{} calendar made, changed or removed", "{} calendars made, changed or removed",
                        report.calendars, report.calendars));
  }
  return parts.empty() ? tr("nothing new") : fmt::format("{}", fmt::join(parts, ", "));
}

std::string failureText(const accounts::ServerFailure& failure) {
  const auto remedy = accounts::remedyFor(failure.trouble);
  return remedy.empty() ? failure.message : fmt::format("{} {}", failure.message, remedy);
}

nlohmann::json syncJson(const accounts::Account& account, const char* state, const SyncReport& report) {
  nlohmann::json json = {{"account", account.name}, {"state", state}, {"failure", nullptr}, {"remedy", nullptr}};
  json["calendars"] = report.calendars;
  for (const CountWord& row : kCounts) { json[row.json] = report.*row.count; }
  json["troubles"] = nlohmann::json::array();
  for (const accounts::SyncTrouble& trouble : report.troubles) {
    json["troubles"].push_back({{"calendar", trouble.calendar}, {"item", trouble.item}, {"message", trouble.message}});
  }
  if (report.failure) {
    json["failure"] = report.failure->message;
    const auto remedy = accounts::remedyFor(report.failure->trouble);
    if (!remedy.empty()) { json["remedy"] = remedy; }
  }
  return json;
}

void tellTroubles(const accounts::Account& account, const SyncReport& report, CommandContext& context) {
  for (const accounts::SyncTrouble& trouble : report.troubles) {
    std::string place = account.name;
    for (const std::string& part : {trouble.calendar, trouble.item}) {
      if (!part.empty() && part != account.name) { place += ", " + part; }
    }
    tellTrouble(context.streams.err, printable(trouble.message), printable(place));
  }
}

}  // namespace orlocal::host
