#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/error.h"
#include "platform/eventkit_items.h"
#include "platform/object_array.h"

namespace orlocal {

/// A query that a store made and only it can run. Immutable; kept as long as its answers are wanted.
class EKPredicate {
 public:
  virtual ~EKPredicate() = default;
};

using EKEventArray = ObjectArray<EKEvent>;
using EKReminderArray = ObjectArray<EKReminder>;
using EKCalendarArray = std::vector<std::shared_ptr<EKCalendar>>;

/// What the current calendar framework knows. Main thread only. Look-ups give null when there is nothing; saves and
/// removals give false and an error whose text says why, and then nothing was written.
///
/// A store that cannot be opened or read throws nothing: it has no calendars and no items, makes no predicate, gives no
/// array, and its saves and removals fail. The system's log has the reason.
class EKEventStore {
 public:
  /// Receives the reminders, or null when the store delivers none; on the calling thread, now or from its run loop.
  using ReminderCompletion = std::function<void(std::shared_ptr<const EKReminderArray>)>;

  virtual ~EKEventStore() = default;

  virtual EKCalendarArray calendarsForEntityType(EKEntityType type) = 0;
  virtual std::shared_ptr<EKCalendar> calendarWithIdentifier(std::string_view identifier) = 0;
  virtual std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() = 0;
  virtual std::shared_ptr<EKCalendar> defaultCalendarForNewReminders() = 0;

  /// Occurrences that overlap [start, end) in `calendars`. Null when the dates make no range that can be asked for, or
  /// the store does not answer.
  virtual std::shared_ptr<const EKPredicate> predicateForEvents(Date start, Date end,
                                                                const EKCalendarArray& calendars) = 0;
  /// The same, of the event with this identifier alone: what else is in the range costs nothing.
  virtual std::shared_ptr<const EKPredicate> predicateForOneEvent(Date start, Date end,
                                                                  const EKCalendarArray& calendars,
                                                                  std::string_view identifier) = 0;
  /// Ordered by start, end, identifier. Asking again with the same predicate costs little until the store changes. Null
  /// for a null predicate, and when the store does not answer.
  virtual std::shared_ptr<const EKEventArray> eventsMatchingPredicate(
      const std::shared_ptr<const EKPredicate>& predicate) = 0;
  /// The first occurrence of a series.
  virtual std::shared_ptr<EKEvent> eventWithIdentifier(std::string_view identifier) = 0;
  /// The occurrence whose `occurrenceDate` this is, wherever it was moved since.
  virtual std::shared_ptr<EKEvent> occurrenceOfEvent(std::string_view identifier, Date occurrenceDate) = 0;

  // Predicates for reminders are null when the store does not answer.
  virtual std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray& calendars) = 0;
  /// Open reminders due from `start` on and before `end`; an absent bound does not bound.
  virtual std::shared_ptr<const EKPredicate> predicateForIncompleteReminders(std::optional<Date> start,
                                                                             std::optional<Date> end,
                                                                             const EKCalendarArray& calendars) = 0;
  /// Reminders completed from `start` on and before `end`; an absent bound does not bound.
  virtual std::shared_ptr<const EKPredicate> predicateForCompletedReminders(std::optional<Date> start,
                                                                            std::optional<Date> end,
                                                                            const EKCalendarArray& calendars) = 0;
  /// Answered with null for a null predicate, and when the store does not answer.
  virtual void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>& predicate,
                                               ReminderCompletion completion) = 0;
  /// An event or a reminder.
  virtual std::shared_ptr<EKCalendarItem> calendarItemWithIdentifier(std::string_view identifier) = 0;

  // Null objects are refused with an error. `commit` true writes at once.
  virtual bool saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) = 0;
  virtual bool removeCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit,
                              std::optional<Error>& error) = 0;
  virtual bool saveEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                         std::optional<Error>& error) = 0;
  virtual bool removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                           std::optional<Error>& error) = 0;
  virtual bool saveReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) = 0;
  virtual bool removeReminder(const std::shared_ptr<EKReminder>& reminder, bool commit,
                              std::optional<Error>& error) = 0;
};

/// What a recurrence rule is made of. Absent lists do not narrow the rule.
struct EKRecurrenceRuleParts {
  EKRecurrenceFrequency frequency = EKRecurrenceFrequency::kDaily;
  int interval = 1;
  std::optional<std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>>> daysOfTheWeek;
  std::optional<std::vector<long>> daysOfTheMonth;
  std::optional<std::vector<long>> monthsOfTheYear;
  std::optional<std::vector<long>> weeksOfTheYear;
  std::optional<std::vector<long>> daysOfTheYear;
  std::optional<std::vector<long>> setPositions;
  std::shared_ptr<EKRecurrenceEnd> end;
};

/// A rule, a refusal with its reason, or (when the platform could make no object) neither.
struct EKRecurrenceRuleMade {
  std::shared_ptr<EKRecurrenceRule> rule;
  std::optional<Error> refusal;
};

/// Makes the platform's objects. Null when one cannot be made.
class EventKit {
 public:
  static constexpr unsigned kMaskEvent = 1;
  static constexpr unsigned kMaskReminder = 2;

  virtual ~EventKit() = default;

  /// Never null, whether or not the store can be opened.
  virtual std::shared_ptr<EKEventStore> eventStoreWithAccessToEntityTypes(unsigned mask) = 0;
  virtual std::shared_ptr<EKCalendar> calendarForEntityType(EKEntityType type,
                                                            const std::shared_ptr<EKEventStore>& store) = 0;
  virtual std::shared_ptr<EKEvent> eventWithEventStore(const std::shared_ptr<EKEventStore>& store) = 0;
  virtual std::shared_ptr<EKReminder> reminderWithEventStore(const std::shared_ptr<EKEventStore>& store) = 0;
  virtual std::shared_ptr<EKAlarm> alarmWithAbsoluteDate(Date date) = 0;
  virtual std::shared_ptr<EKAlarm> alarmWithRelativeOffset(double seconds) = 0;
  /// 1 Sunday to 7 Saturday; `weekNumber` ±1 to ±53 makes it the n-th of its month or year, 0 means every week. Null
  /// outside.
  virtual std::shared_ptr<EKRecurrenceDayOfWeek> dayOfWeek(long day, long weekNumber) = 0;
  virtual std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithEndDate(Date date) = 0;
  virtual std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithOccurrenceCount(int count) = 0;
  /// Refuses what RFC 5545, 3.3.10 forbids.
  virtual EKRecurrenceRuleMade recurrenceRule(const EKRecurrenceRuleParts& parts) = 0;
};

}  // namespace orlocal
