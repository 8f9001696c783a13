#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/color.h"
#include "platform/date.h"
#include "platform/text.h"
#include "platform/zone.h"

namespace orlocal {

// The objects of the current calendar platform. Main thread only; references are shared; changes stay in the object
// until the store saves it. Texts are UTF-8; absent texts are `std::nullopt`.

enum class EKEntityType : int { kEvent = 0, kReminder = 1 };
/// All of a series, whichever of its occurrences is at hand, is a span that only the older platform names.
enum class EKSpan : int { kThisEvent = 0, kFutureEvents = 1, kAllEvents = 2 };
enum class EKAlarmType : int { kDisplay = 0, kAudio = 1, kProcedure = 2, kEmail = 3 };
enum class EKRecurrenceFrequency : int { kDaily = 0, kWeekly = 1, kMonthly = 2, kYearly = 3 };
/// `EKCalendar::type()`; other numbers may come from newer platforms.
enum class EKCalendarType : int { kLocal = 0, kCalDAV = 1, kExchange = 2, kSubscription = 3, kBirthday = 4 };

/// Where calendars come from: this machine, an account, a subscription.
class EKSource {
 public:
  virtual ~EKSource() = default;
  virtual std::string title() const = 0;
};

/// A calendar of events or a reminder list.
class EKCalendar {
 public:
  virtual ~EKCalendar() = default;
  virtual OptionalText title() const = 0;
  virtual void setTitle(const OptionalText& title) = 0;
  /// Read and set by the older platform's callers alone.
  virtual OptionalText notes() const = 0;
  virtual void setNotes(const OptionalText& notes) = 0;
  /// An `EKCalendarType`.
  virtual int type() const = 0;
  virtual OptionalText calendarIdentifier() const = 0;
  /// Its own properties may not be changed: saving it is refused.
  virtual bool isImmutable() const = 0;
  virtual bool isSubscribed() const = 0;
  virtual bool allowsContentModifications() const = 0;
  virtual std::optional<Color> color() const = 0;
  virtual void setColor(const Color& color) = 0;
  virtual std::shared_ptr<EKSource> source() const = 0;
  virtual void setSource(std::shared_ptr<EKSource> source) = 0;
};

/// The notice that an event or a reminder gives: at a moment, or some seconds from its start or due moment.
class EKAlarm {
 public:
  virtual ~EKAlarm() = default;
  virtual std::optional<Date> absoluteDate() const = 0;
  /// Makes the alarm absolute; none makes it relative again.
  virtual void setAbsoluteDate(std::optional<Date> date) = 0;
  /// Seconds; negative is before. 0 for an absolute alarm.
  virtual double relativeOffset() const = 0;
  /// Makes the alarm relative.
  virtual void setRelativeOffset(double seconds) = 0;
  virtual OptionalText emailAddress() const = 0;
  virtual void setEmailAddress(const OptionalText& address) = 0;
  virtual OptionalText soundName() const = 0;
  virtual void setSoundName(const OptionalText& name) = 0;
  virtual OptionalText url() const = 0;
  virtual void setUrl(const OptionalText& url) = 0;
  /// An `EKAlarmType`, derived from what is set: e-mail address, sound name, URL, or none of them.
  virtual int type() const = 0;
  /// Names the type, until an e-mail address, a sound name or a URL is set again. The older platform's callers do so.
  virtual void setType(EKAlarmType type) = 0;
  /// When the alarm was made; that of its item in a store that keeps no moment for alarms.
  virtual std::optional<Date> creationDate() const { return std::nullopt; }
};

/// A weekday of a rule, alone or as the n-th of its month or year.
class EKRecurrenceDayOfWeek {
 public:
  virtual ~EKRecurrenceDayOfWeek() = default;
  virtual long dayOfTheWeek() const = 0;  ///< 1 Sunday to 7 Saturday
  virtual long weekNumber() const = 0;    ///< ±1 to ±53; 0 when the day is meant every week
};

class EKRecurrenceEnd {
 public:
  virtual ~EKRecurrenceEnd() = default;
  virtual std::optional<Date> endDate() const = 0;
  /// 0 when the end is a date.
  virtual int occurrenceCount() const = 0;
};

/// How an event repeats. Immutable.
class EKRecurrenceRule {
 public:
  virtual ~EKRecurrenceRule() = default;
  /// An `EKRecurrenceFrequency`; other numbers are frequencies that the platform has no name for.
  virtual int frequency() const = 0;
  virtual int interval() const = 0;
  /// 1 Sunday to 7 Saturday; 0 when the rule does not say.
  virtual int firstDayOfTheWeek() const = 0;
  virtual std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> daysOfTheWeek() const = 0;
  virtual std::vector<long> daysOfTheMonth() const = 0;
  virtual std::vector<long> monthsOfTheYear() const = 0;
  virtual std::shared_ptr<EKRecurrenceEnd> recurrenceEnd() const = 0;
};

/// Somebody invited to an event. Read only.
class EKParticipant {
 public:
  virtual ~EKParticipant() = default;
  virtual OptionalText name() const = 0;
  /// The address under which they were invited, in URL form: usually "mailto:…".
  virtual OptionalText url() const = 0;
  /// Under which an address book may know them, the likeliest first.
  virtual std::vector<std::string> emailAddresses() const = 0;
  virtual int participantStatus()
      const = 0;  ///< 0 unknown, 1 pending, 2 accepted, 3 declined, 4 tentative, 5 delegated, 6 completed, 7 in process
  virtual int participantRole() const = 0;  ///< 0 unknown, 1 required, 2 optional, 3 chair, 4 non-participant
  virtual int participantType() const = 0;  ///< 0 unknown, 1 person, 2 room, 3 resource, 4 group
};

/// What events and reminders have in common.
class EKCalendarItem {
 public:
  virtual ~EKCalendarItem() = default;
  virtual std::shared_ptr<EKCalendar> calendar() const = 0;
  virtual void setCalendar(std::shared_ptr<EKCalendar> calendar) = 0;
  virtual OptionalText title() const = 0;
  virtual void setTitle(const OptionalText& title) = 0;
  virtual OptionalText notes() const = 0;
  virtual void setNotes(const OptionalText& notes) = 0;
  virtual OptionalText url() const = 0;
  virtual void setUrl(const OptionalText& url) = 0;
  virtual OptionalText calendarItemIdentifier() const = 0;
  virtual OptionalText calendarItemExternalIdentifier() const = 0;
  virtual std::optional<Date> lastModifiedDate() const = 0;
  virtual std::optional<Date> creationDate() const = 0;
  virtual bool hasAlarms() const = 0;
  virtual std::vector<std::shared_ptr<EKAlarm>> alarms() const = 0;
  virtual void addAlarm(std::shared_ptr<EKAlarm> alarm) = 0;
  virtual void removeAlarm(const std::shared_ptr<EKAlarm>& alarm) = 0;
};

/// An event, or one occurrence of a repeating one.
class EKEvent : public EKCalendarItem {
 public:
  virtual std::optional<Date> startDate() const = 0;
  virtual void setStartDate(std::optional<Date> date) = 0;
  virtual std::optional<Date> endDate() const = 0;
  virtual void setEndDate(std::optional<Date> date) = 0;
  virtual bool isAllDay() const = 0;
  virtual void setAllDay(bool allDay) = 0;
  virtual OptionalText location() const = 0;
  virtual void setLocation(const OptionalText& location) = 0;
  /// None for a floating or all-day event.
  virtual std::shared_ptr<const TimeZone> timeZone() const = 0;
  /// Names the series; opens its first occurrence.
  virtual OptionalText eventIdentifier() const = 0;
  /// Where the rule put this occurrence, before any change of its own.
  virtual std::optional<Date> occurrenceDate() const = 0;
  virtual bool isDetached() const = 0;
  /// None when the event does not repeat.
  virtual std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> recurrenceRules() const = 0;
  virtual void addRecurrenceRule(std::shared_ptr<EKRecurrenceRule> rule) = 0;
  virtual void removeRecurrenceRule(const std::shared_ptr<EKRecurrenceRule>& rule) = 0;
  virtual void setRecurrenceRules(std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> rules) = 0;
  virtual bool hasAttendees() const = 0;
  /// None when nobody was ever invited.
  virtual std::optional<std::vector<std::shared_ptr<EKParticipant>>> attendees() const = 0;
};

class EKReminder : public EKCalendarItem {
 public:
  virtual std::optional<DateComponents> dueDateComponents() const = 0;
  virtual void setDueDateComponents(std::optional<DateComponents> parts) = 0;
  virtual bool isCompleted() const = 0;
  /// Completing sets the completion date to now; uncompleting clears it.
  virtual void setCompleted(bool completed) = 0;
  virtual std::optional<Date> completionDate() const = 0;
  /// A date completes the reminder; none makes it open again.
  virtual void setCompletionDate(std::optional<Date> date) = 0;
  virtual int priority() const = 0;  ///< 0 none, 1 highest to 9 lowest
  virtual void setPriority(int priority) = 0;
};

}  // namespace orlocal
