#pragma once

#include <memory>
#include <utility>

#include "platform/calendar_store.h"

namespace orlocal::fakes {

/// Passes everything on to another store. A test overrides the one method that should fail.
class ForwardingCalCalendarStore : public CalCalendarStore {
 public:
  explicit ForwardingCalCalendarStore(std::shared_ptr<CalCalendarStore> next) : m_next(std::move(next)) {}

  CalCalendarArray calendars() override { return m_next->calendars(); }
  std::shared_ptr<CalCalendar> calendarWithUID(std::string_view uid) override { return m_next->calendarWithUID(uid); }
  std::shared_ptr<CalEvent> eventWithUID(std::string_view uid, std::optional<Date> occurrence) override {
    return m_next->eventWithUID(uid, occurrence);
  }
  std::shared_ptr<CalTask> taskWithUID(std::string_view uid) override { return m_next->taskWithUID(uid); }
  std::shared_ptr<const CalPredicate> eventPredicateWithStartDate(Date start, Date end,
                                                                  const CalCalendarArray& calendars) override {
    return m_next->eventPredicateWithStartDate(start, end, calendars);
  }
  std::shared_ptr<const CalPredicate> eventPredicateWithStartDate(Date start, Date end, std::string_view uid,
                                                                  const CalCalendarArray& calendars) override {
    return m_next->eventPredicateWithStartDate(start, end, uid, calendars);
  }
  std::shared_ptr<const CalPredicate> taskPredicateWithCalendars(const CalCalendarArray& calendars) override {
    return m_next->taskPredicateWithCalendars(calendars);
  }
  std::shared_ptr<const CalPredicate> taskPredicateWithUncompletedTasks(const CalCalendarArray& calendars) override {
    return m_next->taskPredicateWithUncompletedTasks(calendars);
  }
  std::shared_ptr<const CalPredicate> taskPredicateWithUncompletedTasksDueBefore(
      std::optional<Date> date, const CalCalendarArray& calendars) override {
    return m_next->taskPredicateWithUncompletedTasksDueBefore(date, calendars);
  }
  std::shared_ptr<const CalPredicate> taskPredicateWithTasksCompletedSince(std::optional<Date> date,
                                                                           const CalCalendarArray& calendars) override {
    return m_next->taskPredicateWithTasksCompletedSince(date, calendars);
  }
  std::shared_ptr<const CalEventArray> eventsWithPredicate(
      const std::shared_ptr<const CalPredicate>& predicate) override {
    return m_next->eventsWithPredicate(predicate);
  }
  std::shared_ptr<const CalTaskArray> tasksWithPredicate(
      const std::shared_ptr<const CalPredicate>& predicate) override {
    return m_next->tasksWithPredicate(predicate);
  }
  bool saveCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) override {
    return m_next->saveCalendar(calendar, error);
  }
  bool saveEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) override {
    return m_next->saveEvent(event, span, error);
  }
  bool saveTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) override {
    return m_next->saveTask(task, error);
  }
  bool removeCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) override {
    return m_next->removeCalendar(calendar, error);
  }
  bool removeEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) override {
    return m_next->removeEvent(event, span, error);
  }
  bool removeTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) override {
    return m_next->removeTask(task, error);
  }

 protected:
  std::shared_ptr<CalCalendarStore> m_next;
};

}  // namespace orlocal::fakes
