#pragma once

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "fakes/fake_clock.h"
#include "platform/calendar_store_items.h"

namespace orlocal::fakes {

// The older platform's objects as plain values: a test sets any field.

class FakeCalCalendar : public CalCalendar {
 public:
  OptionalText m_title, m_notes, m_type = "Local", m_uid;
  bool m_isEditable = true;
  std::optional<Color> m_color;

  OptionalText title() const override { return m_title; }
  void setTitle(const OptionalText& title) override { m_title = title; }
  OptionalText notes() const override { return m_notes; }
  void setNotes(const OptionalText& notes) override { m_notes = notes; }
  OptionalText type() const override { return m_type; }
  OptionalText uid() const override { return m_uid; }
  bool isEditable() const override { return m_isEditable; }
  std::optional<Color> color() const override { return m_color; }
  void setColor(const Color& color) override { m_color = color; }
};

class FakeCalAlarm : public CalAlarm {
 public:
  std::optional<Date> m_absoluteTrigger;
  double m_relativeTrigger = 0;
  OptionalText m_action, m_emailAddress, m_sound, m_url;

  std::optional<Date> absoluteTrigger() const override { return m_absoluteTrigger; }
  void setAbsoluteTrigger(std::optional<Date> date) override {
    m_absoluteTrigger = date;
    m_relativeTrigger = 0;
  }
  OptionalText action() const override { return m_action; }
  void setAction(const OptionalText& action) override { m_action = action; }
  OptionalText emailAddress() const override { return m_emailAddress; }
  void setEmailAddress(const OptionalText& address) override { m_emailAddress = address; }
  double relativeTrigger() const override { return m_relativeTrigger; }
  void setRelativeTrigger(double seconds) override {
    m_relativeTrigger = seconds;
    m_absoluteTrigger.reset();
  }
  OptionalText sound() const override { return m_sound; }
  void setSound(const OptionalText& name) override { m_sound = name; }
  OptionalText url() const override { return m_url; }
  void setUrl(const OptionalText& url) override { m_url = url; }
};

class FakeCalRecurrenceEnd : public CalRecurrenceEnd {
 public:
  std::optional<Date> m_endDate;
  int m_occurrenceCount = 0;

  bool usesEndDate() const override { return m_endDate.has_value(); }
  std::optional<Date> endDate() const override { return m_endDate; }
  int occurrenceCount() const override { return m_occurrenceCount; }
};

class FakeCalNthWeekDay : public CalNthWeekDay {
 public:
  FakeCalNthWeekDay(int week, int day) : m_weekNumber(week), m_dayOfTheWeek(day) {}
  int weekNumber() const override { return m_weekNumber; }
  int dayOfTheWeek() const override { return m_dayOfTheWeek; }

 private:
  int m_weekNumber;
  int m_dayOfTheWeek;
};

class FakeCalRecurrenceRule : public CalRecurrenceRule {
 public:
  int m_recurrenceType = 0, m_recurrenceInterval = 1, m_firstDayOfTheWeek = 0;
  std::shared_ptr<CalRecurrenceEnd> m_end;
  std::vector<long> m_daysOfTheWeek, m_daysOfTheMonth, m_monthsOfTheYear;
  std::vector<std::shared_ptr<CalNthWeekDay>> m_nthWeekDays;

  int recurrenceType() const override { return m_recurrenceType; }
  int recurrenceInterval() const override { return m_recurrenceInterval; }
  int firstDayOfTheWeek() const override { return m_firstDayOfTheWeek; }
  std::shared_ptr<CalRecurrenceEnd> recurrenceEnd() const override { return m_end; }
  std::vector<long> daysOfTheWeek() const override { return m_daysOfTheWeek; }
  std::vector<long> daysOfTheMonth() const override { return m_daysOfTheMonth; }
  std::vector<std::shared_ptr<CalNthWeekDay>> nthWeekDaysOfTheMonth() const override { return m_nthWeekDays; }
  std::vector<long> monthsOfTheYear() const override { return m_monthsOfTheYear; }
};

class FakeCalAttendee : public CalAttendee {
 public:
  OptionalText m_address, m_commonName, m_status;

  OptionalText address() const override { return m_address; }
  OptionalText commonName() const override { return m_commonName; }
  OptionalText status() const override { return m_status; }
};

/// What events and tasks share; `Interface` is the one or the other.
template <class Interface>
class FakeCalItem : public Interface {
 public:
  std::shared_ptr<CalCalendar> m_calendar;
  OptionalText m_title, m_notes, m_url, m_uid;
  std::optional<Date> m_dateStamp;
  std::vector<std::shared_ptr<CalAlarm>> m_alarms;

  std::shared_ptr<CalCalendar> calendar() const override { return m_calendar; }
  void setCalendar(std::shared_ptr<CalCalendar> calendar) override { m_calendar = std::move(calendar); }
  OptionalText title() const override { return m_title; }
  void setTitle(const OptionalText& title) override { m_title = title; }
  OptionalText notes() const override { return m_notes; }
  void setNotes(const OptionalText& notes) override { m_notes = notes; }
  OptionalText url() const override { return m_url; }
  void setUrl(const OptionalText& url) override { m_url = url; }
  OptionalText uid() const override { return m_uid; }
  std::optional<Date> dateStamp() const override { return m_dateStamp; }
  bool hasAlarm() const override { return !m_alarms.empty(); }
  std::optional<Date> nextAlarmDate() const override {
    std::optional<Date> next;
    for (const auto& alarm : m_alarms) {
      const auto seconds = std::chrono::duration_cast<std::chrono::microseconds>(
          std::chrono::duration<double>(alarm->relativeTrigger()));
      const auto base = alarmBase();
      const auto date = alarm->absoluteTrigger() ? alarm->absoluteTrigger()
                        : base                   ? std::optional<Date>(*base + seconds)
                                                 : std::nullopt;
      if (date && *date >= fakeNow() && (!next || *date < *next)) next = date;
    }
    return next;
  }
  std::vector<std::shared_ptr<CalAlarm>> alarms() const override { return m_alarms; }
  void addAlarm(std::shared_ptr<CalAlarm> alarm) override { m_alarms.push_back(std::move(alarm)); }
  void removeAlarm(const std::shared_ptr<CalAlarm>& alarm) override { std::erase(m_alarms, alarm); }
  void removeAlarms(const std::vector<std::shared_ptr<CalAlarm>>& alarms) override {
    std::erase_if(m_alarms, [&](const auto& own) { return std::ranges::find(alarms, own) != alarms.end(); });
  }

 protected:
  /// What relative alarms count from.
  virtual std::optional<Date> alarmBase() const = 0;
};

class FakeCalEvent : public FakeCalItem<CalEvent> {
 public:
  std::optional<Date> m_startDate, m_endDate, m_occurrence;
  bool m_isAllDay = false, m_isDetached = false;
  OptionalText m_location;
  std::shared_ptr<CalRecurrenceRule> m_recurrenceRule;
  std::vector<Date> m_excluded;  ///< starts of removed occurrences
  std::optional<std::vector<std::shared_ptr<CalAttendee>>> m_attendees;

  std::optional<Date> startDate() const override { return m_startDate; }
  void setStartDate(std::optional<Date> date) override { m_startDate = date; }
  std::optional<Date> endDate() const override { return m_endDate; }
  void setEndDate(std::optional<Date> date) override { m_endDate = date; }
  std::optional<Date> occurrence() const override { return m_occurrence; }
  bool isAllDay() const override { return m_isAllDay; }
  void setIsAllDay(bool allDay) override { m_isAllDay = allDay; }
  bool isDetached() const override { return m_isDetached; }
  OptionalText location() const override { return m_location; }
  void setLocation(const OptionalText& location) override { m_location = location; }
  std::shared_ptr<CalRecurrenceRule> recurrenceRule() const override { return m_recurrenceRule; }
  void setRecurrenceRule(std::shared_ptr<CalRecurrenceRule> rule) override { m_recurrenceRule = std::move(rule); }
  std::optional<std::vector<std::shared_ptr<CalAttendee>>> attendees() const override { return m_attendees; }

 protected:
  std::optional<Date> alarmBase() const override { return m_startDate; }
};

class FakeCalTask : public FakeCalItem<CalTask> {
 public:
  std::optional<Date> m_dueDate, m_completedDate;
  bool m_isCompleted = false;
  int m_priority = 0;

  std::optional<Date> dueDate() const override { return m_dueDate; }
  void setDueDate(std::optional<Date> date) override { m_dueDate = date; }
  std::optional<Date> completedDate() const override { return m_completedDate; }
  void setCompletedDate(std::optional<Date> date) override {
    m_completedDate = date;
    m_isCompleted = date.has_value();
  }
  bool isCompleted() const override { return m_isCompleted; }
  void setIsCompleted(bool completed) override;
  int priority() const override { return m_priority; }
  void setPriority(int priority) override { m_priority = priority; }

 protected:
  std::optional<Date> alarmBase() const override { return m_dueDate; }
};

}  // namespace orlocal::fakes
