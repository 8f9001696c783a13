#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/changes/change_commands.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/changes/item_report.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/told_line.h"
#include "host/commands/describing/item_json.h"

namespace orlocal::host {
namespace {

struct RemoveWords {
  std::vector<std::string> what;
  TargetWords target;
  bool yes = false, dryRun = false;
};

/// What is to be said before: several things go, or others were invited.
std::string questionAbout(const std::vector<Target>& targets) {
  if (targets.size() > 1) { return tr("Remove these {} things?", targets.size()); }
  const store::Item& item = *targets.front().row;
  if (!item.attendees.empty()) { return tr("{} has attendees, whom nobody tells. Remove it?", quotedTitle(item)); }
  return {};
}

std::string partOf(const Target& target, const std::string& line) {
  switch (target.span) {
    case store::Span::kThis:
      return tr("one occurrence of {}", line);
    case store::Span::kFuture:
      return tr("from this occurrence on: {}", line);
    case store::Span::kAll:
      return target.row->recurrence.empty() ? line : tr("all of {}", line);
  }
  return line;
}

Status removeTarget(store::CalendarStore& store, const Target& target) {
  return target.row->kind == store::ItemKind::kEvent ? store.removeEvent(*target.row, target.occurrence, target.span)
                                                     : store.removeReminder(*target.row);
}

Result<ExitStatus> removeItems(const RemoveWords& words, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun));
  std::vector<Target> targets;
  std::vector<std::string> lines, titles;
  for (const std::string& what : words.what) {
    TargetWords one = words.target;
    one.what = what;
    ORLOCAL_TRY(auto target, chooseTarget(run, one, translatable("Remove all of it?")));
    if (!target) { return ExitStatus::kUsage; }
    const auto shown = target->occurrence ? target->occurrence : target->chosen.occurrence;
    titles.push_back(quotedTitle(*target->row));
    lines.push_back(partOf(*target, itemLine(*target->row, target->chosen.calendar, run.viewer(), shown)));
    targets.push_back(*std::move(target));
  }
  if (const std::string question = questionAbout(targets); !question.empty()) {
    ORLOCAL_TRY(const auto wanted, run.agreed(question, words.yes));
    if (!wanted) { return ExitStatus::kUsage; }
    if (!*wanted) { return ExitStatus::kFailed; }
  }
  run.beginCommand(fmt::format("remove {}", fmt::join(titles, ", ")));
  ORLOCAL_TRY(const auto names, CalendarNames::of(run.store()));
  nlohmann::json json = nlohmann::json::array();
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const Target& target = targets[i];
    ORLOCAL_CHECK(about(*target.row, removeTarget(run.store(), target)));
    json.push_back(itemJson(*target.row, target.occurrence, names, run.viewer()));
    if (!context.options.json) {
      tellLine(context.streams, run.dryRun() ? tr("Would remove {}", lines[i]) : tr("Removed {}", lines[i]));
    }
  }
  if (context.options.json) { printJson(json, context.streams.out); }
  return ExitStatus::kDone;
}

}  // namespace

void registerRemoveCommand(CommandLine& line) {
  const auto words = std::make_shared<RemoveWords>();
  CLI::App& command = line.add("remove",
                               "Remove events and reminders, or a part of a series. `orlocal undo` brings back what\n"
                               "was removed.",
                               [words](CommandContext& context) { return removeItems(*words, context); });
  command.footer("  orlocal remove Lunch\n  orlocal remove Review --occurrence 2026-11-06 --this");
  command
      .add_option("what", words->what, "A title, words of it, or an identifier or the end of it; several may be named")
      ->type_name("WHAT")
      ->required();
  addTargetOptions(command, words->target);
  command.add_flag("--yes", words->yes, "Without a question");
  command.add_flag("--dry-run", words->dryRun, "Say what would be removed, and remove nothing");
}

}  // namespace orlocal::host
