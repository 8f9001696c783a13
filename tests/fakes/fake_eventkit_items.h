#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fakes/fake_clock.h"
#include "platform/eventkit_items.h"

namespace orlocal::fakes {

// The platform's objects as plain values in memory. Tests read and write the members.

class FakeSource : public EKSource {
 public:
  explicit FakeSource(std::string title) : m_title(std::move(title)) {}
  std::string title() const override { return m_title; }

  std::string m_title;
};

class FakeCalendar : public EKCalendar {
 public:
  OptionalText title() const override { return m_title; }
  void setTitle(const OptionalText& title) override { m_title = title; }
  OptionalText notes() const override { return m_notes; }
  void setNotes(const OptionalText& notes) override { m_notes = notes; }
  int type() const override { return m_type; }
  OptionalText calendarIdentifier() const override { return m_identifier; }
  bool isImmutable() const override { return m_immutable; }
  bool isSubscribed() const override { return m_subscribed; }
  bool allowsContentModifications() const override { return m_allowsContentModifications; }
  std::optional<Color> color() const override { return m_color; }
  void setColor(const Color& color) override { m_color = color; }
  std::shared_ptr<EKSource> source() const override { return m_source; }
  void setSource(std::shared_ptr<EKSource> source) override { m_source = std::move(source); }

  EKEntityType m_kind = EKEntityType::kEvent;
  OptionalText m_identifier;
  OptionalText m_title;
  OptionalText m_notes;
  int m_type = 0;
  bool m_immutable = false;
  bool m_subscribed = false;
  bool m_allowsContentModifications = true;
  std::optional<Color> m_color;
  std::shared_ptr<EKSource> m_source;
};

class FakeAlarm : public EKAlarm {
 public:
  std::optional<Date> absoluteDate() const override { return m_absoluteDate; }
  void setAbsoluteDate(std::optional<Date> date) override;
  double relativeOffset() const override { return m_relativeOffset; }
  void setRelativeOffset(double seconds) override;
  OptionalText emailAddress() const override { return m_emailAddress; }
  void setEmailAddress(const OptionalText& address) override { set(m_emailAddress, address); }
  OptionalText soundName() const override { return m_soundName; }
  void setSoundName(const OptionalText& name) override { set(m_soundName, name); }
  OptionalText url() const override { return m_url; }
  void setUrl(const OptionalText& url) override { set(m_url, url); }
  int type() const override;
  void setType(EKAlarmType type) override { m_type = static_cast<int>(type); }
  std::optional<Date> creationDate() const override { return m_creationDate; }

  std::optional<Date> m_absoluteDate;
  double m_relativeOffset = 0;
  OptionalText m_emailAddress;
  OptionalText m_soundName;
  OptionalText m_url;
  std::optional<int> m_type;  ///< when it was named
  std::optional<Date> m_creationDate;

 private:
  void set(OptionalText& text, const OptionalText& value) {
    text = value;
    m_type.reset();
  }
};

class FakeDayOfWeek : public EKRecurrenceDayOfWeek {
 public:
  explicit FakeDayOfWeek(long day, long week = 0) : m_day(day), m_week(week) {}
  long dayOfTheWeek() const override { return m_day; }
  long weekNumber() const override { return m_week; }

  long m_day;
  long m_week;
};

class FakeRecurrenceEnd : public EKRecurrenceEnd {
 public:
  std::optional<Date> endDate() const override { return m_endDate; }
  int occurrenceCount() const override { return m_count; }

  std::optional<Date> m_endDate;
  int m_count = 0;
};

class FakeRecurrenceRule : public EKRecurrenceRule {
 public:
  int frequency() const override { return m_frequency; }
  int interval() const override { return m_interval; }
  int firstDayOfTheWeek() const override { return m_firstDayOfTheWeek; }
  std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> daysOfTheWeek() const override { return m_daysOfTheWeek; }
  std::vector<long> daysOfTheMonth() const override { return m_daysOfTheMonth; }
  std::vector<long> monthsOfTheYear() const override { return m_monthsOfTheYear; }
  std::shared_ptr<EKRecurrenceEnd> recurrenceEnd() const override { return m_end; }

  int m_frequency = 0;
  int m_interval = 1;
  int m_firstDayOfTheWeek = 0;
  std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> m_daysOfTheWeek;
  std::vector<long> m_daysOfTheMonth;
  std::vector<long> m_monthsOfTheYear;
  std::shared_ptr<EKRecurrenceEnd> m_end;
};

class FakeParticipant : public EKParticipant {
 public:
  OptionalText name() const override { return m_name; }
  OptionalText url() const override { return m_url; }
  std::vector<std::string> emailAddresses() const override { return m_emailAddresses; }
  int participantStatus() const override { return m_status; }
  int participantRole() const override { return m_role; }
  int participantType() const override { return m_type; }

  OptionalText m_name;
  OptionalText m_url;
  std::vector<std::string> m_emailAddresses;
  int m_status = 0;
  int m_role = 0;
  int m_type = 0;
};

/// What events and reminders have in common.
template <class Base>
class FakeItem : public Base {
 public:
  std::shared_ptr<EKCalendar> calendar() const override { return m_calendar; }
  void setCalendar(std::shared_ptr<EKCalendar> calendar) override { m_calendar = std::move(calendar); }
  OptionalText title() const override { return m_title; }
  void setTitle(const OptionalText& title) override { m_title = title; }
  OptionalText notes() const override { return m_notes; }
  void setNotes(const OptionalText& notes) override { m_notes = notes; }
  OptionalText url() const override { return m_url; }
  void setUrl(const OptionalText& url) override { m_url = url; }
  OptionalText calendarItemIdentifier() const override { return m_itemIdentifier; }
  OptionalText calendarItemExternalIdentifier() const override { return m_externalIdentifier; }
  std::optional<Date> lastModifiedDate() const override { return m_lastModifiedDate; }
  std::optional<Date> creationDate() const override { return m_creationDate; }
  bool hasAlarms() const override { return !m_alarms.empty(); }
  std::vector<std::shared_ptr<EKAlarm>> alarms() const override { return m_alarms; }
  void addAlarm(std::shared_ptr<EKAlarm> alarm) override { m_alarms.push_back(std::move(alarm)); }
  void removeAlarm(const std::shared_ptr<EKAlarm>& alarm) override { std::erase(m_alarms, alarm); }

  std::shared_ptr<EKCalendar> m_calendar;
  OptionalText m_title;
  OptionalText m_notes;
  OptionalText m_url;
  OptionalText m_itemIdentifier;
  OptionalText m_externalIdentifier;
  std::optional<Date> m_lastModifiedDate;
  std::optional<Date> m_creationDate;
  std::vector<std::shared_ptr<EKAlarm>> m_alarms;
};

class FakeEvent : public FakeItem<EKEvent> {
 public:
  std::optional<Date> startDate() const override { return m_startDate; }
  void setStartDate(std::optional<Date> date) override { m_startDate = date; }
  std::optional<Date> endDate() const override { return m_endDate; }
  void setEndDate(std::optional<Date> date) override { m_endDate = date; }
  bool isAllDay() const override { return m_allDay; }
  void setAllDay(bool allDay) override { m_allDay = allDay; }
  OptionalText location() const override { return m_location; }
  void setLocation(const OptionalText& location) override { m_location = location; }
  std::shared_ptr<const TimeZone> timeZone() const override { return m_timeZone; }
  OptionalText eventIdentifier() const override { return m_eventIdentifier; }
  std::optional<Date> occurrenceDate() const override { return m_occurrenceDate ? m_occurrenceDate : m_startDate; }
  bool isDetached() const override { return m_detached; }
  std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> recurrenceRules() const override { return m_rules; }
  void addRecurrenceRule(std::shared_ptr<EKRecurrenceRule> rule) override;
  void removeRecurrenceRule(const std::shared_ptr<EKRecurrenceRule>& rule) override;
  void setRecurrenceRules(std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> rules) override;
  bool hasAttendees() const override { return m_attendees && !m_attendees->empty(); }
  std::optional<std::vector<std::shared_ptr<EKParticipant>>> attendees() const override { return m_attendees; }

  std::optional<Date> m_startDate;
  std::optional<Date> m_endDate;
  bool m_allDay = false;
  OptionalText m_location;
  std::shared_ptr<const TimeZone> m_timeZone;
  OptionalText m_eventIdentifier;
  std::optional<Date> m_occurrenceDate;
  bool m_detached = false;
  std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> m_rules;
  std::vector<Date> m_excluded;  ///< occurrence dates of a series that are none any more
  std::optional<std::vector<std::shared_ptr<EKParticipant>>> m_attendees;
};

class FakeReminder : public FakeItem<EKReminder> {
 public:
  explicit FakeReminder(Date now = fakeNow()) : m_now(now) {}

  std::optional<DateComponents> dueDateComponents() const override { return m_due; }
  void setDueDateComponents(std::optional<DateComponents> parts) override { m_due = std::move(parts); }
  bool isCompleted() const override { return m_completionDate.has_value(); }
  void setCompleted(bool completed) override;
  std::optional<Date> completionDate() const override { return m_completionDate; }
  void setCompletionDate(std::optional<Date> date) override { m_completionDate = date; }
  int priority() const override { return m_priority; }
  void setPriority(int priority) override { m_priority = priority; }

  Date m_now;  ///< when completing happens
  std::optional<DateComponents> m_due;
  std::optional<Date> m_completionDate;
  int m_priority = 0;
};

}  // namespace orlocal::fakes
