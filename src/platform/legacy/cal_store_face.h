#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/cal_framework.h"
#include "platform/eventkit.h"
#include "platform/legacy/faces.h"

namespace orlocal {

/// The older framework as a face of the current one.
///
/// Calendars are the event calendars and then the reminder lists; a new one holds events.
class CalCalendarStoreFace final : public CalCalendarStore {
 public:
  CalCalendarStoreFace(std::shared_ptr<EKEventStore> store, Surroundings surroundings)
      : m_store(std::move(store)), m_surroundings(surroundings) {}

  CalCalendarArray calendars() override;
  std::shared_ptr<CalCalendar> calendarWithUID(std::string_view uid) override;
  std::shared_ptr<CalEvent> eventWithUID(std::string_view uid, std::optional<Date> occurrence) override;
  std::shared_ptr<CalTask> taskWithUID(std::string_view uid) override;

  std::shared_ptr<const CalPredicate> eventPredicateWithStartDate(Date start, Date end,
                                                                  const CalCalendarArray& calendars) override;
  std::shared_ptr<const CalPredicate> eventPredicateWithStartDate(Date start, Date end, std::string_view uid,
                                                                  const CalCalendarArray& calendars) override;
  std::shared_ptr<const CalPredicate> taskPredicateWithCalendars(const CalCalendarArray& calendars) override;
  std::shared_ptr<const CalPredicate> taskPredicateWithUncompletedTasks(const CalCalendarArray& calendars) override;
  std::shared_ptr<const CalPredicate> taskPredicateWithUncompletedTasksDueBefore(
      std::optional<Date> date, const CalCalendarArray& calendars) override;
  std::shared_ptr<const CalPredicate> taskPredicateWithTasksCompletedSince(std::optional<Date> date,
                                                                           const CalCalendarArray& calendars) override;
  std::shared_ptr<const CalEventArray> eventsWithPredicate(
      const std::shared_ptr<const CalPredicate>& predicate) override;
  /// Turns the run loop until the store has answered.
  std::shared_ptr<const CalTaskArray> tasksWithPredicate(const std::shared_ptr<const CalPredicate>& predicate) override;

  bool saveCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) override;
  bool saveEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) override;
  bool saveTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) override;
  bool removeCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) override;
  bool removeEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) override;
  bool removeTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) override;

 private:
  std::shared_ptr<EKEventStore> m_store;
  Surroundings m_surroundings;
};

}  // namespace orlocal
