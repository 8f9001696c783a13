#include "host/commands/browsing/browse_days.h"

#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/views/item_rows.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {

using store::LocalDay;
using store::LocalTime;

Result<BrowseDays> readBrowseDays(store::CalendarStore& store, const store::Zone& viewer, LocalDay first, LocalDay last,
                                  const CalendarChoice& choice) {
  ORLOCAL_TRY(Agenda agenda, readAgenda(store, viewer, first, last, choice));
  BrowseDays days;
  days.first = first;
  days.last = last;
  days.lines = linesByDay(agenda);
  // Wherever the days are, what stands beside today is that of today.
  const LocalDay today(viewer.toLocal(store::now()));
  ORLOCAL_TRY(const Agenda ofToday, readAgenda(store, viewer, today, today, choice));
  days.overdue = linesOf(ofToday.overdue, ofToday);
  days.undated = linesOf(ofToday.undated, ofToday);
  ORLOCAL_TRY(days.calendars, allCalendars(store));
  ORLOCAL_TRY(const auto shown, calendarsChosen(store, choice));
  store::ReminderQuery query{store::ReminderQuery::Status::kCompleted,
                             viewer.toMoment(LocalTime(first)),
                             viewer.toMoment(LocalTime(last + 1)),
                             {}};
  for (const store::Calendar& list : shown) {
    if (list.holds(store::ItemKind::kReminder)) { query.calendars.push_back(list.id); }
  }
  std::vector<Agenda::Reminder> done;
  if (!query.calendars.empty()) {
    ORLOCAL_TRY(const auto ids, store.reminders(query));
    ORLOCAL_CHECK(readRows(store, ids, [&](std::size_t, std::shared_ptr<const store::Item> item) {
      const store::Calendar* list = agenda.names.calendar(item->calendar);
      if (list != nullptr && item->completed) { done.push_back({std::nullopt, std::move(item), *list}); }
    }));
  }
  for (AgendaLine& line : linesOf(done, agenda)) {
    const LocalTime at = viewer.toLocal(*line.item->completed);
    line.time = clockTime(at);
    days.lines[LocalDay(at)].push_back(std::move(line));
  }
  days.names = std::move(agenda.names);
  return days;
}

}  // namespace orlocal::host
