#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <unordered_set>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/choosing/common_options.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/output_file.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/reports/report.h"
#include "host/commands/reports/report_commands.h"
#include "host/commands/words/date_locale.h"
#include "host/commands/words/day_range.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/zone_words.h"
#include "store/export.h"

namespace orlocal::host {
namespace {

struct ReportWords {
  std::string days, from, to, zone, html, csv, ics;
  CalendarChoice calendars;
};

/// This month where no days are named.
DayRange daysOf(const ReportWords& words, store::LocalDay today) {
  const store::LocalDay first(today.year(), today.month(), 1);
  DayRange days{first, store::LocalDay(cctz::civil_month(first) + 1) - 1};
  if (const auto named = daysFromWords(words.days, today)) { days = *named; }
  if (const auto from = daysFromWords(words.from, today)) {
    days.first = from->first;
    days.last = std::max(days.last, from->last);
  }
  if (const auto to = daysFromWords(words.to, today)) { days.last = to->last; }
  return days;
}

Result<Report> readReport(store::CalendarStore& store, const Agenda& agenda, const DayRange& days) {
  Report report{days.first, days.last, agenda.viewer, store::now(), firstWeekday(), {}};
  for (GridEntry& shown : gridEntries(agenda)) {
    ORLOCAL_TRY(const ItemFacts facts, factsOf(store, *shown.item, shown.when, 0));
    const store::Calendar* calendar = agenda.names.calendar(shown.item->calendar);
    std::string name = calendar != nullptr ? agenda.names.name(*calendar) : "";
    std::vector<CardLine> card = cardOf(facts, agenda.names, agenda.viewer);
    // They mean something to programs only.
    std::erase_if(card, [](const CardLine& line) { return line.label == "Identifier" || line.label == "UID"; });
    report.entries.push_back({std::move(shown), std::move(name), std::move(card)});
  }
  return report;
}

/// The series and single items of the report, whole.
Status writeCalendars(store::CalendarStore& store, const Report& report, const ReportWords& words,
                      CommandContext& context) {
  ORLOCAL_TRY(const auto calendars, calendarsChosen(store, words.calendars));
  store::ExportOptions options;
  options.items.emplace();
  for (const auto& entry : report.entries) {
    options.items->insert(entry.shown.item->series.value_or(entry.shown.item->id));
  }
  options.emptyOnes = false;
  std::string text;
  ORLOCAL_TRY(const store::ExportReport done, store::exportCalendars(
                                                  store, calendars,
                                                  [&](std::string_view piece) -> Status {
                                                    text += piece;
                                                    return {};
                                                  },
                                                  options));
  for (const std::string& note : done.notes) { context.streams.err << "orlocal: " << printable(note) << '\n'; }
  return writeOutput(words.ics, text, context.streams.out);
}

Result<ExitStatus> runReport(const ReportWords& words, CommandContext& context) {
  if (words.html.empty() && words.csv.empty() && words.ics.empty()) {
    context.streams.err << tr("orlocal: What shall be written? --html FILE, --csv FILE or --ics FILE.\n");
    return ExitStatus::kUsage;
  }
  const store::Zone viewer = zoneAskedFor(words.zone);
  const DayRange days = daysOf(words, store::LocalDay(viewer.toLocal(store::now())));
  if (days.last < days.first) {
    context.streams.err << tr("orlocal: the last day {} lies before the first day {}\n", isoDay(days.last),
                              isoDay(days.first));
    return ExitStatus::kUsage;
  }
  ORLOCAL_TRY(const auto store, openUserStore(viewer));
  ORLOCAL_TRY(const Agenda agenda, readAgenda(*store, viewer, days.first, days.last, words.calendars));
  ORLOCAL_TRY(const Report report, readReport(*store, agenda, days));
  if (!words.html.empty()) { ORLOCAL_CHECK(writeOutput(words.html, reportPage(report), context.streams.out)); }
  if (!words.csv.empty()) { ORLOCAL_CHECK(writeOutput(words.csv, reportTable(report), context.streams.out)); }
  if (!words.ics.empty()) { ORLOCAL_CHECK(writeCalendars(*store, report, words, context)); }
  return ExitStatus::kDone;
}

}  // namespace

void registerReportCommand(CommandLine& line) {
  const auto words = std::make_shared<ReportWords>();
  CLI::App& command =
      line.add("report",
               "Write what is planned for others to look at: a page, a table or a calendar file of the\n"
               "same days and calendars.",
               [words](CommandContext& context) { return runReport(*words, context); });
  command.footer(
      "  orlocal report november --html november.html\n  orlocal report --from today --to +30 --csv plan.csv");
  CLI::Option* days =
      command.add_option("days", words->days, "The month or day: november, 2026-11 (default: this month)");
  days->type_name("DAYS")->check(objectionToDays);
  command.add_option("--from", words->from, "First day")->type_name("DAY")->check(objectionToDays)->excludes(days);
  command.add_option("--to", words->to, "Last day, included")->type_name("DAY")->check(objectionToDays)->excludes(days);
  command.add_option("--html", words->html, "A page by itself, for browsers and paper; - is the standard output")
      ->type_name("FILE");
  command.add_option("--csv", words->csv, "A table for spreadsheets; - is the standard output")->type_name("FILE");
  command.add_option("--ics", words->ics, "A calendar file; series come whole; - is the standard output")
      ->type_name("FILE");
  addZoneOption(command, words->zone);
  addCalendarOptions(command, words->calendars);
}

}  // namespace orlocal::host
