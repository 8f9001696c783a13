#include "host/commands/views/agenda.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/views/item_lines.h"
#include "host/commands/views/item_rows.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/item_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;
using store::Moment;

const store::Calendar* calendarOf(const std::vector<store::Calendar>& calendars, store::CalendarId id) {
  const auto found = std::find_if(calendars.begin(), calendars.end(), [id](const auto& each) { return each.id == id; });
  return found != calendars.end() ? &*found : nullptr;
}

std::vector<store::CalendarId> idsOf(const std::vector<store::Calendar>& calendars, store::CalendarKind kind) {
  std::vector<store::CalendarId> ids;
  for (const auto& calendar : calendars) {
    if (calendar.holds(kind)) { ids.push_back(calendar.id); }
  }
  return ids;
}

AgendaLine lineFor(const std::shared_ptr<const store::Item>& shared, const store::Calendar& calendar,
                   const Agenda& agenda) {
  const store::Item& item = *shared;
  AgendaLine line;
  line.item = shared;
  line.title = printable(item.title.value_or(tr("(no title)")));
  line.cancelled = isCancelled(item);
  line.calendar = printable(agenda.names.name(calendar));
  line.place = printable(item.location.value_or(""));
  line.color = calendar.color;
  return line;
}

void addMarks(AgendaLine& line, const store::Item& item) {
  if (isTentative(item)) { line.title += tr(" (tentative)"); }
  line.title += marksOf(item);
}

AgendaLine lineFor(const Agenda::Reminder& reminder, const Agenda& agenda) {
  AgendaLine line = lineFor(reminder.item, reminder.calendar, agenda);
  line.title = (reminder.item->completed ? "☑ " : "☐ ") + line.title;
  addMarks(line, *reminder.item);
  return line;
}

/// A line with what it is ordered by.
struct Placed {
  bool wholeDay;
  Moment at;
  AgendaLine line;
};

/// The part of an event that lies on `day`, none when it does not touch the day.
std::optional<Placed> placed(const Agenda::Event& event, LocalDay day, const Agenda& agenda) {
  const store::Zone& viewer = agenda.viewer;
  const Moment begin = viewer.toMoment(LocalTime(day));
  const Moment end = viewer.toMoment(LocalTime(day + 1));
  const auto& when = event.when;
  const bool instant = when.end <= when.start;
  if (when.start >= end || (instant ? when.start < begin : when.end <= begin)) { return std::nullopt; }

  AgendaLine line = lineFor(event.item, event.calendar, agenda);
  line.when = when;
  if (event.item->allDay()) {
    const LocalDay firstDay(viewer.toLocal(when.start));
    const LocalDay lastDay(viewer.toLocal(std::max(when.start, when.end - std::chrono::microseconds(1))));
    line.time = tr("all day");
    if (lastDay > firstDay) { line.title += tr(" (day {} of {})", day - firstDay + 1, lastDay - firstDay + 1); }
    addMarks(line, *event.item);
    return Placed{true, when.start, std::move(line)};
  }
  addMarks(line, *event.item);
  const bool beginsHere = when.start >= begin;
  const bool endsHere = when.end <= end;
  if (!beginsHere && when.end >= end) {
    line.time = tr("all day");
    return Placed{true, when.start, std::move(line)};
  }
  const std::string from = beginsHere ? clockTime(viewer.toLocal(when.start)) : "…";
  const std::string to = !endsHere ? "…" : when.end == end ? "24:00" : clockTime(viewer.toLocal(when.end));
  line.time = instant ? from : from + "–" + to;
  return Placed{false, std::max(when.start, begin), std::move(line)};
}

nlohmann::json asJson(const std::vector<Agenda::Reminder>& reminders, const Agenda& agenda) {
  nlohmann::json json = nlohmann::json::array();
  for (const auto& each : reminders) {
    json.push_back(itemJson(*each.item, std::nullopt, agenda.names, agenda.viewer));
  }
  return json;
}

}  // namespace

Result<Agenda> readAgenda(store::CalendarStore& store, const store::Zone& viewer, LocalDay first, LocalDay last,
                          const CalendarChoice& choice) {
  ORLOCAL_TRY(CalendarNames names, CalendarNames::of(store));
  Agenda agenda{first, last, std::move(names), viewer, {}, {}, {}, {}};
  ORLOCAL_TRY(const auto calendars, calendarsChosen(store, choice));
  const Moment from = viewer.toMoment(LocalTime(first));
  const Moment to = viewer.toMoment(LocalTime(last + 1));

  if (auto wanted = idsOf(calendars, store::CalendarKind::kEvents); !wanted.empty()) {
    ORLOCAL_TRY(const auto found, store.occurrences({from, to, std::move(wanted)}));
    std::vector<store::ItemId> ids;
    for (const auto& occurrence : found) { ids.push_back(occurrence.item); }
    ORLOCAL_CHECK(readRows(store, ids, [&](std::size_t i, std::shared_ptr<const store::Item> item) {
      if (const auto* calendar = calendarOf(calendars, item->calendar)) {
        agenda.events.push_back({found[i], std::move(item), *calendar});
      }
    }));
  }
  auto lists = idsOf(calendars, store::CalendarKind::kReminders);
  if (lists.empty()) { return agenda; }
  const auto readInto = [&](std::vector<Agenda::Reminder>& reminders, std::optional<Moment> since,
                            std::optional<Moment> until, bool due) -> Status {
    ORLOCAL_TRY(const auto found, store.reminders({store::ReminderQuery::Status::kOpen, since, until, lists}));
    return readRows(store, found, [&](std::size_t, std::shared_ptr<const store::Item> item) {
      const auto* calendar = calendarOf(calendars, item->calendar);
      if (calendar == nullptr || item->due.has_value() != due) { return; }
      const auto at = due ? std::optional(store::momentOf(*item->due, viewer)) : std::nullopt;
      reminders.push_back({at, std::move(item), *calendar});
    });
  };
  ORLOCAL_CHECK(readInto(agenda.reminders, from, to, true));
  const LocalDay today(viewer.toLocal(store::now()));
  if (today < first || today > last) { return agenda; }
  ORLOCAL_CHECK(readInto(agenda.overdue, std::nullopt, std::min(from, store::now()), true));
  ORLOCAL_CHECK(readInto(agenda.undated, std::nullopt, std::nullopt, false));
  return agenda;
}

std::map<LocalDay, std::vector<AgendaLine>> linesByDay(const Agenda& agenda) {
  const store::Zone& viewer = agenda.viewer;
  std::map<LocalDay, std::vector<Placed>> found;
  for (const Agenda::Event& event : agenda.events) {
    const LocalDay begins(viewer.toLocal(event.when.start));
    const LocalDay ends(viewer.toLocal(std::max(event.when.start, event.when.end)));
    for (LocalDay day = std::max(begins, agenda.first); day <= std::min(ends, agenda.last); ++day) {
      if (auto line = placed(event, day, agenda)) { found[day].push_back(*std::move(line)); }
    }
  }
  for (const Agenda::Reminder& reminder : agenda.reminders) {
    const LocalTime due = viewer.toLocal(*reminder.due);
    const bool wholeDay = reminder.item->due->kind == store::CalendarTime::Kind::kDate;
    AgendaLine line = lineFor(reminder, agenda);
    line.time = wholeDay ? tr("due") : tr("due {}", clockTime(due));
    found[LocalDay(due)].push_back({wholeDay, *reminder.due, std::move(line)});
  }
  std::map<LocalDay, std::vector<AgendaLine>> lines;
  for (auto& [day, ofDay] : found) {
    std::stable_sort(ofDay.begin(), ofDay.end(), [](const Placed& a, const Placed& b) {
      return a.wholeDay != b.wholeDay ? a.wholeDay : a.at < b.at;
    });
    for (Placed& each : ofDay) { lines[day].push_back(std::move(each.line)); }
  }
  return lines;
}

std::vector<AgendaLine> linesOf(const std::vector<Agenda::Reminder>& reminders, const Agenda& agenda) {
  std::vector<AgendaLine> lines;
  for (const Agenda::Reminder& reminder : reminders) {
    lines.push_back(lineFor(reminder, agenda));
    if (reminder.due) { lines.back().time = isoDay(LocalDay(agenda.viewer.toLocal(*reminder.due))); }
  }
  return lines;
}

nlohmann::json agendaJson(const Agenda& agenda) {
  nlohmann::json json = {{"from", isoDay(agenda.first)},
                         {"to", isoDay(agenda.last)},
                         {"timeZone", agenda.viewer.name()},
                         {"events", nlohmann::json::array()},
                         {"reminders", asJson(agenda.reminders, agenda)},
                         {"overdue", asJson(agenda.overdue, agenda)},
                         {"undated", asJson(agenda.undated, agenda)}};
  for (const auto& event : agenda.events) {
    json["events"].push_back(itemJson(*event.item, event.when, agenda.names, agenda.viewer));
  }
  return json;
}

nlohmann::json agendaRows(const Agenda& agenda) {
  const nlohmann::json lists = agendaJson(agenda);
  std::vector<std::pair<Moment, const nlohmann::json*>> timed;
  for (std::size_t i = 0; i < agenda.events.size(); ++i) {
    timed.emplace_back(agenda.events[i].when.start, &lists["events"][i]);
  }
  for (std::size_t i = 0; i < agenda.reminders.size(); ++i) {
    timed.emplace_back(*agenda.reminders[i].due, &lists["reminders"][i]);
  }
  std::stable_sort(timed.begin(), timed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  nlohmann::json rows = lists["overdue"];
  for (const auto& [at, row] : timed) { rows.push_back(*row); }
  rows.insert(rows.end(), lists["undated"].begin(), lists["undated"].end());
  return rows;
}

}  // namespace orlocal::host
