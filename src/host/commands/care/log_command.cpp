#include <algorithm>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/care/care_commands.h"
#include "host/commands/changes/change_run.h"
#include "host/commands/changes/item_report.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::CommandChange;
using store::JournalEntry;

constexpr std::size_t kItemIndent = 4;
constexpr std::size_t kMostItemsTold = 3;

struct LogWords {
  std::optional<std::int64_t> number;
  std::optional<std::size_t> limit;
  std::string since;

  static constexpr std::size_t kUsualLimit = 20;
};

/// The commands that were asked for, the newest first, and what `undo` would take back.
struct CommandLog {
  std::vector<JournalEntry> entries;
  std::size_t older = 0;  ///< that the limit leaves out
  std::optional<std::int64_t> next;
};

bool isNext(const CommandLog& log, const JournalEntry& entry) { return log.next == entry.number; }

Result<CommandLog> readLog(ChangeRun& run, const LogWords& words, std::optional<store::LocalDay> since) {
  CommandLog log;
  ORLOCAL_TRY(const auto all, run.store().commandsOf(ChangeRun::person()));
  const std::size_t limit = words.limit.value_or(words.number ? all.size() : LogWords::kUsualLimit);
  const store::Moment from = since ? run.viewer().toMoment(store::LocalTime(*since)) : store::Moment::min();
  for (const JournalEntry& entry : all) {
    if (!log.next && !entry.undoneBy && !entry.undoes) { log.next = entry.number; }
    if (words.number && entry.number != *words.number) { continue; }
    if (entry.made < from) { continue; }
    if (log.entries.size() < limit) {
      log.entries.push_back(entry);
    } else {
      ++log.older;
    }
  }
  if (words.number && log.entries.empty()) {
    return failure(ErrorCode::kNotFound, tr("There is no command {} of yours; orlocal log shows those that "
                                            "there are.",
                                            *words.number));
  }
  return log;
}

const char* nameOf(CommandChange::What what) {
  switch (what) {
    case CommandChange::What::kMade:
      return "made";
    case CommandChange::What::kChanged:
      return "changed";
    case CommandChange::What::kRemoved:
      return "removed";
  }
  return "changed";
}

std::string inWords(const CommandChange& change, bool byUndo, const CalendarNames& names, const store::Zone& viewer) {
  const bool made = change.what == CommandChange::What::kMade;
  if (!change.item) { return made ? tr("what it made is gone now") : tr("a series that is gone now"); }
  const store::Calendar* calendar = names.calendar(change.item->calendar);
  store::Calendar gone;
  gone.title = tr("a calendar that is gone");
  // The journal has how things were before.
  std::string what = made ? (byUndo ? tr("brought back") : tr("made, now:")) : tr("removed");
  if (change.what == CommandChange::What::kChanged) { what = tr("changed, before:"); }
  return fmt::format("{} {}", what, itemLine(*change.item, calendar != nullptr ? *calendar : gone, viewer));
}

nlohmann::json entryJson(const JournalEntry& entry, const CommandLog& log, const std::vector<CommandChange>& changes,
                         const CalendarNames& names, const store::Zone& viewer) {
  const auto number = [](const std::optional<std::int64_t>& value) {
    return value ? nlohmann::json(*value) : nlohmann::json(nullptr);
  };
  nlohmann::json list = nlohmann::json::array();
  for (const CommandChange& change : changes) {
    list.push_back({{"what", nameOf(change.what)},
                    {"item", change.item ? itemJson(*change.item, std::nullopt, names, viewer) : nlohmann::json()}});
  }
  return {
      {"number", entry.number},         {"command", entry.command.words},     {"made", isoMoment(entry.made, viewer)},
      {"undoes", number(entry.undoes)}, {"undoneBy", number(entry.undoneBy)}, {"undoIsNext", isNext(log, entry)},
      {"changes", std::move(list)}};
}

/// `text` behind `indent` cells that are taken, folded under itself.
std::string foldedBehind(const std::string& text, std::size_t indent, std::size_t width) {
  return foldedParagraph(text, width, indent).substr(indent);
}

void printEntry(const JournalEntry& entry, const std::vector<CommandChange>& changes, bool whole,
                const CalendarNames& names, const store::Zone& viewer, const Ink& ink, std::size_t width,
                std::ostream& out) {
  const store::LocalTime made = viewer.toLocal(entry.made);
  const std::string head =
      fmt::format("{:>4}  {} {}  ", entry.number, shortDay(store::LocalDay(made)), clockTime(made));
  const std::string undone = entry.undoneBy ? tr("  (undone by {})", *entry.undoneBy) : "";
  out << head << ink.bold(foldedBehind(printable(entry.command.words) + undone, displayWidth(head), width));
  const std::size_t told = whole || changes.size() <= kMostItemsTold ? changes.size() : kMostItemsTold;
  const std::string indent(kItemIndent + 2, ' ');
  for (std::size_t i = 0; i < told; ++i) {
    out << indent << foldedBehind(inWords(changes[i], entry.undoes.has_value(), names, viewer), indent.size(), width);
  }
  if (told < changes.size()) {
    out << indent << tr("and {} more: orlocal log {}\n", changes.size() - told, entry.number);
  }
}

Result<ExitStatus> showLog(const LogWords& words, CommandContext& context) {
  // It only looks, but at what a command that changes has: the person and the words' setting.
  ORLOCAL_TRY(ChangeRun run, ChangeRun::begin(context, true));
  std::optional<store::LocalDay> since;
  if (!words.since.empty()) {
    const auto day = readDay(words.since, run.setting());
    if (!day) { return tellMisread(context, day.error(), words.since); }
    since = *day;
  }
  ORLOCAL_TRY(const CommandLog log, readLog(run, words, since));
  ORLOCAL_TRY(const auto names, CalendarNames::of(run.store()));
  std::ostream& out = context.streams.out;
  nlohmann::json json = nlohmann::json::array();
  for (const JournalEntry& entry : log.entries) {
    ORLOCAL_TRY(const auto changes, run.store().changesBy(entry.number));
    if (context.options.json) {
      json.push_back(entryJson(entry, log, changes, names, run.viewer()));
    } else {
      printEntry(entry, changes, words.number.has_value(), names, run.viewer(), Ink(context.streams.colors),
                 terminalWidth(context.streams.outIsTerminal), out);
    }
  }
  if (context.options.json) {
    printJson(json, out);
    return ExitStatus::kDone;
  }
  if (log.entries.empty()) {
    out << (since ? tr("No command of yours changed anything since then.\n")
                  : tr("No command of yours changed anything.\n"));
  }
  if (log.older > 0) { out << tr("{} older: orlocal log --limit {}\n", log.older, log.entries.size() + log.older); }
  if (log.next && !words.number) { out << tr("orlocal undo takes back {} next.\n", *log.next); }
  return ExitStatus::kDone;
}

}  // namespace

void registerLogCommand(CommandLine& line) {
  const auto words = std::make_shared<LogWords>();
  CLI::App& command = line.add("log",
                               "Show your commands that changed something, the newest first, what each did, and which\n"
                               "one `orlocal undo` takes back next. What others did: orlocal watch --since.",
                               [words](CommandContext& context) { return showLog(*words, context); });
  command.add_option("number", words->number, "Only the command of this number, with all that it did")->type_name("N");
  command.add_option("--limit", words->limit, "At most so many (default: 20)")
      ->type_name("N")
      ->check(CLI::Range(1, 1'000));
  command.add_option("--since", words->since, "Only those of this day and later ones")->type_name("DAY");
  command.footer("  orlocal log\n  orlocal log --since yesterday\n  orlocal log 12");
}

}  // namespace orlocal::host
