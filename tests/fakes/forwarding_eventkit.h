#pragma once

#include <memory>
#include <utility>

#include "platform/eventkit.h"

namespace orlocal::fakes {

/// Hands every call on to another store. A test overrides the one method that should fail.
class ForwardingEventStore : public EKEventStore {
 public:
  explicit ForwardingEventStore(std::shared_ptr<EKEventStore> next) : m_next(std::move(next)) {}

  EKCalendarArray calendarsForEntityType(EKEntityType type) override { return m_next->calendarsForEntityType(type); }
  std::shared_ptr<EKCalendar> calendarWithIdentifier(std::string_view identifier) override {
    return m_next->calendarWithIdentifier(identifier);
  }
  std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() override { return m_next->defaultCalendarForNewEvents(); }
  std::shared_ptr<EKCalendar> defaultCalendarForNewReminders() override {
    return m_next->defaultCalendarForNewReminders();
  }
  std::shared_ptr<const EKPredicate> predicateForEvents(Date start, Date end,
                                                        const EKCalendarArray& calendars) override {
    return m_next->predicateForEvents(start, end, calendars);
  }
  std::shared_ptr<const EKPredicate> predicateForOneEvent(Date start, Date end, const EKCalendarArray& calendars,
                                                          std::string_view identifier) override {
    return m_next->predicateForOneEvent(start, end, calendars, identifier);
  }
  std::shared_ptr<const EKEventArray> eventsMatchingPredicate(
      const std::shared_ptr<const EKPredicate>& predicate) override {
    return m_next->eventsMatchingPredicate(predicate);
  }
  std::shared_ptr<EKEvent> eventWithIdentifier(std::string_view identifier) override {
    return m_next->eventWithIdentifier(identifier);
  }
  std::shared_ptr<EKEvent> occurrenceOfEvent(std::string_view identifier, Date occurrenceDate) override {
    return m_next->occurrenceOfEvent(identifier, occurrenceDate);
  }
  std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray& calendars) override {
    return m_next->predicateForRemindersInCalendars(calendars);
  }
  std::shared_ptr<const EKPredicate> predicateForIncompleteReminders(std::optional<Date> start, std::optional<Date> end,
                                                                     const EKCalendarArray& calendars) override {
    return m_next->predicateForIncompleteReminders(start, end, calendars);
  }
  std::shared_ptr<const EKPredicate> predicateForCompletedReminders(std::optional<Date> start, std::optional<Date> end,
                                                                    const EKCalendarArray& calendars) override {
    return m_next->predicateForCompletedReminders(start, end, calendars);
  }
  void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>& predicate,
                                       ReminderCompletion completion) override {
    m_next->fetchRemindersMatchingPredicate(predicate, std::move(completion));
  }
  std::shared_ptr<EKCalendarItem> calendarItemWithIdentifier(std::string_view identifier) override {
    return m_next->calendarItemWithIdentifier(identifier);
  }
  bool saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override {
    return m_next->saveCalendar(calendar, commit, error);
  }
  bool removeCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override {
    return m_next->removeCalendar(calendar, commit, error);
  }
  bool saveEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                 std::optional<Error>& error) override {
    return m_next->saveEvent(event, span, commit, error);
  }
  bool removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                   std::optional<Error>& error) override {
    return m_next->removeEvent(event, span, commit, error);
  }
  bool saveReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override {
    return m_next->saveReminder(reminder, commit, error);
  }
  bool removeReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override {
    return m_next->removeReminder(reminder, commit, error);
  }

 protected:
  std::shared_ptr<EKEventStore> m_next;
};

/// Hands every call on to another maker of objects.
class ForwardingEventKit : public EventKit {
 public:
  explicit ForwardingEventKit(std::shared_ptr<EventKit> next) : m_next(std::move(next)) {}

  std::shared_ptr<EKEventStore> eventStoreWithAccessToEntityTypes(unsigned mask) override {
    return m_next->eventStoreWithAccessToEntityTypes(mask);
  }
  std::shared_ptr<EKCalendar> calendarForEntityType(EKEntityType type,
                                                    const std::shared_ptr<EKEventStore>& store) override {
    return m_next->calendarForEntityType(type, store);
  }
  std::shared_ptr<EKEvent> eventWithEventStore(const std::shared_ptr<EKEventStore>& store) override {
    return m_next->eventWithEventStore(store);
  }
  std::shared_ptr<EKReminder> reminderWithEventStore(const std::shared_ptr<EKEventStore>& store) override {
    return m_next->reminderWithEventStore(store);
  }
  std::shared_ptr<EKAlarm> alarmWithAbsoluteDate(Date date) override { return m_next->alarmWithAbsoluteDate(date); }
  std::shared_ptr<EKAlarm> alarmWithRelativeOffset(double seconds) override {
    return m_next->alarmWithRelativeOffset(seconds);
  }
  std::shared_ptr<EKRecurrenceDayOfWeek> dayOfWeek(long day, long weekNumber) override {
    return m_next->dayOfWeek(day, weekNumber);
  }
  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithEndDate(Date date) override {
    return m_next->recurrenceEndWithEndDate(date);
  }
  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithOccurrenceCount(int count) override {
    return m_next->recurrenceEndWithOccurrenceCount(count);
  }
  EKRecurrenceRuleMade recurrenceRule(const EKRecurrenceRuleParts& parts) override {
    return m_next->recurrenceRule(parts);
  }

 protected:
  std::shared_ptr<EventKit> m_next;
};

}  // namespace orlocal::fakes
