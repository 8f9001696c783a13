#include "fakes/fake_calendar_store.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <set>
#include <tuple>
#include <utility>

#include "fakes/fake_clock.h"

namespace orlocal::fakes {
namespace {

using namespace std::chrono_literals;

/// A query is the function that answers it from what the store holds at that time.
struct EventPredicate : CalPredicate {
  std::function<std::vector<FakeCalEvent>(const FakeCalendarStore&)> answer;
};
struct TaskPredicate : CalPredicate {
  std::function<bool(const FakeCalTask&)> matches;
};

template <class T, class Value>
class Answer : public ObjectArray<T> {
 public:
  explicit Answer(std::vector<Value> values) : m_values(std::move(values)) {}
  std::size_t count() const override { return m_values.size(); }
  std::shared_ptr<T> objectAtIndex(std::size_t index) const override {
    return std::make_shared<Value>(m_values.at(index));
  }

 private:
  std::vector<Value> m_values;
};

bool refuse(std::optional<Error>& error, std::string description, std::optional<std::string> reason = std::nullopt) {
  error = Error{std::move(description), std::move(reason)};
  return false;
}

std::set<std::string> uidsOf(const CalCalendarArray& calendars) {
  std::set<std::string> uids;
  for (const auto& calendar : calendars) uids.insert(calendar->uid().value_or(""));
  return uids;
}

bool isIn(const CalCalendarItem& item, const std::set<std::string>& uids) {
  return item.calendar() && uids.contains(item.calendar()->uid().value_or(""));
}

/// Visits the occurrences of `event` that start before `end`, until `visit` says no.
void forEachOccurrence(const FakeCalEvent& event, Date end, const std::function<bool(FakeCalEvent)>& visit) {
  FakeCalEvent occurrence = event;
  occurrence.m_occurrence = event.m_startDate;
  const auto rule = event.m_recurrenceRule;
  const auto ruleEnd = rule ? rule->recurrenceEnd() : nullptr;
  for (int number = 1; *occurrence.m_startDate < end; ++number) {
    if (ruleEnd && ruleEnd->usesEndDate() && *occurrence.m_startDate > *ruleEnd->endDate()) return;
    if (ruleEnd && !ruleEnd->usesEndDate() && number > ruleEnd->occurrenceCount()) return;
    const bool excluded = std::ranges::find(event.m_excluded, *occurrence.m_startDate) != event.m_excluded.end();
    if ((!excluded && !visit(occurrence)) || !rule) return;
    const auto step = rule->recurrenceInterval() * 24h;
    *occurrence.m_startDate += step;
    *occurrence.m_endDate += step;
    occurrence.m_occurrence = occurrence.m_startDate;
  }
}

/// Series without an end are expanded so far when the range has no end of its own.
Date lastStart(Date start, Date end) {
  if (end < distantFuture()) return end;
  return std::max(start > distantPast() ? start : fakeNow(), fakeNow()) + 4 * 365 * 24h;
}

template <class Value>
auto findUid(std::vector<Value>& values, std::string_view uid) {
  return std::ranges::find_if(values, [&](const Value& value) { return value.m_uid == OptionalText(uid); });
}

template <class Value>
void put(std::vector<Value>& values, const Value& value) {
  const auto place = findUid(values, *value.m_uid);
  if (place == values.end()) {
    values.push_back(value);
  } else {
    *place = value;
  }
}

}  // namespace

void FakeCalTask::setIsCompleted(bool completed) {
  setCompletedDate(completed ? std::optional<Date>(fakeNow()) : std::nullopt);
}

std::string FakeCalendarStore::nextUid(std::string_view kind) {
  return std::string(kind) + "-" + std::to_string(++m_lastNumber);
}

std::string FakeCalendarStore::addCalendar(std::string_view title) {
  FakeCalCalendar calendar;
  calendar.m_title = title;
  calendar.m_uid = nextUid("calendar");
  m_calendars.push_back(calendar);
  return *calendar.m_uid;
}

std::string FakeCalendarStore::addEvent(std::string_view calendarTitle, std::string_view title, Date start, Date end) {
  FakeCalEvent event;
  event.m_calendar = calendarTitled(calendarTitle);
  event.m_title = title;
  event.m_startDate = start;
  event.m_endDate = end;
  event.m_uid = nextUid("event");
  m_events.push_back(event);
  return *event.m_uid;
}

std::string FakeCalendarStore::addTask(std::string_view calendarTitle, std::string_view title, std::optional<Date> due,
                                       std::optional<Date> completed) {
  FakeCalTask task;
  task.m_calendar = calendarTitled(calendarTitle);
  task.m_title = title;
  task.m_dueDate = due;
  task.setCompletedDate(completed);
  task.m_uid = nextUid("task");
  m_tasks.push_back(task);
  return *task.m_uid;
}

std::shared_ptr<CalCalendar> FakeCalendarStore::calendarTitled(std::string_view title) {
  for (const auto& calendar : m_calendars) {
    if (calendar.m_title == OptionalText(title)) return std::make_shared<FakeCalCalendar>(calendar);
  }
  return nullptr;
}

CalCalendarArray FakeCalendarStore::calendars() {
  CalCalendarArray result;
  if (!m_answers) return result;
  for (const auto& calendar : m_calendars) result.push_back(std::make_shared<FakeCalCalendar>(calendar));
  return result;
}

std::shared_ptr<CalCalendar> FakeCalendarStore::calendarWithUID(std::string_view uid) {
  if (!m_answers) return nullptr;
  const auto place = findUid(m_calendars, uid);
  return place == m_calendars.end() ? nullptr : std::make_shared<FakeCalCalendar>(*place);
}

std::shared_ptr<CalEvent> FakeCalendarStore::eventWithUID(std::string_view uid, std::optional<Date> occurrence) {
  if (!m_answers) return nullptr;
  const auto place = findUid(m_events, uid);
  if (place == m_events.end()) return nullptr;
  std::shared_ptr<FakeCalEvent> found;
  forEachOccurrence(*place, occurrence ? *occurrence + 1us : distantFuture(), [&](FakeCalEvent candidate) {
    if (!occurrence || candidate.m_occurrence == occurrence) found = std::make_shared<FakeCalEvent>(candidate);
    return !found;
  });
  return found;
}

std::shared_ptr<CalTask> FakeCalendarStore::taskWithUID(std::string_view uid) {
  if (!m_answers) return nullptr;
  const auto place = findUid(m_tasks, uid);
  return place == m_tasks.end() ? nullptr : std::make_shared<FakeCalTask>(*place);
}

std::shared_ptr<const CalPredicate> FakeCalendarStore::eventPredicateWithStartDate(Date start, Date end,
                                                                                   const CalCalendarArray& calendars) {
  return eventPredicateWithStartDate(start, end, "", calendars);
}

std::shared_ptr<const CalPredicate> FakeCalendarStore::eventPredicateWithStartDate(Date start, Date end,
                                                                                   std::string_view uid,
                                                                                   const CalCalendarArray& calendars) {
  if (!m_answers || end < start) return nullptr;
  auto predicate = std::make_shared<EventPredicate>();
  predicate->answer = [start, end, uid = std::string(uid), uids = uidsOf(calendars)](const FakeCalendarStore& store) {
    std::vector<FakeCalEvent> matches;
    for (const auto& event : store.m_events) {
      if (!isIn(event, uids) || (!uid.empty() && event.m_uid != uid)) continue;
      forEachOccurrence(event, lastStart(start, end), [&](FakeCalEvent occurrence) {
        if (*occurrence.m_endDate > start || *occurrence.m_startDate >= start) matches.push_back(occurrence);
        return true;
      });
    }
    std::ranges::stable_sort(matches, {}, [](const FakeCalEvent& event) {
      return std::tuple(*event.m_startDate, *event.m_endDate, *event.m_uid);
    });
    return matches;
  };
  return predicate;
}

namespace {

std::shared_ptr<const CalPredicate> taskPredicate(const CalCalendarArray& calendars,
                                                  std::function<bool(const FakeCalTask&)> condition) {
  auto predicate = std::make_shared<TaskPredicate>();
  predicate->matches = [uids = uidsOf(calendars), condition = std::move(condition)](const FakeCalTask& task) {
    return isIn(task, uids) && condition(task);
  };
  return predicate;
}

}  // namespace

std::shared_ptr<const CalPredicate> FakeCalendarStore::taskPredicateWithCalendars(const CalCalendarArray& calendars) {
  if (!m_answers) return nullptr;
  return taskPredicate(calendars, [](const FakeCalTask&) { return true; });
}

std::shared_ptr<const CalPredicate> FakeCalendarStore::taskPredicateWithUncompletedTasks(
    const CalCalendarArray& calendars) {
  if (!m_answers) return nullptr;
  return taskPredicate(calendars, [](const FakeCalTask& task) { return !task.m_isCompleted; });
}

std::shared_ptr<const CalPredicate> FakeCalendarStore::taskPredicateWithUncompletedTasksDueBefore(
    std::optional<Date> date, const CalCalendarArray& calendars) {
  if (!m_answers || !date) return nullptr;
  return taskPredicate(calendars, [due = *date](const FakeCalTask& task) {
    return !task.m_isCompleted && task.m_dueDate && *task.m_dueDate < due;
  });
}

std::shared_ptr<const CalPredicate> FakeCalendarStore::taskPredicateWithTasksCompletedSince(
    std::optional<Date> date, const CalCalendarArray& calendars) {
  if (!m_answers || !date) return nullptr;
  return taskPredicate(calendars, [since = *date](const FakeCalTask& task) {
    return task.m_completedDate && *task.m_completedDate >= since;
  });
}

std::shared_ptr<const CalEventArray> FakeCalendarStore::eventsWithPredicate(
    const std::shared_ptr<const CalPredicate>& predicate) {
  const auto* query = dynamic_cast<const EventPredicate*>(predicate.get());
  if (!m_answers || !query) return nullptr;
  return std::make_shared<Answer<CalEvent, FakeCalEvent>>(query->answer(*this));
}

std::shared_ptr<const CalTaskArray> FakeCalendarStore::tasksWithPredicate(
    const std::shared_ptr<const CalPredicate>& predicate) {
  const auto* query = dynamic_cast<const TaskPredicate*>(predicate.get());
  if (!m_answers || !query) return nullptr;
  std::vector<FakeCalTask> matches;
  std::ranges::copy_if(m_tasks, std::back_inserter(matches), query->matches);
  return std::make_shared<Answer<CalTask, FakeCalTask>>(std::move(matches));
}

bool FakeCalendarStore::calendarTakesChanges(const CalCalendarItem* item, std::optional<Error>& error) {
  if (!m_answers) return refuse(error, "The store cannot be opened");
  if (!item) return refuse(error, "There is nothing to save or remove");
  if (!item->calendar()) return refuse(error, "The item has no calendar");
  const auto place = findUid(m_calendars, item->calendar()->uid().value_or(""));
  if (place == m_calendars.end()) return refuse(error, "The item's calendar is not in the store");
  return place->m_isEditable || refuse(error, "The calendar allows no changes", "It is read-only.");
}

bool FakeCalendarStore::saveCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) {
  if (!m_answers) return refuse(error, "The store cannot be opened");
  const auto own = std::dynamic_pointer_cast<FakeCalCalendar>(calendar);
  if (!own) return refuse(error, "There is no calendar to save");
  if (own->m_title.value_or("").empty()) return refuse(error, "The calendar has no title");
  if (!own->m_isEditable) return refuse(error, "The calendar allows no changes", "It is read-only.");
  if (!own->m_uid) own->m_uid = nextUid("calendar");
  put(m_calendars, *own);
  return true;
}

bool FakeCalendarStore::saveEvent(const std::shared_ptr<CalEvent>& event, CalSpan, std::optional<Error>& error) {
  const auto own = std::dynamic_pointer_cast<FakeCalEvent>(event);
  if (!calendarTakesChanges(own.get(), error)) return false;
  if (!own->m_startDate || !own->m_endDate) return refuse(error, "The event has no start or no end");
  if (own->m_attendees && !own->m_attendees->empty()) return refuse(error, "The event has attendees");
  if (!own->m_uid) own->m_uid = nextUid("event");
  own->m_dateStamp = fakeNow();
  put(m_events, *own);
  return true;
}

bool FakeCalendarStore::saveTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) {
  const auto own = std::dynamic_pointer_cast<FakeCalTask>(task);
  if (!calendarTakesChanges(own.get(), error)) return false;
  if (!own->m_uid) own->m_uid = nextUid("task");
  own->m_dateStamp = fakeNow();
  put(m_tasks, *own);
  return true;
}

bool FakeCalendarStore::removeCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) {
  if (!m_answers) return refuse(error, "The store cannot be opened");
  if (!calendar) return refuse(error, "There is no calendar to remove");
  if (!calendar->isEditable()) return refuse(error, "The calendar allows no changes", "It is read-only.");
  if (m_calendars.size() == 1) return refuse(error, "The last calendar stays");
  const auto in = [&](const auto& item) { return item.m_calendar && item.m_calendar->uid() == calendar->uid(); };
  std::erase_if(m_events, in);
  std::erase_if(m_tasks, in);
  std::erase_if(m_calendars, [&](const auto& own) { return own.m_uid == calendar->uid(); });
  return true;
}

bool FakeCalendarStore::removeEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) {
  if (!calendarTakesChanges(event.get(), error)) return false;
  const auto series = findUid(m_events, event->uid().value_or(""));
  if (series == m_events.end()) return refuse(error, "The event is not in the store");
  const auto rule = std::dynamic_pointer_cast<FakeCalRecurrenceRule>(series->m_recurrenceRule);
  if (!rule || span == CalSpan::kAllEvents ||
      (span == CalSpan::kFutureEvents && event->occurrence() == series->m_startDate)) {
    m_events.erase(series);
  } else if (span == CalSpan::kThisEvent) {
    series->m_excluded.push_back(*event->occurrence());
  } else {
    auto shortened = std::make_shared<FakeCalRecurrenceRule>(*rule);
    auto end = std::make_shared<FakeCalRecurrenceEnd>();
    end->m_endDate = *event->occurrence() - 1us;
    shortened->m_end = end;
    series->m_recurrenceRule = shortened;
  }
  return true;
}

bool FakeCalendarStore::removeTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) {
  if (!calendarTakesChanges(task.get(), error)) return false;
  std::erase_if(m_tasks, [&](const auto& own) { return own.m_uid == task->uid(); });
  return true;
}

}  // namespace orlocal::fakes
