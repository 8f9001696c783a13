#include <algorithm>
#include <memory>
#include <ostream>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/try.h"
#include "host/commands/command_line/command.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/views/agenda.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

constexpr int kDaysAhead = 6;
constexpr std::size_t kWidestTitle = 44;
constexpr std::size_t kTimeWidth = 13;

struct AgendaWords {
  std::string from, to;
  std::vector<std::string> calendars;
};

nlohmann::json asJson(const Agenda::Event& event, const store::Zone& viewer) {
  nlohmann::json json = {{"title", jsonText(event.item->title)},
                         {"calendar", event.calendar.title},
                         {"location", jsonText(event.item->location)},
                         {"identifier", event.item->identifier},
                         {"allDay", event.item->allDay()}};
  if (event.item->allDay()) {
    const auto last = std::max(event.when.start, event.when.end - std::chrono::microseconds(1));
    json["firstDay"] = isoDay(store::LocalDay(viewer.toLocal(event.when.start)));
    json["lastDay"] = isoDay(store::LocalDay(viewer.toLocal(last)));
  } else {
    json["start"] = isoMoment(event.when.start, viewer);
    json["end"] = isoMoment(event.when.end, viewer);
  }
  return json;
}

nlohmann::json asJson(const Agenda::Reminder& reminder, const store::Zone& viewer) {
  const bool wholeDay = reminder.item->due->kind == store::CalendarTime::Kind::kDate;
  return {{"title", jsonText(reminder.item->title)},
          {"list", reminder.calendar.title},
          {"identifier", reminder.item->itemIdentifier},
          {"due", wholeDay ? isoDay(store::LocalDay(viewer.toLocal(reminder.due))) : isoMoment(reminder.due, viewer)}};
}

nlohmann::json asJson(const Agenda& agenda) {
  nlohmann::json json = {{"from", isoDay(agenda.first)},
                         {"to", isoDay(agenda.last)},
                         {"timeZone", agenda.viewer.name()},
                         {"events", nlohmann::json::array()},
                         {"reminders", nlohmann::json::array()}};
  for (const auto& event : agenda.events) { json["events"].push_back(asJson(event, agenda.viewer)); }
  for (const auto& reminder : agenda.reminders) { json["reminders"].push_back(asJson(reminder, agenda.viewer)); }
  return json;
}

void print(const Agenda& agenda, store::LocalDay today, const Ink& ink, std::ostream& out) {
  bool any = false;
  for (const auto& [day, lines] : linesByDay(agenda)) {
    std::size_t titleWidth = 0;
    std::size_t calendarWidth = 0;
    for (const AgendaLine& line : lines) {
      titleWidth = std::max(titleWidth, std::min(displayWidth(line.title), kWidestTitle));
      calendarWidth = std::max(calendarWidth, displayWidth(line.calendar));
    }
    out << (any ? "\n" : "") << ink.bold(longDay(day) + (day == today ? " (today)" : "")) << '\n';
    for (const AgendaLine& line : lines) {
      out << "  " << padded(line.time, kTimeWidth);
      if (ink.on()) { out << ink.colored(line.color, "● "); }
      out << padded(line.title, titleWidth) << "  ";
      if (line.place.empty()) {
        out << ink.dim(line.calendar) << '\n';
      } else {
        out << ink.dim(padded(line.calendar, calendarWidth)) << "  " << line.place << '\n';
      }
    }
    any = true;
  }
  if (!any) { out << fmt::format("Nothing is planned from {} to {}.\n", isoDay(agenda.first), isoDay(agenda.last)); }
}

Result<ExitStatus> runAgenda(const AgendaWords& words, CommandContext& context) {
  const store::Zone viewer = store::Zone::ofUser();
  const store::LocalDay today(viewer.toLocal(store::now()));
  const auto first = words.from.empty() ? today : dayFromWords(words.from, today).value_or(today);
  const auto last = words.to.empty() ? first + kDaysAhead : dayFromWords(words.to, today).value_or(first);
  if (last < first) {
    context.streams.err << fmt::format("orlocal: the last day {} lies before the first day {}\n", isoDay(last),
                                       isoDay(first));
    return ExitStatus::kUsage;
  }
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const Agenda agenda, readAgenda(*store, viewer, first, last, words.calendars));
  if (context.options.json) {
    printJson(asJson(agenda), context.streams.out);
  } else {
    print(agenda, today, Ink(context.streams.colors), context.streams.out);
  }
  return ExitStatus::kDone;
}

}  // namespace

void registerAgendaCommand(CommandLine& line) {
  auto words = std::make_shared<AgendaWords>();
  CLI::App& command = line.add("agenda", "Show what is planned, day by day: the coming week, or the days named.",
                               [words](CommandContext& context) { return runAgenda(*words, context); });
  command.add_option("--from", words->from, "First day: 2026-11-02, today, tomorrow, +7 (default: today)")
      ->type_name("DAY")
      ->check(objectionToDay);
  command.add_option("--to", words->to, "Last day, included (default: six days after the first)")
      ->type_name("DAY")
      ->check(objectionToDay);
  command.add_option("--calendar", words->calendars, "Only this calendar or reminder list; may be repeated")
      ->type_name("TITLE")
      ->allow_extra_args(false);
}

}  // namespace orlocal::host
