#include <algorithm>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/choosing/common_options.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/describing/format_option.h"
#include "host/commands/views/agenda.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/words/day_range.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/zone_words.h"

namespace orlocal::host {
namespace {

constexpr int kDaysAhead = 6;
constexpr std::size_t kWidestTitle = 44;
constexpr std::size_t kTimeWidth = 13;

struct AgendaWords {
  std::string days, from, to, zone;
  int count = 0;
  CalendarChoice calendars;
  FormatOption format{RowKind::kItem};
};

/// The lines of a column; one without a width, however long it is.
std::vector<std::string> columnOf(const std::string& text, std::optional<std::size_t> width) {
  if (!width || text.empty()) { return {text}; }
  return foldedText(text, *width);
}

/// With a width long titles and places go on under their columns. Without one, where programs read, each line is whole.
void printBlock(const std::string& heading, const std::vector<AgendaLine>& lines, const Ink& ink, bool first,
                std::optional<std::size_t> width, std::ostream& out) {
  constexpr std::size_t kNarrowestTitle = 24, kNarrowestPlace = 12, kUsualPlace = 20;
  const std::size_t before = 2 + kTimeWidth + (ink.on() ? 2 : 0);
  std::vector<std::string> titles;
  std::size_t titleWidth = 0;
  std::size_t calendarWidth = 0;
  for (const AgendaLine& line : lines) {
    titles.push_back(line.cancelled && !ink.on() ? line.title + tr(" (cancelled)") : line.title);
    titleWidth = std::max(titleWidth, std::min(displayWidth(titles.back()), kWidestTitle));
    calendarWidth = std::max(calendarWidth, displayWidth(line.calendar));
  }
  const bool anyPlace = std::any_of(lines.begin(), lines.end(), [](const auto& line) { return !line.place.empty(); });
  if (width && anyPlace) {
    const std::size_t others = before + calendarWidth + 4 + kUsualPlace;
    titleWidth = std::min(titleWidth, std::max(kNarrowestTitle, *width - std::min(*width, others)));
  }
  const std::size_t placeColumn = before + titleWidth + 2 + calendarWidth + 2;
  const bool hasRoom = width && *width >= placeColumn + kNarrowestPlace;
  out << (first ? "" : "\n") << ink.bold(heading) << '\n';
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const AgendaLine& line = lines[i];
    const auto title = columnOf(titles[i], width ? std::optional(titleWidth) : std::nullopt);
    // Where there is no room beside, the place stands below.
    const bool below = width && !hasRoom && !line.place.empty() && displayWidth(line.place) + placeColumn > *width;
    const auto place = below ? std::vector<std::string>{}
                             : columnOf(line.place, hasRoom ? std::optional(*width - placeColumn) : std::nullopt);
    for (std::size_t row = 0; row < std::max(title.size(), place.size()); ++row) {
      const std::string part = row < title.size() ? title[row] : "";
      const std::string shownPlace = row < place.size() ? place[row] : "";
      out << "  " << padded(row == 0 ? line.time : "", kTimeWidth);
      if (ink.on()) { out << (row == 0 ? ink.colored(line.color, "● ") : "  "); }
      out << (line.cancelled && !part.empty() ? ink.struck(part) : part);
      const std::string calendar = row == 0 ? line.calendar : "";
      if (calendar.empty() && shownPlace.empty()) {
        out << '\n';
        continue;
      }
      out << padded(part, titleWidth).substr(part.size()) << "  ";
      if (shownPlace.empty()) {
        out << ink.dim(calendar) << '\n';
      } else {
        out << ink.dim(padded(calendar, calendarWidth)) << "  " << shownPlace << '\n';
      }
    }
    if (below) {
      for (const std::string& part : foldedText(line.place, *width - std::min(*width - 1, before))) {
        out << padded("", before) << part << '\n';
      }
    }
  }
}

void print(const Agenda& agenda, store::LocalDay today, const Ink& ink, std::optional<std::size_t> width,
           std::ostream& out) {
  bool first = true;
  const auto add = [&](const std::string& heading, const std::vector<AgendaLine>& lines) {
    if (lines.empty()) { return; }
    printBlock(heading, lines, ink, first, width, out);
    first = false;
  };
  add(tr("Overdue"), linesOf(agenda.overdue, agenda));
  for (const auto& [day, lines] : linesByDay(agenda)) {
    add(longDay(day) + (day == today ? tr(" (today)") : ""), lines);
  }
  add(tr("No date"), linesOf(agenda.undated, agenda));
  if (first) { out << tr("Nothing is planned from {} to {}.\n", isoDay(agenda.first), isoDay(agenda.last)); }
}

/// The days that were asked for: the named ones, the coming week without any.
DayRange daysAskedFor(const AgendaWords& words, store::LocalDay today) {
  const std::string& beginning = words.days.empty() ? words.from : words.days;
  const DayRange named = daysFromWords(beginning, today).value_or(DayRange{today, today});
  if (words.count > 0) { return {named.first, named.first + (words.count - 1)}; }
  if (!words.to.empty()) { return {named.first, daysFromWords(words.to, today).value_or(named).last}; }
  const bool week = words.days.empty() && named.first == named.last;
  return {named.first, week ? named.first + kDaysAhead : named.last};
}

Result<ExitStatus> runAgenda(const AgendaWords& words, CommandContext& context) {
  const store::Zone viewer = zoneAskedFor(words.zone);
  const store::LocalDay today(viewer.toLocal(store::now()));
  const auto [first, last] = daysAskedFor(words, today);
  if (last < first) {
    context.streams.err << tr("orlocal: the last day {} lies before the first day {}\n", isoDay(last), isoDay(first));
    return ExitStatus::kUsage;
  }
  ORLOCAL_TRY(const auto store, openUserStore(viewer));
  ORLOCAL_TRY(const Agenda agenda, readAgenda(*store, viewer, first, last, words.calendars));
  if (context.options.json) {
    printJson(agendaJson(agenda), context.streams.out);
  } else if (words.format.isGiven()) {
    words.format.print(agendaRows(agenda), context.streams.out);
  } else {
    if (!words.zone.empty()) { context.streams.out << tr("Times in {}\n\n", viewer.name()); }
    const bool terminal = context.streams.outIsTerminal;
    print(agenda, today, Ink(context.streams.colors), terminal ? std::optional(terminalWidth(true)) : std::nullopt,
          context.streams.out);
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerAgendaCommand(CommandLine& line) {
  auto words = std::make_shared<AgendaWords>();
  CLI::App& command =
      line.add("agenda",
               "Show what is planned, day by day: the coming week, or the days named. Behind a title, ↻ marks what\n"
               "repeats, ♪ what has an alarm, ✎ what has notes.",
               [words](CommandContext& context) { return runAgenda(*words, context); });
  command.footer(
      "  orlocal agenda\n  orlocal agenda monday\n  orlocal agenda --from tomorrow --to +14 --calendar Work");
  // Not by the name of an option, which later versions of CLI11 refuse; it is shown nowhere.
  CLI::Option* days = command.add_option("named-days", words->days,
                                         "This day, weekday or month: 2026-11-02, tomorrow, monday, 2026-11");
  days->type_name("DAYS")->check(objectionToDays);
  command.add_option("--from", words->from, "First day: 2026-11-02, today, tomorrow, +7 (default: today)")
      ->type_name("DAY")
      ->check(objectionToDays)
      ->excludes(days);
  CLI::Option* to = command.add_option("--to", words->to, "Last day, included (default: six days after the first)");
  to->type_name("DAY")->check(objectionToDays);
  command.add_option("--days", words->count, "So many days from the first")
      ->type_name("N")
      ->check(CLI::Range(1, 3660))
      ->excludes(to);
  addZoneOption(command, words->zone);
  addCalendarOptions(command, words->calendars);
  words->format.addTo(command);
}

}  // namespace orlocal::host
