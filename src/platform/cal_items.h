#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/color.h"
#include "platform/date.h"
#include "platform/text.h"

namespace orlocal {

// The objects of the older calendar platform. Main thread only; references are shared; changes stay in the object until
// the store saves it. Texts are UTF-8; absent texts are `std::nullopt`.

enum class CalSpan : int { kThisEvent = 0, kFutureEvents = 1, kAllEvents = 2 };
/// `CalRecurrenceRule::recurrenceType()`; other numbers may come from newer platforms.
enum class CalRecurrenceType : int { kDaily = 0, kWeekly = 1, kMonthly = 2, kYearly = 3 };

// What an alarm does; the platform names its actions by text.
inline constexpr std::string_view CalAlarmActionDisplay = "DISPLAY";
inline constexpr std::string_view CalAlarmActionEmail = "EMAIL";
inline constexpr std::string_view CalAlarmActionProcedure = "PROCEDURE";
inline constexpr std::string_view CalAlarmActionSound = "SOUND";

/// A calendar, of events or of tasks: callers are not told which. A store that keeps the two apart refuses an item in
/// the wrong one when it is saved.
class CalCalendar {
 public:
  virtual ~CalCalendar() = default;
  virtual OptionalText title() const = 0;
  virtual void setTitle(const OptionalText& title) = 0;
  virtual OptionalText notes() const = 0;
  virtual void setNotes(const OptionalText& notes) = 0;
  /// "Local", "CalDav", "Exchange", "Subscription" or "Birthday"; other texts may come from newer platforms.
  virtual OptionalText type() const = 0;
  virtual OptionalText uid() const = 0;
  virtual bool isEditable() const = 0;
  virtual std::optional<Color> color() const = 0;
  virtual void setColor(const Color& color) = 0;
};

/// The notice that an event or a task gives: at a moment, or some seconds from its start or due moment.
class CalAlarm {
 public:
  virtual ~CalAlarm() = default;
  virtual std::optional<Date> absoluteTrigger() const = 0;
  /// Makes the alarm absolute; none makes it relative again.
  virtual void setAbsoluteTrigger(std::optional<Date> date) = 0;
  /// One of the `CalAlarmAction…` texts; a new alarm has none.
  virtual OptionalText action() const = 0;
  virtual void setAction(const OptionalText& action) = 0;
  virtual OptionalText emailAddress() const = 0;
  virtual void setEmailAddress(const OptionalText& address) = 0;
  /// Seconds; negative is before. 0 for an absolute alarm.
  virtual double relativeTrigger() const = 0;
  /// Makes the alarm relative.
  virtual void setRelativeTrigger(double seconds) = 0;
  virtual OptionalText sound() const = 0;
  virtual void setSound(const OptionalText& name) = 0;
  virtual OptionalText url() const = 0;
  virtual void setUrl(const OptionalText& url) = 0;
};

class CalRecurrenceEnd {
 public:
  virtual ~CalRecurrenceEnd() = default;
  virtual bool usesEndDate() const = 0;
  /// None when the end is a count.
  virtual std::optional<Date> endDate() const = 0;
  /// 0 when the end is a date.
  virtual int occurrenceCount() const = 0;
};

/// The n-th of some weekday in its month.
class CalNthWeekDay {
 public:
  virtual ~CalNthWeekDay() = default;
  virtual int weekNumber() const = 0;    ///< 1 to 5; -1 is the last
  virtual int dayOfTheWeek() const = 0;  ///< 1 Sunday to 7 Saturday
};

/// How an event repeats. Immutable. Lists that do not narrow the rule are empty.
class CalRecurrenceRule {
 public:
  virtual ~CalRecurrenceRule() = default;
  /// A `CalRecurrenceType`.
  virtual int recurrenceType() const = 0;
  virtual int recurrenceInterval() const = 0;
  /// 1 Sunday to 7 Saturday; 0 when the rule does not say.
  virtual int firstDayOfTheWeek() const = 0;
  /// None when the rule goes on.
  virtual std::shared_ptr<CalRecurrenceEnd> recurrenceEnd() const = 0;
  /// 1 Sunday to 7 Saturday. Days that are meant as the n-th of their month are `nthWeekDaysOfTheMonth` and not here.
  virtual std::vector<long> daysOfTheWeek() const = 0;
  virtual std::vector<long> daysOfTheMonth() const = 0;
  virtual std::vector<std::shared_ptr<CalNthWeekDay>> nthWeekDaysOfTheMonth() const = 0;
  virtual std::vector<long> monthsOfTheYear() const = 0;
};

/// Somebody invited to an event. Read only.
class CalAttendee {
 public:
  virtual ~CalAttendee() = default;
  /// An address in URL form, usually "mailto:…".
  virtual OptionalText address() const = 0;
  virtual OptionalText commonName() const = 0;
  /// "NEEDS-ACTION", "ACCEPTED", "DECLINED", "TENTATIVE" or another participation status of RFC 5545, 3.2.12.
  virtual OptionalText status() const = 0;
};

/// What events and tasks have in common.
class CalCalendarItem {
 public:
  virtual ~CalCalendarItem() = default;
  virtual std::shared_ptr<CalCalendar> calendar() const = 0;
  virtual void setCalendar(std::shared_ptr<CalCalendar> calendar) = 0;
  virtual OptionalText title() const = 0;
  virtual void setTitle(const OptionalText& title) = 0;
  virtual OptionalText notes() const = 0;
  virtual void setNotes(const OptionalText& notes) = 0;
  virtual OptionalText url() const = 0;
  virtual void setUrl(const OptionalText& url) = 0;
  virtual OptionalText uid() const = 0;
  /// When the item was last written; none before its first save.
  virtual std::optional<Date> dateStamp() const = 0;
  virtual bool hasAlarm() const = 0;
  /// When the next of the alarms still to come goes off; none when there is none.
  virtual std::optional<Date> nextAlarmDate() const = 0;
  virtual std::vector<std::shared_ptr<CalAlarm>> alarms() const = 0;
  virtual void addAlarm(std::shared_ptr<CalAlarm> alarm) = 0;
  virtual void removeAlarm(const std::shared_ptr<CalAlarm>& alarm) = 0;
  /// Removes those of `alarms` that the item has.
  virtual void removeAlarms(const std::vector<std::shared_ptr<CalAlarm>>& alarms) = 0;
};

/// An event, or one occurrence of a repeating one.
class CalEvent : public CalCalendarItem {
 public:
  virtual std::optional<Date> startDate() const = 0;
  virtual void setStartDate(std::optional<Date> date) = 0;
  virtual std::optional<Date> endDate() const = 0;
  virtual void setEndDate(std::optional<Date> date) = 0;
  /// Where the rule put this occurrence, before any change of its own.
  virtual std::optional<Date> occurrence() const = 0;
  virtual bool isAllDay() const = 0;
  virtual void setIsAllDay(bool allDay) = 0;
  virtual bool isDetached() const = 0;
  virtual OptionalText location() const = 0;
  virtual void setLocation(const OptionalText& location) = 0;
  /// None when the event does not repeat.
  virtual std::shared_ptr<CalRecurrenceRule> recurrenceRule() const = 0;
  virtual void setRecurrenceRule(std::shared_ptr<CalRecurrenceRule> rule) = 0;
  /// None when nobody was ever invited.
  virtual std::optional<std::vector<std::shared_ptr<CalAttendee>>> attendees() const = 0;
};

class CalTask : public CalCalendarItem {
 public:
  virtual std::optional<Date> dueDate() const = 0;
  virtual void setDueDate(std::optional<Date> date) = 0;
  virtual std::optional<Date> completedDate() const = 0;
  /// A date completes the task; none makes it open again.
  virtual void setCompletedDate(std::optional<Date> date) = 0;
  virtual bool isCompleted() const = 0;
  /// Completing sets the completion date to now; uncompleting clears it.
  virtual void setIsCompleted(bool completed) = 0;
  virtual int priority() const = 0;  ///< 0 none, 1 highest to 9 lowest
  virtual void setPriority(int priority) = 0;
};

}  // namespace orlocal
