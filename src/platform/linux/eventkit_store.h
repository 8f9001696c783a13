#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "platform/eventkit.h"
#include "platform/linux/store_access.h"
#include "store/model/occurrence.h"

namespace orlocal {

/// The current framework over the calendar store. Opening is put off until something is asked for.
class EventStoreObject final : public EKEventStore {
 public:
  explicit EventStoreObject(std::shared_ptr<StoreAccess> access) : m_access(std::move(access)) {}

  EKCalendarArray calendarsForEntityType(EKEntityType type) override;
  std::shared_ptr<EKCalendar> calendarWithIdentifier(std::string_view identifier) override;
  std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() override;
  std::shared_ptr<EKCalendar> defaultCalendarForNewReminders() override;

  std::shared_ptr<const EKPredicate> predicateForEvents(Date start, Date end,
                                                        const EKCalendarArray& calendars) override;
  std::shared_ptr<const EKPredicate> predicateForOneEvent(Date start, Date end, const EKCalendarArray& calendars,
                                                          std::string_view identifier) override;
  std::shared_ptr<const EKEventArray> eventsMatchingPredicate(
      const std::shared_ptr<const EKPredicate>& predicate) override;
  std::shared_ptr<EKEvent> eventWithIdentifier(std::string_view identifier) override;
  std::shared_ptr<EKEvent> occurrenceOfEvent(std::string_view identifier, Date occurrenceDate) override;

  std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray& calendars) override;
  std::shared_ptr<const EKPredicate> predicateForIncompleteReminders(std::optional<Date> start, std::optional<Date> end,
                                                                     const EKCalendarArray& calendars) override;
  std::shared_ptr<const EKPredicate> predicateForCompletedReminders(std::optional<Date> start, std::optional<Date> end,
                                                                    const EKCalendarArray& calendars) override;
  void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>& predicate,
                                       ReminderCompletion completion) override;
  std::shared_ptr<EKCalendarItem> calendarItemWithIdentifier(std::string_view identifier) override;

  // There is nothing that could commit later, so every save and removal is written at once, whatever `commit` says.
  bool saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override;
  bool removeCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override;
  bool saveEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit, std::optional<Error>& error) override;
  bool removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                   std::optional<Error>& error) override;
  bool saveReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override;
  bool removeReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override;

 private:
  std::shared_ptr<EKCalendar> object(std::optional<store::Calendar> calendar) const;
  std::shared_ptr<EKEvent> firstOccurrenceOf(std::shared_ptr<const store::Item> event) const;
  std::shared_ptr<const EKPredicate> reminderPredicate(store::ReminderQuery::Status status, std::optional<Date> start,
                                                       std::optional<Date> end, const EKCalendarArray& calendars) const;

  std::shared_ptr<StoreAccess> m_access;
};

}  // namespace orlocal
