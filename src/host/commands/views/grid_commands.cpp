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
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/views/day_grids.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/words/date_locale.h"
#include "host/commands/words/day_range.h"
#include "host/commands/words/zone_words.h"

namespace orlocal::host {
namespace {

struct GridWords {
  std::string days, zone;
  std::size_t lines = GridSetting().lines;
  CalendarChoice calendars;
};

struct GridView {
  /// The days that the grid shows.
  DayRange (*days)(store::LocalDay day, cctz::weekday firstWeekday);
  std::vector<std::string> (*draw)(store::LocalDay, const std::vector<GridEntry>&, const GridSetting&);
};

DayRange daysOfMonth(store::LocalDay day, cctz::weekday firstWeekday) {
  const store::LocalDay first(day.year(), day.month(), 1), last = store::LocalDay(cctz::civil_month(first) + 1) - 1;
  return {weekStart(first, firstWeekday), weekStart(last, firstWeekday) + 6};
}

DayRange daysOfWeek(store::LocalDay day, cctz::weekday firstWeekday) {
  const store::LocalDay first = weekStart(day, firstWeekday);
  return {first, first + 6};
}

Result<ExitStatus> runGrid(const GridWords& words, const GridView& view, CommandContext& context) {
  const store::Zone viewer = zoneAskedFor(words.zone);
  Streams& streams = context.streams;
  GridSetting setting;
  setting.width = terminalWidth(streams.outIsTerminal);
  setting.lines = words.lines;
  setting.firstWeekday = firstWeekday();
  setting.today = store::LocalDay(viewer.toLocal(store::now()));
  setting.ink = Ink(streams.colors);
  const auto named = daysFromWords(words.days, setting.today);
  const store::LocalDay day = named ? named->first : setting.today;
  const DayRange shown = view.days(day, setting.firstWeekday);
  ORLOCAL_TRY(const auto store, openUserStore(viewer));
  ORLOCAL_TRY(const Agenda agenda, readAgenda(*store, viewer, shown.first, shown.last, words.calendars));
  if (context.options.json) {
    printJson(agendaJson(agenda), streams.out);
    return ExitStatus::kDone;
  }
  if (!words.zone.empty()) { streams.out << tr("Times in {}\n\n", viewer.name()); }
  for (const std::string& line : view.draw(day, gridEntries(agenda), setting)) { streams.out << line << '\n'; }
  return ExitStatus::kDone;
}

CLI::App& addGrid(CommandLine& line, const char* name, const char* description, const char* days,
                  const std::shared_ptr<GridWords>& words, const GridView& view) {
  CLI::App& command =
      line.add(name, description, [words, view](CommandContext& context) { return runGrid(*words, view, context); });
  command.add_option("days", words->days, days)->type_name("DAYS")->check(objectionToDays);
  addZoneOption(command, words->zone);
  addCalendarOptions(command, words->calendars);
  return command;
}

}  // namespace

void registerGridCommands(CommandLine& line) {
  const auto month = std::make_shared<GridWords>();
  CLI::App& ofMonth = addGrid(
      line, "month",
      translatable(
          "Show a month as a grid. Bars are whole days, ☐ is a reminder, ? tentative, × cancelled; ◂ marks today."),
      translatable("The month, or a day in it: november, 2026-11, 2027-01-31 (default: this month)"), month,
      {daysOfMonth, monthGrid});
  ofMonth.footer("  orlocal month\n  orlocal month december --calendar Work");
  ofMonth.add_option("--lines", month->lines, "So many lines for a day; what does not fit is counted")
      ->type_name("N")
      ->check(CLI::Range(1, 100))
      ->capture_default_str();
  const auto week = std::make_shared<GridWords>();
  addGrid(line, "week",
          translatable("Show a week with its hours. Bars are whole days, ☐ is a reminder, ? tentative, × cancelled."),
          translatable("A day in it: tomorrow, +7, 2026-11-02 (default: this week)"), week, {daysOfWeek, weekGrid})
      .footer("  orlocal week\n  orlocal week +7 --zone America/New_York");
}

}  // namespace orlocal::host
