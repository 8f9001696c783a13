#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/eventkit.h"

// What every implementation of the current calendar framework promises stands in the headers beside this one, each
// about one subject (`eventkit_*_contract.h`). A test program includes each of them once, in one source, and
// instantiates `EventKitContract` there with its own subject.

namespace orlocal::contract {

/// A new store: one event calendar "Calendar" and one reminder list "Reminders", both empty. The default zone is
/// Europe/Berlin.
class EventKitSubject {
 public:
  virtual ~EventKitSubject() = default;
  virtual EventKit& eventKit() = 0;
  /// Makes the store refuse changes in the calendar, behind the objects' back.
  virtual void makeReadOnly(const std::string& calendarIdentifier) = 0;
  /// Invites somebody to a saved event, as the calendar application does.
  virtual void invite(const std::string& eventIdentifier, const std::string& name, const std::string& email) = 0;
  /// Makes a store that nobody has asked anything yet one that cannot be opened.
  virtual void keepFromOpening() = 0;
  /// Lets the store deliver what waits.
  virtual void turnRunLoop() = 0;
  /// The moment that the implementation takes for now.
  virtual Date now() = 0;
};

using MakeEventKitSubject = std::unique_ptr<EventKitSubject> (*)();

class EventKitContract : public testing::TestWithParam<MakeEventKitSubject> {
 protected:
  EventKitContract()
      : store(subject->eventKit().eventStoreWithAccessToEntityTypes(EventKit::kMaskEvent | EventKit::kMaskReminder)) {}

  static Date at(int month, int day, int hour, int minute = 0) {
    using namespace std::chrono;
    return sys_days{year{2026} / month / day} + hours{hour} + minutes{minute};
  }

  EventKit& kit() { return subject->eventKit(); }
  std::shared_ptr<EKCalendar> calendar() { return store->defaultCalendarForNewEvents(); }
  std::shared_ptr<EKCalendar> list() { return store->defaultCalendarForNewReminders(); }

  std::shared_ptr<EKEvent> newEvent(const std::string& title, Date start, Date end) {
    auto event = kit().eventWithEventStore(store);
    event->setCalendar(calendar());
    event->setTitle(title);
    event->setStartDate(start);
    event->setEndDate(end);
    return event;
  }
  std::string save(const std::shared_ptr<EKEvent>& event, EKSpan span = EKSpan::kThisEvent) {
    EXPECT_TRUE(store->saveEvent(event, span, true, error)) << error.value_or(Error{}).localizedDescription;
    return event->eventIdentifier().value_or("");
  }
  std::string addEvent(const std::string& title, Date start, Date end) { return save(newEvent(title, start, end)); }
  std::string addDailyEvent(const std::string& title, Date start, Date end, int times) {
    auto event = newEvent(title, start, end);
    EKRecurrenceRuleParts parts;
    parts.end = kit().recurrenceEndWithOccurrenceCount(times);
    event->addRecurrenceRule(kit().recurrenceRule(parts).rule);
    return save(event);
  }

  std::shared_ptr<EKReminder> newReminder(const std::string& title) {
    auto reminder = kit().reminderWithEventStore(store);
    reminder->setCalendar(list());
    reminder->setTitle(title);
    return reminder;
  }
  std::string save(const std::shared_ptr<EKReminder>& reminder) {
    EXPECT_TRUE(store->saveReminder(reminder, true, error)) << error.value_or(Error{}).localizedDescription;
    return reminder->calendarItemIdentifier().value_or("");
  }
  std::string addReminder(const std::string& title, std::optional<DateComponents> due = std::nullopt) {
    auto reminder = newReminder(title);
    reminder->setDueDateComponents(due);
    return save(reminder);
  }
  std::shared_ptr<EKReminder> reminder(const std::string& identifier) {
    return std::dynamic_pointer_cast<EKReminder>(store->calendarItemWithIdentifier(identifier));
  }

  /// A calendar or list that is not the last of its kind.
  std::shared_ptr<EKCalendar> addCalendar(const std::string& title, EKEntityType kind = EKEntityType::kEvent) {
    auto made = kit().calendarForEntityType(kind, store);
    made->setTitle(title);
    made->setSource(calendar()->source());
    EXPECT_TRUE(store->saveCalendar(made, true, error)) << error.value_or(Error{}).localizedDescription;
    return made;
  }

  std::vector<std::string> titles(const std::shared_ptr<const EKPredicate>& predicate) {
    std::vector<std::string> found;
    const auto events = store->eventsMatchingPredicate(predicate);
    for (std::size_t i = 0; events && i < events->count(); ++i) {
      found.push_back(events->objectAtIndex(i)->title().value_or(""));
    }
    return found;
  }
  std::vector<std::string> titlesBetween(Date start, Date end) {
    return titles(store->predicateForEvents(start, end, store->calendarsForEntityType(EKEntityType::kEvent)));
  }
  std::vector<Date> startsOf(const std::string& identifier) {
    std::vector<Date> starts;
    const auto events = store->eventsMatchingPredicate(store->predicateForOneEvent(
        at(1, 1, 0), at(12, 31, 0), store->calendarsForEntityType(EKEntityType::kEvent), identifier));
    for (std::size_t i = 0; events && i < events->count(); ++i) {
      starts.push_back(*events->objectAtIndex(i)->startDate());
    }
    return starts;
  }

  /// What the store delivers; null when it delivers no array.
  std::shared_ptr<const EKReminderArray> delivered(const std::shared_ptr<const EKPredicate>& predicate) {
    bool waiting = true;
    std::shared_ptr<const EKReminderArray> answer;
    store->fetchRemindersMatchingPredicate(predicate, [&](std::shared_ptr<const EKReminderArray> reminders) {
      answer = std::move(reminders);
      waiting = false;
    });
    for (int turns = 0; waiting && turns < 1000; ++turns) { subject->turnRunLoop(); }
    EXPECT_FALSE(waiting) << "the store never answered";
    return answer;
  }
  std::vector<std::string> reminderTitles(const std::shared_ptr<const EKPredicate>& predicate) {
    std::vector<std::string> found;
    const auto reminders = delivered(predicate);
    for (std::size_t i = 0; reminders && i < reminders->count(); ++i) {
      found.push_back(reminders->objectAtIndex(i)->title().value_or(""));
    }
    return found;
  }

  static DateComponents dueAt(int month, int day, int hour) {
    DateComponents parts;
    parts.year = 2026;
    parts.month = month;
    parts.day = day;
    parts.hour = hour;
    parts.minute = 0;
    parts.second = 0;
    return parts;
  }

  void expectRefused(bool done) {
    EXPECT_FALSE(done);
    ASSERT_TRUE(error.has_value());
    EXPECT_FALSE(error->localizedDescription.empty());
  }

  std::unique_ptr<EventKitSubject> subject = GetParam()();
  std::shared_ptr<EKEventStore> store;
  std::optional<Error> error;
};

}  // namespace orlocal::contract
