#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/views/item_lines.h"
#include "host/commands/views/item_rows.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

struct ReminderWords {
  bool open = false, overdue = false, undated = false, done = false, all = false;
  std::vector<std::string> lists;
};

struct BlockWord {
  ReminderBlock block;
  const char* heading;
  const char* inJson;
};
/// In the order in which they are shown.
constexpr BlockWord kBlocks[] = {{ReminderBlock::kOverdue, translatable("Overdue"), "overdue"},
                                 {ReminderBlock::kToCome, translatable("To come"), "to come"},
                                 {ReminderBlock::kUndated, translatable("No date"), "no date"},
                                 {ReminderBlock::kDone, translatable("Done"), "done"}};

using Items = std::vector<std::shared_ptr<const store::Item>>;

bool wants(const ReminderWords& words, ReminderBlock block) {
  if (words.all) { return true; }
  switch (block) {
    case ReminderBlock::kDone:
      return words.done;
    case ReminderBlock::kOverdue:
      return words.overdue || words.open;
    case ReminderBlock::kUndated:
      return words.undated || words.open;
    case ReminderBlock::kToCome:
      break;
  }
  return words.open;
}

std::string whenWords(const store::Item& reminder, const store::Zone& viewer) {
  if (reminder.completed) { return tr("done {}", shortDay(store::LocalDay(viewer.toLocal(*reminder.completed)))); }
  return reminder.due ? timeWords(*reminder.due, viewer) : "";
}

void printBlocks(const std::vector<std::pair<BlockWord, Items>>& blocks, const CalendarNames& names,
                 const store::Zone& viewer, Streams& streams) {
  const Ink ink(streams.colors);
  bool any = false;
  for (const auto& [word, items] : blocks) {
    if (items.empty()) { continue; }
    std::vector<std::string> whens, titles;
    std::size_t whenWidth = 0, titleWidth = 0;
    for (const auto& item : items) {
      whens.push_back(whenWords(*item, viewer));
      titles.push_back((item->completed ? "☑ " : "☐ ") + shownTitle(*item, Ink(false)) + marksOf(*item));
      whenWidth = std::max(whenWidth, displayWidth(whens.back()));
      titleWidth = std::max(titleWidth, displayWidth(titles.back()));
    }
    constexpr std::size_t kWidestInBlock = 44;
    titleWidth = std::min(titleWidth, kWidestInBlock);
    streams.out << (any ? "\n" : "") << ink.bold(translated(word.heading)) << '\n';
    for (std::size_t i = 0; i < items.size(); ++i) {
      const store::Calendar* list = names.calendar(items[i]->calendar);
      // On a terminal a long title goes on under its column; programs read one line.
      const auto title =
          streams.outIsTerminal ? foldedText(titles[i], titleWidth) : std::vector<std::string>{titles[i]};
      streams.out << "  " << (whenWidth > 0 ? padded(whens[i], whenWidth + 2) : "") << padded(title.front(), titleWidth)
                  << "  " << ink.dim(list != nullptr ? printable(names.name(*list)) : "") << '\n';
      for (std::size_t row = 1; row < title.size(); ++row) {
        streams.out << padded("", whenWidth > 0 ? whenWidth + 4 : 2) << title[row] << '\n';
      }
    }
    any = true;
  }
  if (!any) { streams.out << tr("There are no such reminders.\n"); }
}

Result<ExitStatus> runReminders(ReminderWords words, CommandContext& context) {
  if (!words.overdue && !words.undated && !words.done && !words.all) { words.open = true; }
  const store::Zone viewer = store::Zone::ofUser();
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const auto lists, calendarsTitled(*store, words.lists));
  ORLOCAL_TRY(const CalendarNames names, CalendarNames::of(*store));
  store::ReminderQuery query;
  for (const store::Calendar& list : lists) {
    if (list.holds(store::ItemKind::kReminder)) { query.calendars.push_back(list.id); }
  }
  ORLOCAL_TRY(const auto ids, store->reminders(query));
  std::vector<std::pair<BlockWord, Items>> blocks;
  for (const BlockWord& word : kBlocks) { blocks.emplace_back(word, Items()); }
  const store::Moment now = store::now();
  ORLOCAL_CHECK(readRows(*store, ids, [&](std::size_t, const std::shared_ptr<const store::Item>& item) {
    const ReminderBlock block = blockOf(*item, now, viewer);
    if (!wants(words, block)) { return; }
    for (auto& [word, items] : blocks) {
      if (word.block == block) { items.push_back(item); }
    }
  }));
  if (!context.options.json) {
    printBlocks(blocks, names, viewer, context.streams);
    return ExitStatus::kDone;
  }
  nlohmann::json json = {{"timeZone", viewer.name()}, {"reminders", nlohmann::json::array()}};
  for (const auto& [word, items] : blocks) {
    for (const auto& item : items) {
      auto each = itemJson(*item, std::nullopt, names, viewer);
      each["block"] = word.inJson;
      json["reminders"].push_back(std::move(each));
    }
  }
  printJson(json, context.streams.out);
  return ExitStatus::kDone;
}

}  // namespace

void registerRemindersCommand(CommandLine& line) {
  auto words = std::make_shared<ReminderWords>();
  CLI::App& command = line.add("reminders", "List reminders: the open ones, or those asked for.",
                               [words](CommandContext& context) { return runReminders(*words, context); });
  command.footer("  orlocal reminders\n  orlocal reminders --overdue --list Chores");
  command.add_flag("--open", words->open, "What is not done (the default)");
  command.add_flag("--overdue", words->overdue, "What should have been done by now");
  command.add_flag("--undated", words->undated, "What is open and has no date");
  command.add_flag("--done", words->done, "What is done");
  command.add_flag("--all", words->all, "Everything");
  command.add_option("--list", words->lists, "Only this reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
}

}  // namespace orlocal::host
