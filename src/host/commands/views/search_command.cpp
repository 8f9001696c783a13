#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/choosing/common_options.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/format_option.h"
#include "host/commands/describing/item_json.h"
#include "host/commands/views/item_lines.h"
#include "host/commands/views/next_occurrences.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/words/day_range.h"
#include "store/model/search_words.h"

namespace orlocal::host {
namespace {

using store::SearchField;

constexpr std::size_t kNarrowestTitle = 20;

struct SearchInput {
  std::vector<std::string> text;
  CalendarChoice calendars;
  std::string from, to;
  bool events = false, reminders = false, rebuild = false;
  FormatOption format{RowKind::kFound};
};

/// By `SearchField`; to programs they are the English ones.
constexpr const char* kFieldNames[] = {translatable("title"), translatable("place"), translatable("people"), "url",
                                       translatable("notes")};

struct Found {
  store::SearchHit hit;
  std::shared_ptr<const store::Item> item;
  std::optional<store::Occurrence> when;  ///< of an event: the next one, else the only or last known
};

/// The text of a field around what was found, bold on a terminal.
std::string excerpt(std::string_view text, const store::SearchTerms& terms, std::size_t width, const Ink& ink) {
  const auto place = terms.placeIn(text);
  if (!place) { return shortened(text, width); }
  const std::string match = shortened(text.substr(place->begin, place->end - place->begin), width);
  // Two parts before the match to three behind it.
  std::size_t begin = place->begin;
  const std::size_t before = (width - std::min(width, displayWidth(match))) * 2 / 5;
  while (begin > 0 && displayWidth(text.substr(begin, place->begin - begin)) < before) { --begin; }
  while (begin < place->begin && (static_cast<unsigned char>(text[begin]) & 0xC0U) == 0x80U) { ++begin; }
  const std::string lead = (begin > 0 ? "…" : "") + printable(text.substr(begin, place->begin - begin));
  const std::size_t taken = displayWidth(lead) + displayWidth(match);
  const std::string rest = taken < width ? shortened(text.substr(place->end), width - taken) : "";
  return lead + ink.bold(match) + rest;
}

void printFound(const std::vector<Found>& all, const CalendarNames& names, const store::SearchTerms& terms,
                const store::Zone& viewer, Streams& streams) {
  const Ink ink(streams.colors);
  const std::size_t width = terminalWidth(streams.outIsTerminal);
  for (const Found& found : all) {
    const store::Item& item = *found.item;
    const store::Calendar* calendar = names.calendar(item.calendar);
    std::string when = tr("no date");
    if (found.when) {
      when = spanWords(found.when->start, found.when->end, item.allDay(), viewer);
    } else if (item.anchor()) {
      when = item.due ? tr("due {}", timeWords(*item.due, viewer)) : timeWords(*item.anchor(), viewer);
    }
    const std::string rest = marksOf(item) + "  " + when + "  ";
    const std::string in = calendar != nullptr ? printable(names.name(*calendar)) : "";
    const std::size_t taken = displayWidth(rest) + displayWidth(in);
    const std::size_t room = std::max(kNarrowestTitle, width - std::min(width, taken));
    streams.out << ink.bold(shortened(shownTitle(item, Ink(false)), room)) << rest << ink.dim(in) << '\n';
    for (const SearchField field : found.hit.fields) {
      if (field == SearchField::kTitle) { continue; }
      for (const std::string_view text : textsOf(item, field)) {
        if (!terms.placeIn(text)) { continue; }
        const std::string name = fmt::format("    {}: ", translated(kFieldNames[static_cast<std::size_t>(field)]));
        streams.out << ink.dim(name) << excerpt(text, terms, width - displayWidth(name), ink) << '\n';
        break;
      }
    }
  }
}

Result<ExitStatus> runSearch(const SearchInput& input, CommandContext& context) {
  if (input.text.empty() && !input.rebuild) {
    context.streams.err << tr("orlocal: write what to search for: orlocal search dentist\n");
    return ExitStatus::kUsage;
  }
  const store::Zone viewer = store::Zone::ofUser();
  const store::LocalDay today(viewer.toLocal(store::now()));
  ORLOCAL_TRY(const auto store, openUserStore());
  if (input.rebuild) {
    ORLOCAL_CHECK(store->rebuildSearch());
    context.streams.err << tr("orlocal: the index of words was made anew\n");
    if (input.text.empty()) { return ExitStatus::kDone; }
  }
  store::SearchQuery query;
  for (const std::string& word : input.text) { query.text += (query.text.empty() ? "" : " ") + word; }
  ORLOCAL_TRY(const auto calendars, calendarsChosen(*store, input.calendars));
  for (const store::Calendar& calendar : calendars) { query.calendars.push_back(calendar.id); }
  if (input.events != input.reminders) {
    query.kind = input.events ? store::ItemKind::kEvent : store::ItemKind::kReminder;
  }
  if (const auto from = daysFromWords(input.from, today)) {
    query.from = viewer.toMoment(store::LocalTime(from->first));
  }
  if (const auto to = daysFromWords(input.to, today)) { query.to = viewer.toMoment(store::LocalTime(to->last + 1)); }
  ORLOCAL_TRY(const auto hits, store->search(query));
  ORLOCAL_TRY(const CalendarNames names, CalendarNames::of(*store));
  std::vector<Found> all;
  for (const store::SearchHit& hit : hits) {
    ORLOCAL_TRY(auto item, store->item(hit.item));
    if (item == nullptr) { continue; }
    ORLOCAL_TRY(auto when, nextOrLast(*store, *item, query.from.value_or(store::now())));
    all.push_back({hit, std::move(item), when});
  }
  if (context.options.json || input.format.isGiven()) {
    nlohmann::json json = {{"text", query.text}, {"timeZone", viewer.name()}, {"results", nlohmann::json::array()}};
    for (const Found& found : all) {
      auto each = itemJson(*found.item, found.when, names, viewer);
      each["foundIn"] = nlohmann::json::array();
      for (const SearchField field : found.hit.fields) {
        each["foundIn"].push_back(kFieldNames[static_cast<std::size_t>(field)]);
      }
      json["results"].push_back(std::move(each));
    }
    if (input.format.isGiven()) {
      input.format.print(json["results"], context.streams.out);
    } else {
      printJson(json, context.streams.out);
    }
  } else if (all.empty()) {
    context.streams.out << tr("Nothing is found for \"{}\".\n", printable(query.text));
  } else {
    printFound(all, names, store::SearchTerms(query.text), viewer, context.streams);
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerSearchCommand(CommandLine& line) {
  auto input = std::make_shared<SearchInput>();
  CLI::App& command = line.add(
      "search",
      "Find events and reminders by their words: titles, places, people, URLs and notes. Words are found by their\n"
      "beginnings, without case and accents; \"words in quotes\" follow upon each other.",
      [input](CommandContext& context) { return runSearch(*input, context); });
  command.footer("  orlocal search grace\n  orlocal search '\"quarterly review\"' --from today");
  command.add_option("text", input->text, "What to look for; all of the words are in what is found")
      ->type_name("WORDS");
  addCalendarOptions(command, input->calendars);
  command.add_option("--from", input->from, "Only what is on this day or later")
      ->type_name("DAY")
      ->check(objectionToDays);
  command.add_option("--to", input->to, "Only what is on this day or earlier")
      ->type_name("DAY")
      ->check(objectionToDays);
  command.add_flag("--events", input->events, "Only events");
  command.add_flag("--reminders", input->reminders, "Only reminders");
  command.add_flag("--rebuild", input->rebuild, "Make the index of words anew first");
  input->format.addTo(command);
}

}  // namespace orlocal::host
