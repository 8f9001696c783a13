#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/try.h"
#include "host/commands/choosing/item_choice.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/format_option.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/views/item_card.h"
#include "host/commands/views/item_lines.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/words/day_range.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/rule_words.h"

namespace orlocal::host {
namespace {

struct ShowWords {
  std::vector<std::string> what;
  std::vector<std::string> calendars;
  std::string day;
  std::size_t next = 3;
  FormatOption format{RowKind::kShown};
};

void printCard(const ItemFacts& facts, const std::vector<CardLine>& card, Streams& streams) {
  const Ink ink(streams.colors);
  const std::size_t width = terminalWidth(streams.outIsTerminal);
  for (const std::string& line : foldedText(shownTitle(facts.item, Ink(false)), width)) {
    streams.out << ink.bold(line) << '\n';
  }
  for (const CardLine& line : foldedCard(card, width)) { streams.out << ink.dim(line.label) << line.text << '\n'; }
}

nlohmann::json factsJson(const ItemFacts& facts, const CalendarNames& names, const store::Zone& viewer) {
  auto json = itemJson(facts.item, facts.occurrence, names, viewer);
  json["timeZone"] = viewer.name();
  json["ruleInWords"] =
      facts.item.recurrence.empty()
          ? nlohmann::json(nullptr)
          : nlohmann::json(recurrenceWords(facts.item.recurrence, firstDayOf(facts.item, viewer), viewer));
  json["next"] = nlohmann::json::array();
  for (const store::Occurrence& each : facts.next) { json["next"].push_back(isoMoment(each.start, viewer)); }
  json["changed"] = nlohmann::json::array();
  for (const store::Item& each : facts.changed) {
    json["changed"].push_back(itemJson(each, std::nullopt, names, viewer));
  }
  json["unsent"] = facts.unsent;
  json["conflicts"] = facts.conflicts;
  return json;
}

Result<ExitStatus> runShow(const ShowWords& words, CommandContext& context) {
  const store::Zone viewer = store::Zone::ofUser();
  const store::LocalDay today(viewer.toLocal(store::now()));
  ItemWords chosen;
  for (const std::string& word : words.what) { chosen.what += (chosen.what.empty() ? "" : " ") + word; }
  chosen.calendars = words.calendars;
  if (const auto days = daysFromWords(words.day, today)) { chosen.day = days->first; }
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const ChosenItem found, chooseItem(*store, viewer, chosen));
  ORLOCAL_TRY(const CalendarNames names, CalendarNames::of(*store));
  ORLOCAL_TRY(const ItemFacts facts, factsOf(*store, *found.item, found.occurrence, words.next));
  if (context.options.json) {
    printJson(factsJson(facts, names, viewer), context.streams.out);
  } else if (words.format.isGiven()) {
    words.format.print(nlohmann::json::array({factsJson(facts, names, viewer)}), context.streams.out);
  } else {
    printCard(facts, cardOf(facts, names, viewer), context.streams);
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerShowCommand(CommandLine& line) {
  auto words = std::make_shared<ShowWords>();
  CLI::App& command = line.add("show", "Show all that is known of an event or a reminder.",
                               [words](CommandContext& context) { return runShow(*words, context); });
  command.footer("  orlocal show Lunch\n  orlocal show Review --occurrence friday");
  command
      .add_option("item", words->what, "Its title or words of it, or its identifier, whole or its last eight letters")
      ->type_name("ID|TITLE")
      ->required();
  command.add_option("--occurrence", words->day, "The occurrence of this day: 2026-11-02, today, monday, +7")
      ->type_name("DAY")
      ->check(objectionToDay);
  command.add_option("--next", words->next, "So many occurrences to come")
      ->type_name("N")
      ->check(CLI::Range(0, 1000))
      ->capture_default_str();
  command.add_option("--in,--calendar", words->calendars, "Only in this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
  words->format.addTo(command);
}

}  // namespace orlocal::host
