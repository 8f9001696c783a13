#include "accounts/sync/account_sync.h"

#include <utility>
#include <vector>

#include "accounts/sync/calendar_list.h"
#include "accounts/sync/fetching.h"
#include "accounts/sync/local_changes.h"
#include "accounts/sync/sending.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"

namespace orlocal::accounts {
namespace {

/// Troubles of one calendar, beside which the others go on.
bool ofOneCalendar(Trouble trouble) {
  return trouble == Trouble::kForbidden || trouble == Trouble::kNotFound || trouble == Trouble::kNonsense ||
         trouble == Trouble::kRefused || trouble == Trouble::kUnsupported || trouble == Trouble::kTooLarge;
}

/// What one calendar could not bring stands in the report and with the calendar; the others go on.
Answer<void> passed(SyncContext& context, MirroredCalendar& calendar, Answer<void> outcome) {
  if (outcome || !ofOneCalendar(outcome.error().trouble)) { return outcome; }
  const std::string& trouble = outcome.error().message;
  context.report.troubles.push_back({calendar.remote.displayName, "", trouble});
  ORLOCAL_STORE_TRY(MirrorState state, MirrorState::ofText(calendar.mirror.state));
  if (state.trouble == trouble) { return {}; }
  state.trouble = trouble;
  calendar.mirror.state = state.text();
  ORLOCAL_STORE_TRY(const auto writer, context.startWriting());
  ORLOCAL_STORE_CHECK(writer->remotes().put(calendar.mirror));
  ORLOCAL_STORE_CHECK(writer->commit());
  return {};
}

Answer<void> run(SyncContext& context) {
  ORLOCAL_STORE_TRY(context.position, context.store.newestChange());
  ORLOCAL_STORE_CHECK(noteLocalChanges(context.store));
  ORLOCAL_TRY(auto both, CalendarList(context).run());
  std::vector<store::Mirror> mirrors;
  for (MirroredCalendar& calendar : both) {
    if (context.stopped()) { return refusal(Trouble::kInterrupted, tr("The sync was stopped.")); }
    ORLOCAL_CHECK(passed(context, calendar, Fetching(context, calendar.mirror, calendar.remote).run()));
    mirrors.push_back(calendar.mirror);
  }
  Sending sending(context, mirrors);
  auto sent = sending.run();
  // Also when the last of it failed.
  for (MirroredCalendar& calendar : both) {
    if (!sending.written().contains(calendar.mirror.id)) { continue; }
    auto back = passed(context, calendar, Fetching(context, calendar.mirror, calendar.remote).runAgain());
    if (!back) { return sent ? std::move(back) : std::move(sent); }
  }
  return sent;
}

}  // namespace

SyncReport syncAccount(store::CalendarStore& store, CalendarServer& server, const Clock& clock, store::SourceId source,
                       AccountState& state, const SyncOptions& options) {
  SyncReport report;
  SyncContext context{store, server, clock, source, state, report, options.stop, options.progress};
  if (auto outcome = run(context); !outcome) { report.failure = std::move(outcome.error()); }
  return report;
}

}  // namespace orlocal::accounts
