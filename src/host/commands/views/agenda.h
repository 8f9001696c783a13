#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// What is planned from one day to another, both included.
struct Agenda {
  struct Event {
    store::Occurrence when;
    std::shared_ptr<const store::Item> item;
    store::Calendar calendar;
  };
  /// An open reminder that is due in these days.
  struct Reminder {
    store::Moment due;
    std::shared_ptr<const store::Item> item;
    store::Calendar calendar;
  };

  store::LocalDay first, last;
  store::Zone viewer;
  std::vector<Event> events;        ///< by start, end, identifier
  std::vector<Reminder> reminders;  ///< by due moment
};

/// Reads the agenda of the calendars with these titles (all without titles).
Result<Agenda> readAgenda(store::CalendarStore& store, const store::Zone& viewer, store::LocalDay first,
                          store::LocalDay last, const std::vector<std::string>& titles);

/// One line of a day.
struct AgendaLine {
  std::string time;  ///< "all day", "09:00–10:00", "…–02:00"
  std::string title;
  std::string calendar;
  std::string place;
  std::optional<store::Rgb> color;
};

/// The lines of each day that has some: whole days first, then by time of day. An event has a line on each of the
/// agenda's days that it touches.
std::map<store::LocalDay, std::vector<AgendaLine>> linesByDay(const Agenda& agenda);

}  // namespace orlocal::host
