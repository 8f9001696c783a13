#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/fake_calendar_store_items.h"
#include "platform/calendar_store.h"

namespace orlocal::fakes {

/// The older store in memory. Only daily rules are expanded, in steps of 24 hours. What it hands out are copies: a
/// change reaches it by saving.
class FakeCalendarStore : public CalCalendarStore {
 public:
  /// What the store holds. Items name their calendar by an object with its uid.
  std::vector<FakeCalCalendar> m_calendars;
  std::vector<FakeCalEvent> m_events;
  std::vector<FakeCalTask> m_tasks;
  /// Whether the store can be opened and read.
  bool m_answers = true;

  // Each adds an item and gives it a uid made of its kind and number ("calendar-1", "event-2", "task-3").
  std::string addCalendar(std::string_view title);
  std::string addEvent(std::string_view calendarTitle, std::string_view title, Date start, Date end);
  std::string addTask(std::string_view calendarTitle, std::string_view title, std::optional<Date> due = std::nullopt,
                      std::optional<Date> completed = std::nullopt);

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
  std::shared_ptr<const CalTaskArray> tasksWithPredicate(const std::shared_ptr<const CalPredicate>& predicate) override;
  bool saveCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) override;
  bool saveEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) override;
  bool saveTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) override;
  bool removeCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) override;
  bool removeEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) override;
  bool removeTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) override;

 private:
  std::shared_ptr<CalCalendar> calendarTitled(std::string_view title);
  bool calendarTakesChanges(const CalCalendarItem* item, std::optional<Error>& error);
  std::string nextUid(std::string_view kind);

  int m_lastNumber = 0;
};

/// Hands out `store` and makes the objects above.
class FakeCalendarStoreFramework : public CalendarStoreFramework {
 public:
  explicit FakeCalendarStoreFramework(std::shared_ptr<CalCalendarStore> store) : m_store(std::move(store)) {}

  std::shared_ptr<CalCalendarStore> m_store;

  std::shared_ptr<CalCalendarStore> defaultCalendarStore() override { return m_store; }
  std::shared_ptr<CalCalendar> calendar() override;
  std::shared_ptr<CalEvent> event() override;
  std::shared_ptr<CalTask> task() override;
  std::shared_ptr<CalAlarm> alarm() override;
  End recurrenceEndWithEndDate(Date date) override;
  End recurrenceEndWithOccurrenceCount(int count) override;
  Rule initDailyRecurrenceWithInterval(int interval, const End& end) override;
  Rule initWeeklyRecurrenceWithInterval(int interval, const End& end) override;
  Rule initWeeklyRecurrenceWithInterval(int interval, const Numbers& forDaysOfTheWeek, const End& end) override;
  Rule initMonthlyRecurrenceWithInterval(int interval, const End& end) override;
  Rule initMonthlyRecurrenceWithInterval(int interval, const Numbers& forDaysOfTheMonth, const End& end) override;
  Rule initMonthlyRecurrenceWithInterval(int interval, int forDayOfTheWeek, int forWeekOfTheMonth,
                                         const End& end) override;
  Rule initYearlyRecurrenceWithInterval(int interval, const End& end) override;
  Rule initYearlyRecurrenceWithInterval(int interval, const Numbers& forMonthsOfTheYear, const End& end) override;
  Rule initYearlyRecurrenceWithInterval(int interval, int forDayOfTheWeek, int forWeekOfTheMonth,
                                        const Numbers& forMonthsOfTheYear, const End& end) override;
};

}  // namespace orlocal::fakes
