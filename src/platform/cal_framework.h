#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/cal_items.h"
#include "platform/error.h"
#include "platform/object_array.h"

namespace orlocal {

/// A query that a store made and only it can run. Immutable; kept as long as its answers are wanted.
class CalPredicate {
 public:
  virtual ~CalPredicate() = default;
};

using CalEventArray = ObjectArray<CalEvent>;
using CalTaskArray = ObjectArray<CalTask>;
using CalCalendarArray = std::vector<std::shared_ptr<CalCalendar>>;

/// What the older calendar framework knows. Main thread only. Look-ups give null when there is nothing; saves and
/// removals give false and an error whose text says why, without a full stop, as callers put the reason behind it; then
/// nothing was written.
///
/// A store that cannot be opened or read throws nothing: it has no calendars and no items, makes no predicate, gives no
/// array, and its saves and removals fail. The system's log has the reason.
class CalCalendarStore {
 public:
  virtual ~CalCalendarStore() = default;

  /// All of them, whatever they hold.
  virtual CalCalendarArray calendars() = 0;
  virtual std::shared_ptr<CalCalendar> calendarWithUID(std::string_view uid) = 0;
  /// Without an occurrence the first one. An occurrence that the series does not have gives null.
  virtual std::shared_ptr<CalEvent> eventWithUID(std::string_view uid, std::optional<Date> occurrence) = 0;
  virtual std::shared_ptr<CalTask> taskWithUID(std::string_view uid) = 0;

  // Predicates are null when the store does not answer.

  /// Occurrences that overlap [start, end) in `calendars`. Null when the dates make no range that can be asked for.
  virtual std::shared_ptr<const CalPredicate> eventPredicateWithStartDate(Date start, Date end,
                                                                          const CalCalendarArray& calendars) = 0;
  /// The same, of the event with this uid only.
  virtual std::shared_ptr<const CalPredicate> eventPredicateWithStartDate(Date start, Date end, std::string_view uid,
                                                                          const CalCalendarArray& calendars) = 0;
  virtual std::shared_ptr<const CalPredicate> taskPredicateWithCalendars(const CalCalendarArray& calendars) = 0;
  virtual std::shared_ptr<const CalPredicate> taskPredicateWithUncompletedTasks(const CalCalendarArray& calendars) = 0;
  /// Open tasks due before `date`; null without a date.
  virtual std::shared_ptr<const CalPredicate> taskPredicateWithUncompletedTasksDueBefore(
      std::optional<Date> date, const CalCalendarArray& calendars) = 0;
  /// Tasks completed from `date` on; null without a date.
  virtual std::shared_ptr<const CalPredicate> taskPredicateWithTasksCompletedSince(
      std::optional<Date> date, const CalCalendarArray& calendars) = 0;
  /// Ordered by start, end, uid. Asking again with the same predicate costs little until the store changes. Null for a
  /// null predicate, and when the store does not answer.
  virtual std::shared_ptr<const CalEventArray> eventsWithPredicate(
      const std::shared_ptr<const CalPredicate>& predicate) = 0;
  /// Null for a null predicate, and when the store does not answer.
  virtual std::shared_ptr<const CalTaskArray> tasksWithPredicate(
      const std::shared_ptr<const CalPredicate>& predicate) = 0;

  // Null objects are refused with an error.
  virtual bool saveCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) = 0;
  virtual bool saveEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) = 0;
  virtual bool saveTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) = 0;
  virtual bool removeCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) = 0;
  virtual bool removeEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) = 0;
  virtual bool removeTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) = 0;
};

/// Hands out the store and makes the platform's objects. Null when one cannot be made.
class CalFramework {
 public:
  virtual ~CalFramework() = default;

  /// Never null, whether or not the store can be opened.
  virtual std::shared_ptr<CalCalendarStore> defaultCalendarStore() = 0;
  virtual std::shared_ptr<CalCalendar> calendar() = 0;
  virtual std::shared_ptr<CalEvent> event() = 0;
  virtual std::shared_ptr<CalTask> task() = 0;
  virtual std::shared_ptr<CalAlarm> alarm() = 0;

  virtual std::shared_ptr<CalRecurrenceEnd> recurrenceEndWithEndDate(Date date) = 0;
  /// Null below 1.
  virtual std::shared_ptr<CalRecurrenceEnd> recurrenceEndWithOccurrenceCount(int count) = 0;

  using Rule = std::shared_ptr<CalRecurrenceRule>;
  using End = std::shared_ptr<CalRecurrenceEnd>;
  /// Numbers of weekdays (1 Sunday to 7 Saturday), days of the month, or months.
  using Numbers = std::vector<long>;

  // Rules. Without an end they go on. Null for an interval below 1, for an empty list and for a number that RFC 5545,
  // 3.3.10 forbids. A week of the month is 1 to 5, or -1 for the last.
  virtual Rule initDailyRecurrenceWithInterval(int interval, const End& end) = 0;
  virtual Rule initWeeklyRecurrenceWithInterval(int interval, const End& end) = 0;
  virtual Rule initWeeklyRecurrenceWithInterval(int interval, const Numbers& forDaysOfTheWeek, const End& end) = 0;
  virtual Rule initMonthlyRecurrenceWithInterval(int interval, const End& end) = 0;
  virtual Rule initMonthlyRecurrenceWithInterval(int interval, const Numbers& forDaysOfTheMonth, const End& end) = 0;
  virtual Rule initMonthlyRecurrenceWithInterval(int interval, int forDayOfTheWeek, int forWeekOfTheMonth,
                                                 const End& end) = 0;
  virtual Rule initYearlyRecurrenceWithInterval(int interval, const End& end) = 0;
  virtual Rule initYearlyRecurrenceWithInterval(int interval, const Numbers& forMonthsOfTheYear, const End& end) = 0;
  virtual Rule initYearlyRecurrenceWithInterval(int interval, int forDayOfTheWeek, int forWeekOfTheMonth,
                                                const Numbers& forMonthsOfTheYear, const End& end) = 0;
};

}  // namespace orlocal
