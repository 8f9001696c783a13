#include "host/commands/changes/item_report.h"

#include <ostream>

#include <fmt/format.h>

#include "host/commands/choosing/item_choice.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/alarm_words.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/repeat_words.h"
#include "store/edits/event_times.h"
#include "store/recurrence/rule_text.h"

namespace orlocal::host {
namespace {

using store::Item;
using store::ItemKind;
using store::LocalDay;
using store::LocalTime;

std::string dueInWords(const Times& due) {
  return "due " + (due.allDay ? shortDay(LocalDay(due.start)) : timesInWords(due));
}

std::string alarmInWords(const store::Alarm& alarm, const store::Zone& viewer) {
  if (const auto* offset = std::get_if<store::AlarmOffset>(&alarm.trigger)) {
    return "alarm " + offsetInWords(offset->offset);
  }
  const LocalTime at = viewer.toLocal(std::get<store::Moment>(alarm.trigger));
  return fmt::format("alarm {} {}", shortDay(LocalDay(at)), clockTime(at));
}

nlohmann::json alarmJson(const store::Alarm& alarm, const store::Zone& viewer) {
  if (const auto* offset = std::get_if<store::AlarmOffset>(&alarm.trigger)) {
    return {{"seconds", offset->offset.count()}, {"from", offset->fromEnd ? "end" : "start"}};
  }
  return {{"at", isoMoment(std::get<store::Moment>(alarm.trigger), viewer)}};
}

nlohmann::json momentJson(const std::optional<store::Moment>& moment, const store::Zone& viewer) {
  return moment ? nlohmann::json(isoMoment(*moment, viewer)) : nlohmann::json(nullptr);
}

void addTimes(nlohmann::json& json, const Item& item, const std::optional<store::Occurrence>& occurrence,
              const store::Zone& viewer) {
  const auto times = shownTimesOf(item, occurrence, viewer);
  if (item.kind == ItemKind::kReminder) {
    json["due"] = nullptr;
    if (times) {
      json["due"] = times->allDay ? isoDay(LocalDay(times->start)) : isoMoment(viewer.toMoment(times->start), viewer);
    }
    json["completed"] = momentJson(item.completed, viewer);
    return;
  }
  json["allDay"] = item.allDay();
  if (!times) { return; }
  if (times->allDay) {
    json["firstDay"] = isoDay(LocalDay(times->start));
    json["lastDay"] = isoDay(LocalDay(times->end) - 1);
  } else {
    json["start"] = isoMoment(viewer.toMoment(times->start), viewer);
    json["end"] = isoMoment(viewer.toMoment(times->end), viewer);
  }
  json["zone"] = item.start && item.start->kind == store::CalendarTime::Kind::kZoned ? nlohmann::json(item.start->zone)
                                                                                     : nlohmann::json(nullptr);
}

}  // namespace

std::optional<Times> shownTimesOf(const Item& item, const std::optional<store::Occurrence>& occurrence,
                                  const store::Zone& viewer) {
  if (item.kind == ItemKind::kReminder) {
    if (!item.due) { return std::nullopt; }
    const LocalTime due = viewer.toLocal(store::momentOf(*item.due, viewer));
    const bool wholeDay = item.due->kind == store::CalendarTime::Kind::kDate;
    return Times{due, wholeDay ? due + 86'400 : due, wholeDay};
  }
  const store::ShownTimes shown = store::shownTimes(item, occurrence, viewer);
  if (!shown.start) { return std::nullopt; }
  Times times{viewer.toLocal(*shown.start), viewer.toLocal(shown.end.value_or(*shown.start)), shown.allDay};
  if (times.allDay) { times = {LocalTime(LocalDay(times.start)), LocalTime(LocalDay(times.end) + 1), true}; }
  return times;
}

std::string quotedTitle(const Item& item) { return '"' + printable(item.title.value_or("")) + '"'; }

std::string itemLine(const Item& item, const store::Calendar& calendar, const store::Zone& viewer,
                     const std::optional<store::Occurrence>& occurrence) {
  std::string line = quotedTitle(item);
  if (!item.itemIdentifier.empty()) { line += fmt::format(" ({})", shortIdentifier(item)); }
  std::string parts;
  const auto add = [&](const std::string& part) { parts += (parts.empty() ? ": " : ", ") + part; };
  if (const auto times = shownTimesOf(item, occurrence, viewer)) {
    add(item.kind == ItemKind::kEvent ? timesInWords(*times) : dueInWords(*times));
  } else {
    add("no date");
  }
  for (const store::RecurrenceRule& rule : item.recurrence.rules) { add(ruleInWords(rule)); }
  for (const store::Alarm& alarm : item.alarms) { add(alarmInWords(alarm, viewer)); }
  if (item.location) { add("at " + printable(*item.location)); }
  if (item.completed) { add("done"); }
  add("in " + printable(calendar.title));
  return line + parts;
}

void tellItem(ChangeRun& run, const Outcome& outcome, const Item& item, const store::Calendar& calendar) {
  std::ostream& out = run.context().streams.out;
  if (run.context().options.json) {
    printJson(itemJson(item, calendar, run.viewer()), out);
    return;
  }
  out << (run.dryRun() ? outcome.rehearsed : outcome.done) << ' ' << itemLine(item, calendar, run.viewer()) << '\n';
}

nlohmann::json itemJson(const Item& item, const store::Calendar& calendar, const store::Zone& viewer,
                        const std::optional<store::Occurrence>& occurrence) {
  nlohmann::json json = {{"kind", item.kind == ItemKind::kEvent ? "event" : "reminder"},
                         {"identifier", item.identifier},
                         {"itemIdentifier", item.itemIdentifier},
                         {"uid", item.uid},
                         {"title", jsonText(item.title)},
                         {"calendar", calendar.title},
                         {"calendarIdentifier", calendar.identifier},
                         {"location", jsonText(item.location)},
                         {"notes", jsonText(item.notes)},
                         {"url", jsonText(item.url)},
                         {"priority", item.priority},
                         {"rules", nlohmann::json::array()},
                         {"alarms", nlohmann::json::array()}};
  for (const store::RecurrenceRule& rule : item.recurrence.rules) { json["rules"].push_back(store::ruleText(rule)); }
  for (const store::Alarm& alarm : item.alarms) { json["alarms"].push_back(alarmJson(alarm, viewer)); }
  addTimes(json, item, occurrence, viewer);
  return json;
}

}  // namespace orlocal::host
