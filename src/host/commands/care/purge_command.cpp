#include <filesystem>
#include <map>
#include <memory>
#include <ostream>
#include <system_error>
#include <unordered_set>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/care/care_commands.h"
#include "host/commands/care/past_items.h"
#include "host/commands/care/removal.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/changes/item_report.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/output_file.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/day_words.h"
#include "store/export.h"

namespace orlocal::host {
namespace {

using store::Calendar;
using store::ItemKind;
using store::WholeItem;

struct PurgeWords {
  std::string before, archive;
  std::vector<std::string> calendars;
  bool yes = false, dryRun = false;
};

/// What is removed, and from where.
struct Purge {
  store::LocalDay before;
  std::vector<Calendar> calendars;  ///< that allow changes
  std::size_t readOnly = 0;         ///< calendars that do not
  PastItems past;
  CalendarNames names;

  std::vector<const WholeItem*> items() const {
    std::vector<const WholeItem*> all;
    for (const WholeItem& item : past.items) { all.push_back(&item); }
    return all;
  }
};

std::string countedInWords(const std::vector<const WholeItem*>& items) {
  std::size_t events = 0;
  for (const WholeItem* item : items) { events += item->main.kind == ItemKind::kEvent ? 1 : 0; }
  return host::countedInWords(events, items.size() - events);
}

Result<Purge> planPurge(ChangeRun& run, const PurgeWords& words, store::LocalDay before) {
  Purge purge;
  purge.before = before;
  ORLOCAL_TRY(const auto named, calendarsTitled(run.store(), words.calendars));
  for (const Calendar& calendar : named) {
    if (allowsChanges(calendar)) {
      purge.calendars.push_back(calendar);
    } else if (words.calendars.empty()) {
      ++purge.readOnly;
    } else {
      return failure(ErrorCode::kReadOnly, tr("\"{}\" allows no changes.", calendar.title));
    }
  }
  ORLOCAL_TRY(purge.past,
              pastItems(run.store(), run.viewer(), purge.calendars, run.viewer().toMoment(store::LocalTime(before))));
  ORLOCAL_TRY(purge.names, CalendarNames::of(run.store()));
  return purge;
}

/// Something that is there is somebody's: an archive of before, a device, a link.
Status checkArchive(const std::string& file) {
  std::error_code error;
  const auto there = std::filesystem::symlink_status(file, error);
  if (file == "-") {
    return failure(ErrorCode::kInvalid, tr("The archive is a file, as nothing tells that what was printed is kept."));
  }
  if (there.type() == std::filesystem::file_type::not_found) { return {}; }
  return failure(ErrorCode::kRefused, tr("\"{}\" is there already; name a new file for the archive.", file));
}

/// All of it is on the disk, or nothing is removed.
Status writeArchive(store::CalendarStore& store, const Purge& purge, const std::string& file) {
  store::ExportOptions options;
  options.items.emplace();
  options.emptyOnes = false;
  for (const WholeItem& item : purge.past.items) { options.items->insert(item.main.id); }
  ORLOCAL_TRY(const auto output, OutputFile::open(file));
  ORLOCAL_TRY(const store::ExportReport report,
              store::exportCalendars(
                  store, purge.calendars, [&](std::string_view text) { return output->write(text); }, options));
  if (!report.notes.empty()) {
    return failure(ErrorCode::kRefused,
                   tr("Nothing was removed, as the archive would not be whole: {}.", report.notes.front()));
  }
  if (report.items != purge.past.items.size()) {
    return failure(ErrorCode::kRefused, tr("Nothing was removed, as others changed what was to be; try again."));
  }
  return output->finish();
}

std::string questionAbout(const Purge& purge, const PurgeWords& words) {
  std::string question = trn("Remove {} that was over before {}?", "Remove {} that were over before {}?",
                             purge.past.items.size(), countedInWords(purge.items()), shortDay(purge.before));
  question += serversInWords(purge.items(), purge.names);
  if (words.archive.empty()) { question += tr(" Without --archive FILE only orlocal undo brings them back."); }
  return question;
}

nlohmann::json purgeJson(const Purge& purge, const PurgeWords& words, const std::vector<const WholeItem*>& gone,
                         const store::Zone& viewer) {
  nlohmann::json items = nlohmann::json::array();
  for (const WholeItem* item : gone) { items.push_back(itemJson(item->main, std::nullopt, purge.names, viewer)); }
  return {{"before", isoDay(purge.before)},
          {"dryRun", words.dryRun},
          {"archive", words.archive.empty() || words.dryRun ? nlohmann::json(nullptr) : nlohmann::json(words.archive)},
          {"removed", std::move(items)},
          {"changedMeanwhile", purge.past.items.size() - gone.size()},
          {"seriesThatGoOn", purge.past.goingOn},
          {"readOnlyCalendars", purge.readOnly}};
}

void tellPurge(const Purge& purge, const PurgeWords& words, const std::vector<const WholeItem*>& gone,
               const store::Zone& viewer, std::ostream& out) {
  std::map<store::CalendarId, std::vector<const WholeItem*>> byCalendar;
  for (const WholeItem* item : gone) { byCalendar[item->main.calendar].push_back(item); }
  const std::string counted = countedInWords(gone);
  if (!words.archive.empty()) {
    const std::string archive = printable(words.archive);
    out << (words.dryRun ? tr("Would write {} to {}\n", counted, archive) : tr("Wrote {} to {}\n", counted, archive));
  }
  const std::string day = shortDay(purge.before);
  out << (words.dryRun ? trn("Would remove {} that was over before {}\n", "Would remove {} that were over before {}\n",
                             gone.size(), counted, day)
                       : trn("Removed {} that was over before {}\n", "Removed {} that were over before {}\n",
                             gone.size(), counted, day));
  for (const Calendar& calendar : purge.calendars) {
    const auto& here = byCalendar[calendar.id];
    if (here.empty()) { continue; }
    out << fmt::format("  {}: {}\n", printable(purge.names.name(calendar)), countedInWords(here));
    if (!words.dryRun) { continue; }
    for (const WholeItem* item : here) { out << "    " << itemLine(item->main, calendar, viewer) << '\n'; }
  }
}

/// What stays and why, as far as somebody might have thought otherwise.
void tellWhatStays(const Purge& purge, std::size_t changed, std::ostream& out) {
  if (changed > 0) {
    out << trn("{} was changed meanwhile and stays\n", "{} were changed meanwhile and stay\n", changed, changed);
  }
  if (const std::size_t count = purge.past.goingOn; count > 0) {
    out << trn("{} series that began before goes on and stays whole\n",
               "{} series that began before go on and stay whole\n", count, count);
  }
  if (const std::size_t count = purge.readOnly; count > 0) {
    out << trn("{} calendar allows no changes and was left alone\n",
               "{} calendars allow no changes and were left alone\n", count, count);
  }
}

Result<ExitStatus> purgeItems(const PurgeWords& words, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun));
  const auto day = readDay(words.before, run.setting());
  if (!day) { return tellMisread(context, day.error(), words.before); }
  if (*day > run.setting().today()) {
    return tellUsage(context, tr("{} is still to come; purge removes what is over.", shortDay(*day)));
  }
  if (!words.archive.empty()) { ORLOCAL_CHECK(checkArchive(words.archive)); }
  ORLOCAL_TRY(const Purge purge, planPurge(run, words, *day));
  std::ostream& out = context.streams.out;
  std::vector<const WholeItem*> gone;
  if (!purge.past.items.empty()) {
    const std::string question = questionAbout(purge, words);
    ORLOCAL_TRY(const auto wanted, run.agreed(question, words.yes));
    if (!wanted) { return ExitStatus::kUsage; }
    if (!*wanted) { return ExitStatus::kFailed; }
    if (!words.archive.empty() && !run.dryRun()) { ORLOCAL_CHECK(writeArchive(run.store(), purge, words.archive)); }
    run.beginCommand("purge --before " + isoDay(*day));
    const auto items = purge.items();
    ORLOCAL_TRY(const auto removed, removeUnchanged(run.store(), items));
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (removed[i]) { gone.push_back(items[i]); }
    }
  }
  if (context.options.json) {
    printJson(purgeJson(purge, words, gone, run.viewer()), out);
    return ExitStatus::kDone;
  }
  if (purge.past.items.empty()) {
    out << tr("Nothing was over before {}.\n", shortDay(*day));
  } else {
    tellPurge(purge, words, gone, run.viewer(), out);
  }
  tellWhatStays(purge, purge.past.items.size() - gone.size(), out);
  return ExitStatus::kDone;
}

}  // namespace

void registerPurgeCommand(CommandLine& line) {
  const auto words = std::make_shared<PurgeWords>();
  CLI::App& command = line.add("purge",
                               "Remove events that ended, and reminders that were completed, before a day. Open\n"
                               "reminders stay, and so do series that go on. `orlocal undo` brings back what went.",
                               [words](CommandContext& context) { return purgeItems(*words, context); });
  command.add_option("--before", words->before, "The first day that stays: 2026-01-01, -365")
      ->type_name("DAY")
      ->required();
  command.add_option("--calendar", words->calendars, "Only of this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  command.add_option("--archive", words->archive, "Write what goes to this new file first")->type_name("FILE");
  command.add_flag("--yes", words->yes, "Without a question");
  command.add_flag("--dry-run", words->dryRun, "Say what would be removed, and remove nothing");
  command.footer("  orlocal purge --before 2026-01-01 --dry-run\n  orlocal purge --before -365 --archive old.ics");
}

}  // namespace orlocal::host
