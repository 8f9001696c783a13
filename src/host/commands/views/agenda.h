#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/describing/item_json.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// What is planned from one day to another, both included.
struct Agenda {
  struct Event {
    store::Occurrence when;
    std::shared_ptr<const store::Item> item;
    store::Calendar calendar;
  };
  struct Reminder {
    std::optional<store::Moment> due;
    std::shared_ptr<const store::Item> item;
    store::Calendar calendar;
  };

  store::LocalDay first, last;
  CalendarNames names;
  store::Zone viewer;
  std::vector<Event> events;        ///< by start, end, identifier
  std::vector<Reminder> reminders;  ///< open, due in these days; by due moment
  /// Where today is among these days: open, and due before the first of them, or not due at all.
  std::vector<Reminder> overdue, undated;

  bool empty() const { return events.empty() && reminders.empty() && overdue.empty() && undated.empty(); }
};

/// Reads the agenda of the calendars with these titles (all without titles).
Result<Agenda> readAgenda(store::CalendarStore& store, const store::Zone& viewer, store::LocalDay first,
                          store::LocalDay last, const CalendarChoice& calendars);

/// For programs: docs/schema/output.json.
nlohmann::json agendaJson(const Agenda& agenda);
/// Its events and reminders in one list: what is overdue, then by time, then what has no date.
nlohmann::json agendaRows(const Agenda& agenda);

/// One line of a day.
struct AgendaLine {
  std::string time;   ///< "all day", "09:00–10:00", "…–02:00"; of what is overdue the day
  std::string title;  ///< with its marks
  bool cancelled = false;
  std::string calendar;
  std::string place;
  std::optional<store::Rgb> color;
  std::shared_ptr<const store::Item> item;
  std::optional<store::Occurrence> when;  ///< of an event
};

/// The lines of each day that has some: whole days first, then by time of day. An event has a line on each of the
/// agenda's days that it touches.
std::map<store::LocalDay, std::vector<AgendaLine>> linesByDay(const Agenda& agenda);

/// The lines of reminders beside the days.
std::vector<AgendaLine> linesOf(const std::vector<Agenda::Reminder>& reminders, const Agenda& agenda);

}  // namespace orlocal::host
