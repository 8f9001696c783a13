#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "backend/property_value.h"
#include "platform/cal_framework.h"
#include "platform/color.h"
#include "platform/eventkit_items.h"

namespace orlocal {

/// The calendar back end over the older calendar framework, with tasks for reminders, attendees for participants and
/// one kind of calendar. It keeps no store: every access asks for the default one anew.
///
/// Methods that act give 0, or -1 with `g_llasterror` set; getters give a text, or none when there is none or on
/// failure; counts are counts or -1. A few failures set the code and still give 0, so callers look at the code.
/// Platform exceptions are caught where a method says so (code 9999, reason in `getLastErrorString`) and leave every
/// other method. Keywords are compared after lower-casing; indexes count from 1. Main thread only.
class iCalFunctions {
 public:
  using DaysOfTheWeek = std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>>;
  using Numbers = std::vector<long>;

  /// The one instance, made and initialised on first use; lives as long as the process. Any thread.
  static iCalFunctions* sharedICalFunctions();
  /// Makes the shared instance, not yet initialised. Null once there is one.
  static iCalFunctions* allocWithZone();

  iCalFunctions(const iCalFunctions&) = delete;
  iCalFunctions& operator=(const iCalFunctions&) = delete;
  virtual ~iCalFunctions() = default;

  // State (state.cpp)

  /// Empties every slot but the last-error string.
  virtual void init();
  /// Empties every slot but the recurrence end, and both predicates.
  virtual void releaseItems();
  virtual std::int32_t resetLastErrorString();
  /// Reason of the last caught exception, or the store's words when it refused (9998).
  virtual OptionalText getLastErrorString() const;
  /// Gives nothing.
  virtual OptionalText getCalendars();
  /// None for a name that is not in the table.
  static std::optional<Color> colorFromString(const OptionalText& name);

  // Calendars (calendars.cpp). Opens release every current object first.

  /// The calendars titled in `names`, one a line; all of them for "all"; without names the current one, else all. None
  /// with 9013 when a title is unknown.
  virtual std::optional<CalCalendarArray> calendarArrayFromString(const OptionalText& names);
  virtual std::int32_t openCalendarAt(std::int32_t index);
  virtual std::int32_t openCalendarWithUID(const OptionalText& uid);
  virtual std::int32_t openCalendarWithTitle(const OptionalText& title);
  /// Touches no slot.
  virtual std::shared_ptr<CalCalendar> getCalendarWithTitle(const OptionalText& title);
  virtual std::int32_t setCalendarProp(const OptionalText& property, const PropertyValue& value);
  /// Catches exceptions and then gives "!!ERROR!!". `at` and `uid` are not used, as in every getter that has them.
  virtual OptionalText getCalendarAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);

  // Events, and what they share with tasks (events.cpp, calendar_items.cpp)

  /// Keeps a predicate, narrowed to one event when there is a `uid`. Catches exceptions.
  virtual std::int32_t fetchEventsWithStartDate(std::optional<Date> start, std::optional<Date> end,
                                                const OptionalText& uid, const OptionalText& calendars);
  /// Catches exceptions.
  virtual std::int32_t openEventWithUID(const OptionalText& uid, std::optional<Date> occurrence);
  /// Keeps both predicates, so that a fetch can be walked.
  virtual std::int32_t openEventAt(std::int32_t index);
  virtual std::int32_t setEventProp(const OptionalText& property, const PropertyValue& value);
  virtual OptionalText getEventAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);
  /// Catches exceptions.
  virtual std::int32_t setCalendarItemProp(const OptionalText& property, const PropertyValue& value,
                                           CalCalendarItem* item);
  virtual OptionalText getCalendarItemAttribute(const OptionalText& property, CalCalendarItem* item);

  // Tasks (tasks.cpp)

  virtual std::int32_t fetchTasks(const OptionalText& calendars, const OptionalText& status, std::optional<Date> date);
  virtual std::int32_t fetchTasksWithCalendars(const OptionalText& calendars);
  virtual std::int32_t fetchTasksUncompleted(const OptionalText& calendars);
  virtual std::int32_t fetchTasksUncompleted(std::optional<Date> dueBefore, const OptionalText& calendars);
  virtual std::int32_t fetchTasksCompletedSince(std::optional<Date> date, const OptionalText& calendars);
  virtual std::int32_t openTaskWithUID(const OptionalText& uid);
  /// Keeps the current calendar and both predicates.
  virtual std::int32_t openTaskAt(std::int32_t index);
  virtual std::int32_t setTaskProp(const OptionalText& property, const PropertyValue& value);
  virtual OptionalText getTaskAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);

  // Alarms of the current event or task (alarms.cpp)

  /// `relTrigger` is in seconds, 0 for none. The new alarm does not become current.
  virtual std::int32_t addAlarm(const OptionalText& type, std::optional<Date> absTrigger, const OptionalText& action,
                                const OptionalText& eaddr, std::int32_t relTrigger, const OptionalText& sound,
                                const OptionalText& url);
  /// -1 removes all.
  virtual std::int32_t removeAlarmFrom(const OptionalText& type, std::int32_t at);
  virtual std::int32_t removeAllAlarmsFrom(const OptionalText& type);
  virtual std::int32_t openAlarmAt(std::int32_t index);
  virtual std::int32_t setAlarmProp(const OptionalText& property, const PropertyValue& value);
  virtual OptionalText getAlarmAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);

  // The recurrence rule of the current event (recurrence.cpp)

  /// Makes a daily rule, whatever the frequency word and the lists. `endWithDate` wins over a count of 1 or more.
  virtual std::int32_t addRecurrence(const OptionalText& frequency, std::int32_t interval,
                                     const std::optional<DaysOfTheWeek>& dotw, const std::optional<Numbers>& dotm,
                                     std::int32_t dow, std::int32_t weekOfTheMonth,
                                     const std::optional<Numbers>& monthsOfTheYear, std::optional<Date> endWithDate,
                                     std::int32_t endWithCount);
  virtual std::int32_t removeRecurrence();
  virtual OptionalText getEventRecurrenceRuleAttribute(const OptionalText& property, const OptionalText& recurrenceEnd);

  // Attendees of the current event (attendees.cpp)

  virtual std::int32_t openAttendeeAt(std::int32_t index);
  virtual OptionalText getAttendeeAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);
  /// The same; `atIndex` is not used.
  virtual OptionalText getEventAttendeeAttribute(const OptionalText& property, std::int32_t atIndex);

  // Create, save, remove, count (lifecycle.cpp)

  virtual std::int32_t newItem(const OptionalText& type);
  /// Saves the current calendar for every type but "reminderlist", which saves nothing. Catches exceptions and then
  /// gives 0: the code carries the failure.
  virtual std::int32_t saveItem(const OptionalText& type, const OptionalText& span);
  /// Catches exceptions and then gives 0.
  virtual std::int32_t removeItem(const OptionalText& type, const OptionalText& uid, std::optional<Date> occurrence,
                                  const OptionalText& span);
  virtual std::int32_t getObjectCount(const OptionalText& type);

 protected:
  iCalFunctions() = default;

  /// Saves the current item of `type`, "task" or "event".
  std::int32_t saveTaskOrEvent(const std::string& type, CalSpan span);

  OptionalText lastErrorString;
  std::shared_ptr<CalCalendar> m_calendar;
  std::shared_ptr<CalEvent> m_event;
  std::shared_ptr<CalTask> m_task;
  std::shared_ptr<CalAlarm> m_alarm;
  std::shared_ptr<CalAttendee> m_attendee;
  std::shared_ptr<CalRecurrenceRule> m_recurrencerule;
  std::shared_ptr<CalRecurrenceEnd> m_recurrenceend;
  std::shared_ptr<const CalPredicate> m_taskPredicate;
  std::shared_ptr<const CalPredicate> m_eventPredicate;

 private:
  static std::shared_ptr<CalCalendarStore> store();
  /// What a fetch asks in; none with the code set when a title is unknown or there are no calendars.
  std::optional<CalCalendarArray> calendarsToFetchFrom(const OptionalText& names);
  std::int32_t keepTaskPredicate(std::shared_ptr<const CalPredicate> predicate);
  /// The current item that a type word means, for adding an alarm or for removing one; null with the code set.
  CalCalendarItem* ownerToAddAlarmTo(const OptionalText& type);
  CalCalendarItem* ownerToRemoveAlarmsFrom(const OptionalText& type);
  std::int32_t failWithRefusal(const std::optional<Error>& error);
};

}  // namespace orlocal
