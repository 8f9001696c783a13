#include <memory>

#include <CLI/CLI.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/changes/change_commands.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/changes/item_report.h"
#include "host/commands/command_line/store_session.h"

namespace orlocal::host {
namespace {

struct MoveWords {
  TargetWords target;
  std::string to;
  bool dryRun = false;
};

Result<ExitStatus> moveItem(const MoveWords& words, CommandContext& context) {
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, words.dryRun));
  TargetWords whole = words.target;
  // A calendar is one of the whole series as a rule.
  whole.all = whole.occurrence.empty();
  ORLOCAL_TRY(const auto target, chooseTarget(run, whole, translatable("Move all of it?")));
  if (!target) { return ExitStatus::kUsage; }
  const store::ItemKind kind = target->row->kind;
  ORLOCAL_TRY(const store::Calendar to, theCalendar(run.store(), words.to, kind));
  store::ItemEdit edit{target->row, *target->row, {store::ItemField::kCalendar}, std::nullopt};
  edit.values.calendar = to.id;
  run.beginCommand("move " + quotedTitle(*target->row));
  ORLOCAL_TRY(const store::Item written,
              about(*target->row, kind == store::ItemKind::kEvent
                                      ? run.store().saveEvent(edit, target->occurrence, target->span)
                                      : run.store().saveReminder(edit)));
  ORLOCAL_CHECK(tellItem(run, {translatable("Moved"), translatable("Would move")}, written, to));
  return ExitStatus::kDone;
}

}  // namespace

void registerMoveCommand(CommandLine& line) {
  const auto words = std::make_shared<MoveWords>();
  CLI::App& command = line.add("move", "Move an event or a reminder to another calendar, a series as a whole.",
                               [words](CommandContext& context) { return moveItem(*words, context); });
  command.footer("  orlocal move Lunch --to Private");
  command.add_option("what", words->target.what, "Its title, words of it, or its identifier or the end of that")
      ->type_name("WHAT")
      ->required();
  command.add_option("--to", words->to, "The calendar or reminder list")->type_name("TITLE")->required();
  addTargetOptions(command, words->target);
  command.add_flag("--dry-run", words->dryRun, "Say what would be moved, and move nothing");
}

}  // namespace orlocal::host
