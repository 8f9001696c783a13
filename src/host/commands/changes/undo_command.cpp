#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/changes/change_commands.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

struct UndoWords {
  std::optional<std::int64_t> number;
  bool list = false, dryRun = false;
};

nlohmann::json commandJson(const store::JournalEntry& entry, const store::Zone& viewer) {
  const auto number = [](const std::optional<std::int64_t>& value) {
    return value ? nlohmann::json(*value) : nlohmann::json(nullptr);
  };
  return {{"number", entry.number},
          {"command", entry.command.words},
          {"made", isoMoment(entry.made, viewer)},
          {"undoes", number(entry.undoes)},
          {"undoneBy", number(entry.undoneBy)}};
}

Result<ExitStatus> listCommands(ChangeRun& run) {
  ORLOCAL_TRY(const auto commands, run.store().commandsOf(ChangeRun::person()));
  std::ostream& out = run.context().streams.out;
  if (run.context().options.json) {
    nlohmann::json json = nlohmann::json::array();
    for (const store::JournalEntry& entry : commands) { json.push_back(commandJson(entry, run.viewer())); }
    printJson(json, out);
    return ExitStatus::kDone;
  }
  if (commands.empty()) { out << tr("There is nothing to undo.\n"); }
  for (const store::JournalEntry& entry : commands) {
    const store::LocalTime made = run.viewer().toLocal(entry.made);
    out << fmt::format("{:>5}  {} {}  {}{}\n", entry.number, shortDay(store::LocalDay(made)), clockTime(made),
                       printable(entry.command.words), entry.undoneBy ? tr("  (undone)") : "");
  }
  return ExitStatus::kDone;
}

Result<ExitStatus> undo(const UndoWords& words, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun));
  if (words.list) { return listCommands(run); }
  ORLOCAL_TRY(const store::JournalEntry entry, run.store().undo(ChangeRun::person(), words.number));
  if (context.options.json) {
    printJson(commandJson(entry, run.viewer()), context.streams.out);
  } else {
    context.streams.out << (run.dryRun() ? tr("Would undo {}\n", printable(entry.command.words))
                                         : tr("Undone: {}\n", printable(entry.command.words)));
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerUndoCommand(CommandLine& line) {
  const auto words = std::make_shared<UndoWords>();
  CLI::App& command = line.add("undo",
                               "Take your last command back, or the one of a number, as long as nothing else changed\n"
                               "its items since. Undoing an undo, by its number, does the command again.",
                               [words](CommandContext& context) { return undo(*words, context); });
  command.footer("  orlocal undo\n  orlocal undo --list");
  command.add_option("number", words->number, "The command's number in --list")->type_name("N");
  command.add_flag("--list", words->list, "Show your commands that are kept: the last hundred of thirty days");
  command.add_flag("--dry-run", words->dryRun, "Say what would be undone, and change nothing");
}

}  // namespace orlocal::host
