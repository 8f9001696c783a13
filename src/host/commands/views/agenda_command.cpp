#include <algorithm>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
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
  std::vector<std::string> calendars;
};

void printBlock(const std::string& heading, const std::vector<AgendaLine>& lines, const Ink& ink, bool first,
                std::ostream& out) {
  std::vector<std::string> titles;
  std::size_t titleWidth = 0;
  std::size_t calendarWidth = 0;
  for (const AgendaLine& line : lines) {
    titles.push_back(line.cancelled && !ink.on() ? line.title + tr(" (cancelled)") : line.title);
    titleWidth = std::max(titleWidth, std::min(displayWidth(titles.back()), kWidestTitle));
    calendarWidth = std::max(calendarWidth, displayWidth(line.calendar));
  }
  out << (first ? "" : "\n") << ink.bold(heading) << '\n';
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const AgendaLine& line = lines[i];
    out << "  " << padded(line.time, kTimeWidth);
    if (ink.on()) { out << ink.colored(line.color, "● "); }
    const std::string blanks = padded(titles[i], titleWidth).substr(titles[i].size());
    out << (line.cancelled ? ink.struck(titles[i]) : titles[i]) << blanks << "  ";
    if (line.place.empty()) {
      out << ink.dim(line.calendar) << '\n';
    } else {
      out << ink.dim(padded(line.calendar, calendarWidth)) << "  " << line.place << '\n';
    }
  }
}

void print(const Agenda& agenda, store::LocalDay today, const Ink& ink, std::ostream& out) {
  bool first = true;
  const auto add = [&](const std::string& heading, const std::vector<AgendaLine>& lines) {
    if (lines.empty()) { return; }
    printBlock(heading, lines, ink, first, out);
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
  } else {
    if (!words.zone.empty()) { context.streams.out << tr("Times in {}\n\n", viewer.name()); }
    print(agenda, today, Ink(context.streams.colors), context.streams.out);
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
  CLI::Option* days =
      command.add_option("days", words->days, "This day, weekday or month: 2026-11-02, tomorrow, monday, 2026-11");
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
  command.add_option("--zone", words->zone, "On the clock of this zone: America/New_York")
      ->type_name("ZONE")
      ->check(objectionToZone);
  command.add_option("--calendar", words->calendars, "Only this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
}

}  // namespace orlocal::host
