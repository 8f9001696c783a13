#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

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

struct CompletionWords {
  std::vector<std::string> what, lists;
  bool dryRun = false;
};

Result<ExitStatus> complete(const CompletionWords& words, bool done, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun));
  std::vector<ChosenItem> chosen;
  for (const std::string& what : words.what) {
    const ItemWords item{
        .what = what, .calendars = words.lists, .kind = store::ItemKind::kReminder, .completed = !done};
    ORLOCAL_TRY(auto one, chooseItem(run.store(), run.viewer(), item));
    chosen.push_back(std::move(one));
  }
  run.beginCommand(fmt::format("{} {}{}", done ? "done" : "reopen", quotedTitle(*chosen.front().item),
                               chosen.size() > 1 ? fmt::format(" and {} more", chosen.size() - 1) : ""));
  ORLOCAL_TRY(const auto names, CalendarNames::of(run.store()));
  nlohmann::json json = nlohmann::json::array();
  for (const ChosenItem& one : chosen) {
    store::ItemEdit edit{one.item, *one.item, {store::ItemField::kCompleted}, std::nullopt};
    edit.values.completed = done ? std::optional(store::now()) : std::nullopt;
    ORLOCAL_TRY(const store::Item written, about(*one.item, run.store().saveReminder(edit)));
    json.push_back(itemJson(written, std::nullopt, names, run.viewer()));
    if (context.options.json) { continue; }
    // One that repeats is open again, at its next date.
    const bool goesOn = done && !written.completed;
    const std::string what = run.dryRun() ? (done ? tr("Would be done") : tr("Would be open again"))
                             : done       ? tr("Done")
                                          : tr("Open again");
    tellLine(context.streams,
             what + (goesOn ? tr(", and due next: ") : ": ") + itemLine(written, one.calendar, run.viewer()));
  }
  if (context.options.json) { printJson(json, context.streams.out); }
  return ExitStatus::kDone;
}

void add(CommandLine& line, const char* name, const char* description, const char* example, bool done) {
  const auto words = std::make_shared<CompletionWords>();
  CLI::App& command =
      line.add(name, description, [words, done](CommandContext& context) { return complete(*words, done, context); });
  command.footer(example);
  command
      .add_option("what", words->what, "A title, words of it, or an identifier or the end of it; several may be named")
      ->type_name("WHAT")
      ->required();
  command.add_option("--in", words->lists, "Only in this reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  command.add_flag("--dry-run", words->dryRun, "Say what would be, and change nothing");
}

}  // namespace

void registerReminderCommands(CommandLine& line) {
  add(line, "done", translatable("Complete reminders; one that repeats goes on to its next date."),
      "  orlocal done \"Pay rent\"", true);
  add(line, "reopen", translatable("Open completed reminders again."), "  orlocal reopen \"Pay rent\"", false);
}

}  // namespace orlocal::host
