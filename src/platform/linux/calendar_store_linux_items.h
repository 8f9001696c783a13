#pragma once

#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/calendar_store_items.h"
#include "platform/linux/eventkit_alarm.h"
#include "platform/linux/eventkit_calendar.h"
#include "platform/linux/eventkit_event.h"
#include "platform/linux/eventkit_recurrence.h"
#include "platform/linux/eventkit_reminder.h"
#include "platform/linux/store_access.h"

namespace orlocal {

// The older platform's objects. Each is another face of the current platform's object, so that both platforms read and
// write the store in one way.

class CalCalendarObject final : public CalCalendar {
 public:
  explicit CalCalendarObject(std::shared_ptr<CalendarObject> calendar) : m_calendar(std::move(calendar)) {}
  OptionalText title() const override { return m_calendar->title(); }
  void setTitle(const OptionalText& title) override { m_calendar->setTitle(title); }
  OptionalText notes() const override { return m_calendar->notes(); }
  void setNotes(const OptionalText& notes) override { m_calendar->setNotes(notes); }
  OptionalText type() const override;
  OptionalText uid() const override { return m_calendar->calendarIdentifier(); }
  bool isEditable() const override { return m_calendar->allowsContentModifications() && !m_calendar->isImmutable(); }
  std::optional<Color> color() const override { return m_calendar->color(); }
  void setColor(const Color& color) override { m_calendar->setColor(color); }

  const std::shared_ptr<CalendarObject>& calendar() const { return m_calendar; }

 private:
  std::shared_ptr<CalendarObject> m_calendar;
};

class CalAlarmObject final : public CalAlarm {
 public:
  /// A new alarm has no action until one is set; the current platform's alarms always have one.
  CalAlarmObject(std::shared_ptr<AlarmObject> alarm, bool isNew) : m_alarm(std::move(alarm)), m_hasAction(!isNew) {}
  std::optional<Date> absoluteTrigger() const override { return m_alarm->absoluteDate(); }
  void setAbsoluteTrigger(std::optional<Date> date) override { m_alarm->setAbsoluteDate(date); }
  OptionalText action() const override;
  void setAction(const OptionalText& action) override;
  OptionalText emailAddress() const override { return m_alarm->emailAddress(); }
  void setEmailAddress(const OptionalText& address) override;
  double relativeTrigger() const override { return m_alarm->relativeOffset(); }
  void setRelativeTrigger(double seconds) override { m_alarm->setRelativeOffset(seconds); }
  OptionalText sound() const override { return m_alarm->soundName(); }
  void setSound(const OptionalText& name) override;
  OptionalText url() const override { return m_alarm->url(); }
  void setUrl(const OptionalText& url) override;

  const std::shared_ptr<AlarmObject>& alarm() const { return m_alarm; }

 private:
  std::shared_ptr<AlarmObject> m_alarm;
  bool m_hasAction;
};

class CalRecurrenceRuleObject final : public CalRecurrenceRule {
 public:
  explicit CalRecurrenceRuleObject(std::shared_ptr<EKRecurrenceRule> rule) : m_rule(std::move(rule)) {}
  int recurrenceType() const override { return m_rule->frequency(); }
  int recurrenceInterval() const override { return m_rule->interval(); }
  int firstDayOfTheWeek() const override { return m_rule->firstDayOfTheWeek(); }
  std::shared_ptr<CalRecurrenceEnd> recurrenceEnd() const override;
  std::vector<long> daysOfTheWeek() const override;
  std::vector<long> daysOfTheMonth() const override { return m_rule->daysOfTheMonth(); }
  std::vector<std::shared_ptr<CalNthWeekDay>> nthWeekDaysOfTheMonth() const override;
  std::vector<long> monthsOfTheYear() const override { return m_rule->monthsOfTheYear(); }

  const std::shared_ptr<EKRecurrenceRule>& rule() const { return m_rule; }

 private:
  std::shared_ptr<EKRecurrenceRule> m_rule;
};

class CalRecurrenceEndObject final : public CalRecurrenceEnd {
 public:
  explicit CalRecurrenceEndObject(std::shared_ptr<EKRecurrenceEnd> end) : m_end(std::move(end)) {}
  bool usesEndDate() const override { return m_end->endDate().has_value(); }
  std::optional<Date> endDate() const override { return m_end->endDate(); }
  int occurrenceCount() const override { return m_end->occurrenceCount(); }

  const std::shared_ptr<EKRecurrenceEnd>& end() const { return m_end; }

 private:
  std::shared_ptr<EKRecurrenceEnd> m_end;
};

/// What events and tasks have in common: `Interface` is `CalEvent` or `CalTask`, `Object` what it is a face of.
template <class Interface, class Object>
class CalItemObject : public Interface {
 public:
  CalItemObject(std::shared_ptr<StoreAccess> access, std::shared_ptr<Object> object)
      : m_access(std::move(access)), m_object(std::move(object)) {}

  std::shared_ptr<CalCalendar> calendar() const override;
  void setCalendar(std::shared_ptr<CalCalendar> calendar) override;
  OptionalText title() const override { return m_object->title(); }
  void setTitle(const OptionalText& title) override { m_object->setTitle(title); }
  OptionalText notes() const override { return m_object->notes(); }
  void setNotes(const OptionalText& notes) override { m_object->setNotes(notes); }
  OptionalText url() const override { return m_object->url(); }
  void setUrl(const OptionalText& url) override { m_object->setUrl(url); }
  std::optional<Date> dateStamp() const override { return m_object->lastModifiedDate(); }
  bool hasAlarm() const override { return m_object->hasAlarms(); }
  std::optional<Date> nextAlarmDate() const override;
  std::vector<std::shared_ptr<CalAlarm>> alarms() const override;
  void addAlarm(std::shared_ptr<CalAlarm> alarm) override;
  void removeAlarm(const std::shared_ptr<CalAlarm>& alarm) override;
  void removeAlarms(const std::vector<std::shared_ptr<CalAlarm>>& alarms) override;

  const std::shared_ptr<Object>& object() const { return m_object; }

 protected:
  /// What relative alarms count from: an event's start, a task's due moment.
  virtual std::optional<Date> alarmAnchor() const = 0;

  std::shared_ptr<StoreAccess> m_access;
  std::shared_ptr<Object> m_object;

 private:
  /// Faces of alarms that were handed out or added, so that callers meet the same ones again.
  mutable std::vector<std::shared_ptr<CalAlarmObject>> m_alarms;
};

class CalEventObject final : public CalItemObject<CalEvent, EventObject> {
 public:
  using CalItemObject::CalItemObject;
  OptionalText uid() const override { return m_object->eventIdentifier(); }
  std::optional<Date> startDate() const override { return m_object->startDate(); }
  void setStartDate(std::optional<Date> date) override { m_object->setStartDate(date); }
  std::optional<Date> endDate() const override { return m_object->endDate(); }
  void setEndDate(std::optional<Date> date) override { m_object->setEndDate(date); }
  std::optional<Date> occurrence() const override { return m_object->occurrenceDate(); }
  bool isAllDay() const override { return m_object->isAllDay(); }
  void setIsAllDay(bool allDay) override { m_object->setAllDay(allDay); }
  bool isDetached() const override { return m_object->isDetached(); }
  OptionalText location() const override { return m_object->location(); }
  void setLocation(const OptionalText& location) override { m_object->setLocation(location); }
  std::shared_ptr<CalRecurrenceRule> recurrenceRule() const override;
  void setRecurrenceRule(std::shared_ptr<CalRecurrenceRule> rule) override;
  std::optional<std::vector<std::shared_ptr<CalAttendee>>> attendees() const override;

 protected:
  std::optional<Date> alarmAnchor() const override { return startDate(); }
};

class CalTaskObject final : public CalItemObject<CalTask, ReminderObject> {
 public:
  using CalItemObject::CalItemObject;
  OptionalText uid() const override { return m_object->calendarItemIdentifier(); }
  std::optional<Date> dueDate() const override;
  void setDueDate(std::optional<Date> date) override;
  std::optional<Date> completedDate() const override { return m_object->completionDate(); }
  void setCompletedDate(std::optional<Date> date) override { m_object->setCompletionDate(date); }
  bool isCompleted() const override { return m_object->isCompleted(); }
  void setIsCompleted(bool completed) override { m_object->setCompleted(completed); }
  int priority() const override { return m_object->priority(); }
  void setPriority(int priority) override { m_object->setPriority(priority); }

 protected:
  std::optional<Date> alarmAnchor() const override { return dueDate(); }
};

}  // namespace orlocal
