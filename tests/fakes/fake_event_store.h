#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/fake_clock.h"
#include "fakes/fake_eventkit_items.h"
#include "fakes/fake_run_loop.h"
#include "platform/eventkit.h"

namespace orlocal::fakes {

/// The current store in memory, with one calendar "Calendar" and one list "Reminders" to begin with. Only daily rules
/// are expanded, in steps of 24 hours, and no series is split. What it hands out are copies: a change reaches it by
/// saving.
class FakeEventStore : public EKEventStore {
 public:
  FakeEventStore();

  // What the store holds, in its order; tests may change all of it. The first calendar of each kind is the default.
  std::vector<std::shared_ptr<FakeCalendar>> m_calendars;
  std::vector<std::shared_ptr<FakeEvent>> m_events;
  std::vector<std::shared_ptr<FakeReminder>> m_reminders;
  std::shared_ptr<FakeSource> m_source;
  /// What the store takes for now.
  Date m_now = fakeNow();
  /// Whether the store can be opened and read.
  bool m_answers = true;
  /// Whether a series has more than its first occurrence.
  bool m_expandsSeries = true;
  /// When set, reminders are delivered from this loop instead of at once.
  std::shared_ptr<FakeRunLoop> m_runLoop;

  // Each adds an object and gives it an identifier made of its kind and number ("calendar-1", "event-2").
  std::shared_ptr<FakeCalendar> addCalendar(std::string_view title, EKEntityType kind = EKEntityType::kEvent);
  std::shared_ptr<FakeEvent> addEvent(std::string_view calendarTitle, std::string_view title, Date start, Date end);
  std::shared_ptr<FakeReminder> addReminder(std::string_view listTitle, std::string_view title);

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
  bool saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override;
  bool removeCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override;
  bool saveEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit, std::optional<Error>& error) override;
  bool removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                   std::optional<Error>& error) override;
  bool saveReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override;
  bool removeReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override;

 private:
  std::shared_ptr<EKCalendar> calendarCopy(const OptionalText& identifier) const;
  std::shared_ptr<FakeCalendar> recordTitled(std::string_view title) const;
  /// The daily rule of a series; null for an event that is not expanded.
  std::shared_ptr<EKRecurrenceRule> ruleOf(const FakeEvent& event) const;
  /// The occurrence of a series that starts then; of any other event the event.
  std::shared_ptr<FakeEvent> occurrenceCopy(const FakeEvent& record, Date start) const;
  /// The record of the series; null for an event that does not repeat.
  std::shared_ptr<FakeEvent> seriesOf(const EKEvent& occurrence) const;
  template <class Item>
  std::shared_ptr<Item> copyOf(const Item& record) const;
  template <class Item>
  void keep(std::vector<std::shared_ptr<Item>>& records, Item& item, const char* kind);
  /// Why an item cannot be written to or taken from its calendar; absent when it can.
  std::optional<Error> objection(const EKCalendarItem* item, EKEntityType kind) const;
  std::string nextIdentifier(const char* kind);

  int m_lastNumber = 0;
};

/// Makes the objects above and hands out `m_store`.
class FakeEventKit : public EventKit {
 public:
  std::shared_ptr<FakeEventStore> m_store = std::make_shared<FakeEventStore>();
  unsigned m_mask = 0;  ///< of the last store asked for

  std::shared_ptr<EKEventStore> eventStoreWithAccessToEntityTypes(unsigned mask) override;
  std::shared_ptr<EKCalendar> calendarForEntityType(EKEntityType type,
                                                    const std::shared_ptr<EKEventStore>& store) override;
  std::shared_ptr<EKEvent> eventWithEventStore(const std::shared_ptr<EKEventStore>& store) override;
  std::shared_ptr<EKReminder> reminderWithEventStore(const std::shared_ptr<EKEventStore>& store) override;
  std::shared_ptr<EKAlarm> alarmWithAbsoluteDate(Date date) override;
  std::shared_ptr<EKAlarm> alarmWithRelativeOffset(double seconds) override;
  std::shared_ptr<EKRecurrenceDayOfWeek> dayOfWeek(long day, long weekNumber) override;
  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithEndDate(Date date) override;
  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithOccurrenceCount(int count) override;
  EKRecurrenceRuleMade recurrenceRule(const EKRecurrenceRuleParts& parts) override;
};

}  // namespace orlocal::fakes
