#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "backend/property_value.h"
#include "platform/address_book.h"
#include "platform/color.h"
#include "platform/eventkit.h"

namespace orlocal {

/// The calendar back end over EventKit: one store, and at most one current object of each kind.
///
/// Methods that act give 0, or -1 with `g_llasterror` set; getters give a text, or none when there is none or on
/// failure; counts are counts or -1. A few failures set the code and still give 0, so callers look at the code.
/// Platform exceptions are caught where a method says so (code 9999, reason in `getLastErrorString`) and leave every
/// other method. Keywords are compared after lower-casing; indexes count from 1. Main thread only.
class iCalEKFunctions {
 public:
  using DaysOfTheWeek = std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>>;

  /// The one instance, made and initialised on first use; lives as long as the process. Any thread.
  static iCalEKFunctions* sharedICalFunctions();
  /// Makes the shared instance, not yet initialised. Null once there is one.
  static iCalEKFunctions* allocWithZone();

  iCalEKFunctions(const iCalEKFunctions&) = delete;
  iCalEKFunctions& operator=(const iCalEKFunctions&) = delete;
  virtual ~iCalEKFunctions() = default;

  // State (state.cpp)

  /// Empties every slot and connects to the platform's store and address book.
  virtual void init();
  /// Empties every slot and both predicates; store and address book stay.
  virtual void releaseItems();
  virtual std::int32_t resetLastErrorString();
  /// Reason of the last caught exception; kept until the next one.
  virtual OptionalText getLastErrorString() const;
  /// Gives nothing.
  virtual OptionalText getCalendars();
  /// The calendars titled in `names`, one a line; without names the current calendar, else all of the kind `type`.
  /// None with 9013 when a title is unknown; none without a code for a `type` that is no kind of calendar.
  virtual std::optional<EKCalendarArray> calendarArrayFromString(const OptionalText& names, const OptionalText& type);
  /// None for a name that is not in the table.
  static std::optional<Color> colorFromString(const OptionalText& name);

  // Calendars and reminder lists (calendars.cpp). Opens release every current object first.

  virtual std::int32_t openCalendarAt(std::int32_t index);
  virtual std::int32_t openReminderListAt(std::int32_t index);
  virtual std::int32_t openCalendarWithUID(const OptionalText& uid);
  virtual std::int32_t openCalendarWithTitle(const OptionalText& title);
  /// Event calendars first, then reminder lists; touches no slot.
  virtual std::shared_ptr<EKCalendar> getCalendarWithTitle(const OptionalText& title);
  virtual std::int32_t setCalendarProp(const OptionalText& property, const PropertyValue& value);
  /// Catches exceptions and then gives "!!ERROR!!". `at` and `uid` are not used, as in every getter that has them.
  virtual OptionalText getCalendarAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);

  // Events, and what they share with reminders (events.cpp)

  /// Keeps a predicate; `uid` does not narrow it. Catches exceptions.
  virtual std::int32_t fetchEventsWithStartDate(std::optional<Date> start, std::optional<Date> end,
                                                const OptionalText& uid, const OptionalText& calendars);
  /// `occurrence` is not used: the identifier opens the first one. Catches exceptions.
  virtual std::int32_t openEventWithUID(const OptionalText& uid, std::optional<Date> occurrence);
  /// Keeps both predicates, so that a fetch can be walked.
  virtual std::int32_t openEventAt(std::int32_t index);
  virtual std::int32_t setEventProp(const OptionalText& property, const PropertyValue& value);
  virtual OptionalText getEventAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);
  /// `property` comes lower-cased. Catches exceptions.
  virtual std::int32_t setCalendarItemProp(const OptionalText& property, const PropertyValue& value,
                                           EKCalendarItem* item);
  virtual OptionalText getCalendarItemAttribute(const OptionalText& property, EKCalendarItem* item);

  // Reminders (reminders.cpp)

  virtual std::int32_t fetchReminders(const OptionalText& lists, const OptionalText& status, std::optional<Date> date);
  virtual std::int32_t fetchRemindersWithCalendars(const OptionalText& lists);
  virtual std::int32_t fetchRemindersUncompleted(const OptionalText& lists);
  virtual std::int32_t fetchRemindersUncompleted(std::optional<Date> dueBy, const OptionalText& lists);
  virtual std::int32_t fetchRemindersCompletedSince(std::optional<Date> date, const OptionalText& lists);
  virtual std::int32_t openReminderWithUID(const OptionalText& uid);
  virtual std::int32_t openReminderAt(std::int32_t index);
  virtual std::int32_t setReminderProp(const OptionalText& property, const PropertyValue& value);
  virtual OptionalText getReminderAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);

  // Alarms (alarms.cpp). `type` names the owner: "event", "task" or "reminder".

  /// `relTrigger` is in seconds; `absTrigger` wins. The new alarm does not become current.
  virtual std::int32_t addAlarm(const OptionalText& type, std::optional<Date> absTrigger, const OptionalText& action,
                                const OptionalText& eaddr, std::int32_t relTrigger, const OptionalText& sound);
  /// -1 removes all, and then the platform's range exception leaves the method.
  virtual std::int32_t removeAlarmFrom(const OptionalText& type, std::int32_t at);
  virtual std::int32_t removeAllAlarmsFrom(const OptionalText& type);
  virtual std::int32_t openAlarmAt(std::int32_t index);
  virtual std::int32_t setAlarmProp(const OptionalText& property, const PropertyValue& value);
  virtual OptionalText getAlarmAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);

  // Recurrence rules of the current event (recurrence.cpp)

  /// Absent lists do not narrow the rule; `dow` is not used; `endWithDate` wins over a count of 1 or more.
  virtual std::int32_t addRecurrence(const OptionalText& type, std::int32_t interval,
                                     const std::optional<DaysOfTheWeek>& dotw,
                                     const std::optional<std::vector<long>>& dotm, std::int32_t dow,
                                     const std::optional<std::vector<long>>& monthsOfTheYear,
                                     std::optional<Date> endWithDate, std::int32_t endWithCount);
  virtual std::int32_t removeRecurrence();
  virtual OptionalText getEventRecurrenceRuleAttribute(const OptionalText& property, const OptionalText& recurrenceEnd);

  // Participants of the current event (participants.cpp)

  virtual std::int32_t openParticipantAt(std::int32_t index);
  virtual OptionalText getParticipantAttribute(const OptionalText& property, std::int32_t at, const OptionalText& uid);
  /// As above, but status, role and type as bare numbers.
  virtual OptionalText getEventParticipantAttribute(const OptionalText& property, std::int32_t atIndex);

  // Create, save, remove, count (lifecycle.cpp)

  virtual std::int32_t newItem(const OptionalText& type);
  /// Catches exceptions and then gives 0: the code carries the failure.
  virtual std::int32_t saveItem(const OptionalText& type, const OptionalText& span);
  /// `occurrence` is not used. Catches exceptions and then gives 0.
  virtual std::int32_t removeItem(const OptionalText& type, const OptionalText& uid, std::optional<Date> occurrence,
                                  const OptionalText& span);
  virtual std::int32_t getObjectCount(const OptionalText& type);

 protected:
  iCalEKFunctions() = default;

  OptionalText lastErrorString;
  std::shared_ptr<EKEventStore> m_ekEventStore;
  std::shared_ptr<EKCalendar> m_ekCalendar;
  std::shared_ptr<EKEvent> m_ekEvent;
  std::shared_ptr<EKReminder> m_ekReminder;
  std::shared_ptr<EKAlarm> m_ekAlarm;
  std::shared_ptr<EKParticipant> m_ekParticipant;
  std::shared_ptr<EKRecurrenceRule> m_ekRecurrenceRule;
  std::shared_ptr<EKRecurrenceEnd> m_ekRecurrenceEnd;
  std::shared_ptr<const EKPredicate> m_ekReminderPredicate;
  std::shared_ptr<const EKPredicate> m_ekEventPredicate;
  AddressBook* m_AddressBook = nullptr;

 private:
  std::int32_t openCalendarOfKind(EKEntityType kind, std::int32_t index, std::int64_t missing);
  std::shared_ptr<EKCalendar> calendarTitled(const OptionalText& title);
  EKCalendarArray reminderLists(const OptionalText& names);
  std::int32_t keepReminderPredicate(std::shared_ptr<const EKPredicate> predicate);
  /// Waits for the store, however long it takes.
  std::shared_ptr<const EKReminderArray> fetchedReminders();
  std::shared_ptr<EKReminder> reminderWithIdentifier(const OptionalText& uid);
  /// The owner of an alarm by its type word; null with `noReminder`, `noEvent` or 9006.
  EKCalendarItem* alarmOwner(const OptionalText& type, std::int64_t noReminder, std::int64_t noEvent);
  std::int32_t saveCurrentCalendar();
  std::int32_t saveCurrentReminderList();
  std::int32_t saveCurrentReminder();
  std::int32_t saveCurrentEvent(EKSpan span);
};

}  // namespace orlocal
