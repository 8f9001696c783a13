#include <algorithm>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/care/care_commands.h"
#include "host/commands/care/removal.h"
#include "host/commands/care/same_items.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/changes/item_report.h"
#include "host/commands/choosing/item_choice.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

using store::WholeItem;

struct DuplicateWords {
  std::vector<std::string> calendars;
  bool remove = false, yes = false, dryRun = false;
};

const char* nameOf(Sameness sameness) {
  switch (sameness) {
    case Sameness::kAlike:
      return "alike";
    case Sameness::kCopies:
      return "same-uid";
    case Sameness::kDiffering:
      return "same-uid-differing";
  }
  return "alike";
}

std::string inWords(const SameItems& same) {
  const std::size_t count = same.members.size();
  switch (same.sameness) {
    case Sameness::kAlike:
      return tr("{} alike", count);
    case Sameness::kCopies:
      return tr("one item (UID) in {} calendars", count);
    case Sameness::kDiffering:
      return tr("one item (UID) in {} calendars, which differs there", count);
  }
  return {};
}

/// What a member has that people see, for who wonders which one is kept: "2 attendees, 1 alarm, notes".
std::string possessions(const store::Item& item) {
  std::string text;
  if (const std::size_t count = item.attendees.size(); count > 0) {
    text += trn(", {} attendee", ", {} attendees", count, count);
  }
  if (const std::size_t count = item.alarms.size(); count > 0) {
    text += trn(", {} alarm", ", {} alarms", count, count);
  }
  if (item.notes && !item.notes->empty()) { text += tr(", notes"); }
  return text;
}

/// Why a member stays that is not the first.
std::string reasonToStay(const SameItems& same, const SameItems::Member& member) {
  if (same.sameness == Sameness::kDiffering) { return ""; }
  return allowsChanges(member.calendar) ? tr("; it says something of its own") : tr("; its calendar allows no changes");
}

/// The item's line with what all of the group have, and nothing of where each is.
std::string commonLine(const SameItems::Member& member, const store::Zone& viewer) {
  store::Item item = member.item.main;
  item.itemIdentifier.clear();
  item.alarms.clear();
  std::string line = itemLine(item, member.calendar, viewer);
  line.resize(line.size() - (", " + tr("in {}", printable(member.calendar.title))).size());
  return line;
}

void printGroup(const SameItems& same, const CalendarNames& names, const store::Zone& viewer, std::size_t width,
                std::ostream& out) {
  constexpr std::size_t kHanging = 2, kVerdictWidth = 11;
  const std::string head = commonLine(same.members.front(), viewer) + " — " + inWords(same);
  out << foldedParagraph(head, width, kHanging).substr(kHanging);
  for (const SameItems::Member& member : same.members) {
    const bool isFirst = &member == &same.members.front();
    out << tr("  {}  {} in {}{}{}\n", padded(member.superfluous ? tr("superfluous") : tr("stays"), kVerdictWidth),
              shortIdentifier(member.item.main), printable(names.name(member.calendar)), possessions(member.item.main),
              member.superfluous || isFirst ? "" : reasonToStay(same, member));
  }
}

nlohmann::json groupsJson(const std::vector<SameItems>& groups, const std::vector<const WholeItem*>& removed,
                          const CalendarNames& names, const store::Zone& viewer) {
  nlohmann::json json = nlohmann::json::array();
  for (const SameItems& same : groups) {
    nlohmann::json members = nlohmann::json::array();
    for (const SameItems::Member& member : same.members) {
      const bool gone = std::find(removed.begin(), removed.end(), &member.item) != removed.end();
      members.push_back({{"item", itemJson(member.item.main, std::nullopt, names, viewer)},
                         {"superfluous", member.superfluous},
                         {"removed", gone}});
    }
    json.push_back({{"sameness", nameOf(same.sameness)}, {"members", std::move(members)}});
  }
  return json;
}

Result<ExitStatus> findDuplicates(const DuplicateWords& words, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun || !words.remove));
  ORLOCAL_TRY(const auto calendars, calendarsTitled(run.store(), words.calendars));
  ORLOCAL_TRY(const auto groups, sameItems(run.store(), run.viewer(), calendars));
  ORLOCAL_TRY(const auto names, CalendarNames::of(run.store()));
  std::vector<const WholeItem*> superfluous;
  for (const SameItems& same : groups) {
    for (const auto& member : same.members) {
      if (member.superfluous) { superfluous.push_back(&member.item); }
    }
  }
  std::ostream& out = context.streams.out;
  if (!context.options.json) {
    if (groups.empty()) { out << tr("Nothing is there more than once.\n"); }
    for (const SameItems& same : groups) {
      printGroup(same, names, run.viewer(), terminalWidth(context.streams.outIsTerminal), out);
    }
    out.flush();
  }
  std::vector<const WholeItem*> gone;
  if (words.remove && !superfluous.empty()) {
    const std::string question = trn("Remove the one that is superfluous?", "Remove the {} that are superfluous?",
                                     superfluous.size(), superfluous.size()) +
                                 serversInWords(superfluous, names);
    ORLOCAL_TRY(const auto wanted, run.agreed(question, words.yes));
    if (!wanted) { return ExitStatus::kUsage; }
    if (!*wanted) { return ExitStatus::kFailed; }
    run.beginCommand("duplicates --remove");
    ORLOCAL_TRY(const auto removed, removeUnchanged(run.store(), superfluous));
    for (std::size_t i = 0; i < superfluous.size(); ++i) {
      if (removed[i]) { gone.push_back(superfluous[i]); }
    }
  }
  if (context.options.json) {
    printJson(groupsJson(groups, words.dryRun ? std::vector<const WholeItem*>() : gone, names, run.viewer()), out);
    return ExitStatus::kDone;
  }
  if (!superfluous.empty() && !words.remove) {
    out << trn("{} is superfluous; orlocal duplicates --remove takes it away.\n",
               "{} are superfluous; orlocal duplicates --remove takes them away.\n", superfluous.size(),
               superfluous.size());
  }
  if (words.remove && !groups.empty()) {
    out << (run.dryRun() ? tr("Would remove {}\n", gone.size()) : tr("Removed {}\n", gone.size()));
    const std::size_t changed = superfluous.size() - gone.size();
    if (changed > 0) {
      out << trn("{} was changed meanwhile and stays\n", "{} were changed meanwhile and stay\n", changed, changed);
    }
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerDuplicatesCommand(CommandLine& line) {
  const auto words = std::make_shared<DuplicateWords>();
  CLI::App& command = line.add("duplicates",
                               "Show events and reminders that are there more than once, and which of them another\n"
                               "one makes superfluous. Nothing is removed without --remove.",
                               [words](CommandContext& context) { return findDuplicates(*words, context); });
  command.add_option("--calendar", words->calendars, "Only in this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  CLI::Option* remove = command.add_flag("--remove", words->remove, "Remove what is superfluous; undo brings it back");
  command.add_flag("--yes", words->yes, "Without a question")->needs(remove);
  command.add_flag("--dry-run", words->dryRun, "Say what would be removed, and remove nothing")->needs(remove);
  command.footer("  orlocal duplicates\n  orlocal duplicates --calendar Work --remove");
}

}  // namespace orlocal::host
