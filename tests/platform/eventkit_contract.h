#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/eventkit.h"

// What every implementation of the current calendar store promises. A test program includes this header once, and
// instantiates `EventKitContract` with its own subject.

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
    for (int turns = 0; waiting && turns < 1000; ++turns) subject->turnRunLoop();
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

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Calendars

TEST_P(EventKitContract, KeepsEventCalendarsAndReminderListsApart) {
  const auto calendars = store->calendarsForEntityType(EKEntityType::kEvent);
  const auto lists = store->calendarsForEntityType(EKEntityType::kReminder);
  ASSERT_EQ(calendars.size(), 1u);
  ASSERT_EQ(lists.size(), 1u);
  EXPECT_EQ(calendars[0]->title(), "Calendar");
  EXPECT_EQ(lists[0]->title(), "Reminders");
}

TEST_P(EventKitContract, FindsACalendarByItsIdentifier) {
  const auto identifier = calendar()->calendarIdentifier();
  ASSERT_TRUE(identifier.has_value());
  const auto found = store->calendarWithIdentifier(*identifier);
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->title(), "Calendar");
  EXPECT_EQ(store->calendarWithIdentifier("no such calendar"), nullptr);
}

TEST_P(EventKitContract, KeepsASavedCalendar) {
  const auto made = kit().calendarForEntityType(EKEntityType::kEvent, store);
  EXPECT_TRUE(made->allowsContentModifications());
  made->setTitle("Team");
  made->setColor(Color::calibratedRgb(1, 0.5, 0));
  made->setSource(calendar()->source());
  ASSERT_TRUE(store->saveCalendar(made, true, error));
  ASSERT_TRUE(made->calendarIdentifier().has_value());
  const auto kept = store->calendarWithIdentifier(*made->calendarIdentifier());
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(kept->title(), "Team");
  ASSERT_TRUE(kept->color().has_value());
  EXPECT_NEAR(kept->color()->green, 0.5, 0.001);
  EXPECT_EQ(store->calendarsForEntityType(EKEntityType::kEvent).size(), 2u);
}

TEST_P(EventKitContract, KeepsColorComponentsAboveOne) {
  const auto made = addCalendar("Bright");
  made->setColor(Color::calibratedRgb(300.0 / 255, 0, 0));
  ASSERT_TRUE(store->saveCalendar(made, true, error));
  EXPECT_NEAR(store->calendarWithIdentifier(*made->calendarIdentifier())->color()->red, 300.0 / 255, 0.001);
}

TEST_P(EventKitContract, KeepsTheNotesOfACalendar) {
  auto made = calendar();
  EXPECT_EQ(made->notes(), std::nullopt);
  made->setNotes("Floor 2");
  ASSERT_TRUE(store->saveCalendar(made, true, error));
  EXPECT_EQ(calendar()->notes(), "Floor 2");
  made->setNotes(std::nullopt);
  ASSERT_TRUE(store->saveCalendar(made, true, error));
  EXPECT_EQ(calendar()->notes(), std::nullopt);
}

TEST_P(EventKitContract, RefusesACalendarWithoutATitle) {
  const auto made = kit().calendarForEntityType(EKEntityType::kEvent, store);
  made->setSource(calendar()->source());
  expectRefused(store->saveCalendar(made, true, error));
  EXPECT_EQ(store->calendarsForEntityType(EKEntityType::kEvent).size(), 1u);
}

TEST_P(EventKitContract, RefusesACalendarWithoutASource) {
  const auto made = kit().calendarForEntityType(EKEntityType::kEvent, store);
  made->setTitle("Team");
  made->setSource(nullptr);
  expectRefused(store->saveCalendar(made, true, error));
}

TEST_P(EventKitContract, RefusesToSaveAReadOnlyCalendar) {
  const auto made = addCalendar("Holidays");
  subject->makeReadOnly(*made->calendarIdentifier());
  const auto opened = store->calendarWithIdentifier(*made->calendarIdentifier());
  EXPECT_FALSE(opened->allowsContentModifications());
  EXPECT_TRUE(opened->isImmutable());
  opened->setTitle("Renamed");
  expectRefused(store->saveCalendar(opened, true, error));
  EXPECT_EQ(store->calendarWithIdentifier(*made->calendarIdentifier())->title(), "Holidays");
}

TEST_P(EventKitContract, RemovesACalendarWithItsEvents) {
  const auto made = addCalendar("Team");
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setCalendar(made);
  const auto identifier = save(event);
  ASSERT_TRUE(store->removeCalendar(made, true, error));
  EXPECT_EQ(store->eventWithIdentifier(identifier), nullptr);
  EXPECT_EQ(store->calendarsForEntityType(EKEntityType::kEvent).size(), 1u);
}

TEST_P(EventKitContract, RefusesToRemoveTheLastCalendarOfItsKind) {
  expectRefused(store->removeCalendar(calendar(), true, error));
  error.reset();
  expectRefused(store->removeCalendar(list(), true, error));
}

TEST_P(EventKitContract, RefusesNothing) {
  expectRefused(store->saveCalendar(nullptr, true, error));
  error.reset();
  expectRefused(store->removeCalendar(nullptr, true, error));
  error.reset();
  expectRefused(store->saveEvent(nullptr, EKSpan::kThisEvent, true, error));
  error.reset();
  expectRefused(store->removeEvent(nullptr, EKSpan::kThisEvent, true, error));
  error.reset();
  expectRefused(store->saveReminder(nullptr, true, error));
  error.reset();
  expectRefused(store->removeReminder(nullptr, true, error));
}

// Events

TEST_P(EventKitContract, GivesASavedEventItsIdentifiersAndDates) {
  const auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_FALSE(event->eventIdentifier().has_value() && !event->eventIdentifier()->empty() &&
               store->eventWithIdentifier(*event->eventIdentifier()) != nullptr);
  const auto identifier = save(event);
  ASSERT_FALSE(identifier.empty());
  const auto opened = store->eventWithIdentifier(identifier);
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(opened->eventIdentifier(), identifier);
  EXPECT_TRUE(opened->calendarItemIdentifier().has_value());
  EXPECT_TRUE(opened->calendarItemExternalIdentifier().has_value());
  EXPECT_EQ(opened->creationDate(), subject->now());
  EXPECT_EQ(opened->lastModifiedDate(), subject->now());
  EXPECT_EQ(opened->occurrenceDate(), at(11, 3, 9));
}

TEST_P(EventKitContract, KeepsWhatIsSetOnAnEvent) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setLocation("Room 4");
  event->setNotes("Bring figures\nand cake");
  event->setUrl("https://example.org/review");
  const auto opened = store->eventWithIdentifier(save(event));
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(opened->title(), "Review");
  EXPECT_EQ(opened->startDate(), at(11, 3, 9));
  EXPECT_EQ(opened->endDate(), at(11, 3, 10));
  EXPECT_EQ(opened->location(), "Room 4");
  EXPECT_EQ(opened->notes(), "Bring figures\nand cake");
  EXPECT_EQ(opened->url(), "https://example.org/review");
  EXPECT_EQ(opened->calendar()->title(), "Calendar");
  EXPECT_FALSE(opened->isAllDay());
  EXPECT_FALSE(opened->isDetached());
  EXPECT_FALSE(opened->recurrenceRules().has_value());
  EXPECT_FALSE(opened->hasAttendees());
  EXPECT_FALSE(opened->attendees().has_value());
}

TEST_P(EventKitContract, TakesTextsAwayAgain) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setLocation("Room 4");
  const auto identifier = save(event);
  event = store->eventWithIdentifier(identifier);
  event->setLocation(std::nullopt);
  save(event);
  EXPECT_EQ(store->eventWithIdentifier(identifier)->location(), std::nullopt);
}

TEST_P(EventKitContract, KeepsChangesInTheObjectUntilItIsSaved) {
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto event = store->eventWithIdentifier(identifier);
  event->setTitle("Changed");
  EXPECT_EQ(event->title(), "Changed");
  EXPECT_EQ(store->eventWithIdentifier(identifier)->title(), "Review");
}

TEST_P(EventKitContract, SavesAnEventAgainUnderTheSameIdentifier) {
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto event = store->eventWithIdentifier(identifier);
  event->setTitle("Changed");
  EXPECT_EQ(save(event), identifier);
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), ElementsAre("Changed"));
}

TEST_P(EventKitContract, MovesAnEventToAnotherCalendar) {
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto event = store->eventWithIdentifier(identifier);
  event->setCalendar(addCalendar("Team"));
  save(event);
  EXPECT_EQ(store->eventWithIdentifier(identifier)->calendar()->title(), "Team");
}

TEST_P(EventKitContract, RefusesAnEventWithoutACalendar) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setCalendar(nullptr);
  expectRefused(store->saveEvent(event, EKSpan::kThisEvent, true, error));
}

TEST_P(EventKitContract, RefusesAnEventWithoutAStartOrAnEnd) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setStartDate(std::nullopt);
  expectRefused(store->saveEvent(event, EKSpan::kThisEvent, true, error));
  error.reset();
  event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setEndDate(std::nullopt);
  expectRefused(store->saveEvent(event, EKSpan::kThisEvent, true, error));
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), IsEmpty());
}

TEST_P(EventKitContract, RefusesChangesInAReadOnlyCalendar) {
  const auto made = addCalendar("Holidays");
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setCalendar(made);
  const auto identifier = save(event);
  subject->makeReadOnly(*made->calendarIdentifier());
  event = store->eventWithIdentifier(identifier);
  event->setTitle("Changed");
  expectRefused(store->saveEvent(event, EKSpan::kThisEvent, true, error));
  error.reset();
  expectRefused(store->removeEvent(event, EKSpan::kThisEvent, true, error));
  ASSERT_NE(store->eventWithIdentifier(identifier), nullptr);
  EXPECT_EQ(store->eventWithIdentifier(identifier)->title(), "Review");
}

TEST_P(EventKitContract, ListsAttendeesAndRefusesToSaveTheirEvent) {
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  subject->invite(identifier, "Ada Example", "ada@example.org");
  const auto event = store->eventWithIdentifier(identifier);
  EXPECT_TRUE(event->hasAttendees());
  ASSERT_TRUE(event->attendees().has_value());
  ASSERT_EQ(event->attendees()->size(), 1u);
  EXPECT_EQ(event->attendees()->front()->name(), "Ada Example");
  EXPECT_EQ(event->attendees()->front()->url(), "mailto:ada@example.org");
  EXPECT_EQ(event->attendees()->front()->emailAddresses(), std::vector<std::string>{"ada@example.org"});
  event->setTitle("Changed");
  expectRefused(store->saveEvent(event, EKSpan::kThisEvent, true, error));
}

TEST_P(EventKitContract, RemovesAnEvent) {
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  ASSERT_TRUE(store->removeEvent(store->eventWithIdentifier(identifier), EKSpan::kThisEvent, true, error));
  EXPECT_EQ(store->eventWithIdentifier(identifier), nullptr);
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), IsEmpty());
}

TEST_P(EventKitContract, FindsAnEventAsACalendarItemToo) {
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto item =
      store->calendarItemWithIdentifier(*store->eventWithIdentifier(identifier)->calendarItemIdentifier());
  ASSERT_NE(item, nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<EKEvent>(item), nullptr);
  EXPECT_EQ(store->calendarItemWithIdentifier("no such item"), nullptr);
}

// Event queries

TEST_P(EventKitContract, GivesEventsThatOverlapTheRange) {
  addEvent("ends at its start", at(11, 2, 8), at(11, 2, 9));
  addEvent("reaches in", at(11, 2, 8), at(11, 2, 10));
  addEvent("inside", at(11, 2, 11), at(11, 2, 12));
  addEvent("reaches out", at(11, 2, 16), at(11, 2, 18));
  addEvent("starts at its end", at(11, 2, 17), at(11, 2, 19));
  EXPECT_THAT(titlesBetween(at(11, 2, 9), at(11, 2, 17)), ElementsAre("reaches in", "inside", "reaches out"));
}

TEST_P(EventKitContract, OrdersEventsByStartThenEnd) {
  addEvent("late", at(11, 3, 9), at(11, 3, 10));
  addEvent("long", at(11, 2, 9), at(11, 2, 12));
  addEvent("short", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), ElementsAre("short", "long", "late"));
}

TEST_P(EventKitContract, AsksOnlyTheCalendarsOfThePredicate) {
  addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto team = addCalendar("Team");
  EXPECT_THAT(titles(store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {team})), IsEmpty());
  EXPECT_THAT(titles(store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {team, calendar()})), ElementsAre("Review"));
}

TEST_P(EventKitContract, AnswersFromTheDistantPastToTheDistantFuture) {
  addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_THAT(titlesBetween(distantPast(), distantFuture()), ElementsAre("Review"));
}

TEST_P(EventKitContract, MakesNoPredicateOfAStartAfterItsEnd) {
  EXPECT_EQ(store->predicateForEvents(at(12, 1, 0), at(11, 1, 0), {calendar()}), nullptr);
}

TEST_P(EventKitContract, NarrowsAPredicateToOneEvent) {
  addEvent("Other", at(11, 2, 9), at(11, 2, 10));
  const auto identifier = addEvent("Wanted", at(11, 2, 9), at(11, 2, 10));
  const auto calendars = store->calendarsForEntityType(EKEntityType::kEvent);
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 2, 0), at(11, 3, 0), calendars, identifier)),
              ElementsAre("Wanted"));
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 3, 0), at(11, 4, 0), calendars, identifier)), IsEmpty());
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 2, 0), at(11, 3, 0), {addCalendar("Work")}, identifier)),
              IsEmpty());
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 2, 0), at(11, 3, 0), calendars, "nowhere")), IsEmpty());
  EXPECT_EQ(store->predicateForOneEvent(at(11, 3, 0), at(11, 2, 0), calendars, identifier), nullptr);
}

// Series

TEST_P(EventKitContract, GivesEachOccurrenceOfASeries) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  EXPECT_THAT(startsOf(identifier), ElementsAre(at(11, 2, 9), at(11, 3, 9), at(11, 4, 9)));
}

TEST_P(EventKitContract, OpensTheFirstOccurrenceOfASeriesByItsIdentifier) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store->eventWithIdentifier(identifier);
  EXPECT_EQ(event->startDate(), at(11, 2, 9));
  EXPECT_EQ(event->occurrenceDate(), at(11, 2, 9));
}

TEST_P(EventKitContract, OpensTheOccurrenceOfADate) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto second = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->startDate(), at(11, 3, 9));
  EXPECT_EQ(second->endDate(), at(11, 3, 10));
  EXPECT_EQ(second->eventIdentifier(), identifier);
  EXPECT_EQ(store->occurrenceOfEvent(identifier, at(11, 3, 10)), nullptr);
  EXPECT_EQ(store->occurrenceOfEvent(identifier, at(11, 5, 9)), nullptr);
  EXPECT_EQ(store->occurrenceOfEvent("nowhere", at(11, 3, 9)), nullptr);
}

TEST_P(EventKitContract, FindsAMovedOccurrenceWhereTheRulePutIt) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto second = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(second, nullptr);
  second->setStartDate(at(11, 20, 15));
  second->setEndDate(at(11, 20, 16));
  save(second, EKSpan::kThisEvent);
  const auto moved = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(moved, nullptr);
  EXPECT_EQ(moved->startDate(), at(11, 20, 15));
  EXPECT_EQ(moved->occurrenceDate(), at(11, 3, 9));
  EXPECT_TRUE(moved->isDetached());
  EXPECT_EQ(store->occurrenceOfEvent(identifier, at(11, 20, 15)), nullptr);
  EXPECT_THAT(startsOf(identifier), ElementsAre(at(11, 2, 9), at(11, 4, 9), at(11, 20, 15)));
}

TEST_P(EventKitContract, RemovesThisTheLaterOrAllOccurrences) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 5);
  const auto remove = [&](Date occurrence, EKSpan span) {
    EXPECT_TRUE(store->removeEvent(store->occurrenceOfEvent(identifier, occurrence), span, true, error));
  };
  remove(at(11, 3, 9), EKSpan::kThisEvent);
  EXPECT_THAT(startsOf(identifier), ElementsAre(at(11, 2, 9), at(11, 4, 9), at(11, 5, 9), at(11, 6, 9)));
  remove(at(11, 5, 9), EKSpan::kFutureEvents);
  EXPECT_THAT(startsOf(identifier), ElementsAre(at(11, 2, 9), at(11, 4, 9)));
  remove(at(11, 4, 9), EKSpan::kAllEvents);
  EXPECT_EQ(store->eventWithIdentifier(identifier), nullptr);
}

TEST_P(EventKitContract, SavingAllOfASeriesFromALaterOccurrenceMovesAndRenamesTheEarlierToo) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto second = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(second, nullptr);
  second->setTitle("Changed");
  second->setStartDate(at(11, 3, 11));
  second->setEndDate(at(11, 3, 12));
  save(second, EKSpan::kAllEvents);
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(11, 30, 0)), ElementsAre("Changed", "Changed", "Changed"));
  EXPECT_THAT(startsOf(identifier), ElementsAre(at(11, 2, 11), at(11, 3, 11), at(11, 4, 11)));
}

TEST_P(EventKitContract, AnswersTheSamePredicateWithWhatTheStoreHoldsNow) {
  const auto predicate = store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {calendar()});
  EXPECT_THAT(titles(predicate), IsEmpty());
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_THAT(titles(predicate), ElementsAre("Review"));
  ASSERT_TRUE(store->removeEvent(store->eventWithIdentifier(identifier), EKSpan::kThisEvent, true, error));
  EXPECT_THAT(titles(predicate), IsEmpty());
}

TEST_P(EventKitContract, KeepsTheLengthOfAResultWhileTheStoreChanges) {
  addEvent("first", at(11, 3, 9), at(11, 3, 10));
  const auto identifier = addEvent("second", at(11, 4, 9), at(11, 4, 10));
  const auto events =
      store->eventsMatchingPredicate(store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {calendar()}));
  ASSERT_TRUE(store->removeEvent(store->eventWithIdentifier(identifier), EKSpan::kThisEvent, true, error));
  ASSERT_EQ(events->count(), 2u);
  EXPECT_EQ(events->objectAtIndex(0)->title(), "first");
}

// Reminders

TEST_P(EventKitContract, KeepsWhatIsSetOnAReminder) {
  auto made = newReminder("Water the plants");
  made->setNotes("All of them");
  made->setDueDateComponents(dueAt(11, 5, 9));
  made->setPriority(5);
  const auto opened = reminder(save(made));
  ASSERT_NE(opened, nullptr);
  EXPECT_EQ(opened->title(), "Water the plants");
  EXPECT_EQ(opened->notes(), "All of them");
  EXPECT_EQ(opened->priority(), 5);
  ASSERT_TRUE(opened->dueDateComponents().has_value());
  EXPECT_EQ(*opened->dueDateComponents(), dueAt(11, 5, 9));
  EXPECT_EQ(opened->calendar()->title(), "Reminders");
  EXPECT_FALSE(opened->isCompleted());
}

TEST_P(EventKitContract, CompletesAReminderNow) {
  auto made = newReminder("Water the plants");
  made->setCompleted(true);
  EXPECT_TRUE(made->isCompleted());
  EXPECT_EQ(made->completionDate(), subject->now());
  made->setCompleted(false);
  EXPECT_FALSE(made->isCompleted());
  EXPECT_EQ(made->completionDate(), std::nullopt);
}

TEST_P(EventKitContract, CompletesAReminderByItsCompletionDate) {
  auto made = newReminder("Water the plants");
  made->setCompletionDate(at(10, 30, 12));
  EXPECT_TRUE(made->isCompleted());
  const auto opened = reminder(save(made));
  EXPECT_EQ(opened->completionDate(), at(10, 30, 12));
  opened->setCompletionDate(std::nullopt);
  EXPECT_FALSE(opened->isCompleted());
}

TEST_P(EventKitContract, RefusesAReminderWithoutAList) {
  auto made = newReminder("Water the plants");
  made->setCalendar(nullptr);
  expectRefused(store->saveReminder(made, true, error));
}

TEST_P(EventKitContract, RefusesChangesInAReadOnlyList) {
  const auto chores = addCalendar("Chores", EKEntityType::kReminder);
  auto made = newReminder("Water the plants");
  made->setCalendar(chores);
  const auto identifier = save(made);
  subject->makeReadOnly(*chores->calendarIdentifier());
  const auto opened = reminder(identifier);
  expectRefused(store->saveReminder(opened, true, error));
  error.reset();
  expectRefused(store->removeReminder(opened, true, error));
  EXPECT_NE(reminder(identifier), nullptr);
}

TEST_P(EventKitContract, RemovesAReminder) {
  const auto identifier = addReminder("Water the plants");
  ASSERT_TRUE(store->removeReminder(reminder(identifier), true, error));
  EXPECT_EQ(store->calendarItemWithIdentifier(identifier), nullptr);
}

TEST_P(EventKitContract, DeliversTheRemindersOfTheLists) {
  addReminder("Water the plants");
  const auto chores = addCalendar("Chores", EKEntityType::kReminder);
  EXPECT_THAT(reminderTitles(store->predicateForRemindersInCalendars({list()})), ElementsAre("Water the plants"));
  EXPECT_THAT(reminderTitles(store->predicateForRemindersInCalendars({chores})), IsEmpty());
}

TEST_P(EventKitContract, DeliversOpenRemindersDueBeforeTheEnd) {
  addReminder("soon", dueAt(11, 5, 9));
  addReminder("later", dueAt(11, 20, 9));
  addReminder("some day");
  auto done = newReminder("done");
  done->setDueDateComponents(dueAt(11, 4, 9));
  done->setCompleted(true);
  save(done);
  // 09:00 in Berlin is 08:00 UTC.
  const auto before = [&](Date end) { return store->predicateForIncompleteReminders(std::nullopt, end, {list()}); };
  EXPECT_THAT(reminderTitles(before(at(11, 5, 8))), IsEmpty());
  EXPECT_THAT(reminderTitles(before(at(11, 5, 8, 1))), ElementsAre("soon"));
  EXPECT_THAT(reminderTitles(store->predicateForIncompleteReminders(at(11, 6, 0), std::nullopt, {list()})),
              ElementsAre("later"));
  EXPECT_THAT(reminderTitles(store->predicateForIncompleteReminders(std::nullopt, std::nullopt, {list()})),
              UnorderedElementsAre("soon", "later", "some day"));
}

TEST_P(EventKitContract, DeliversRemindersCompletedFromTheStartOn) {
  addReminder("open");
  for (const int day : {10, 20}) {
    auto done = newReminder("done on the " + std::to_string(day));
    done->setCompletionDate(at(10, day, 12));
    save(done);
  }
  const auto since = [&](std::optional<Date> start) {
    return store->predicateForCompletedReminders(start, std::nullopt, {list()});
  };
  EXPECT_THAT(reminderTitles(since(std::nullopt)), UnorderedElementsAre("done on the 10", "done on the 20"));
  EXPECT_THAT(reminderTitles(since(at(10, 20, 12))), ElementsAre("done on the 20"));
  EXPECT_THAT(reminderTitles(since(at(10, 20, 12, 1))), IsEmpty());
}

TEST_P(EventKitContract, AnswersNoReminderPredicateWithNothing) { EXPECT_EQ(delivered(nullptr), nullptr); }

// Alarms

TEST_P(EventKitContract, KeepsAlarmsInTheirOrder) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->addAlarm(kit().alarmWithRelativeOffset(-900));
  event->addAlarm(kit().alarmWithAbsoluteDate(at(11, 2, 20)));
  const auto opened = store->eventWithIdentifier(save(event));
  EXPECT_TRUE(opened->hasAlarms());
  ASSERT_EQ(opened->alarms().size(), 2u);
  EXPECT_EQ(opened->alarms()[0]->relativeOffset(), -900);
  EXPECT_EQ(opened->alarms()[0]->absoluteDate(), std::nullopt);
  EXPECT_EQ(opened->alarms()[1]->absoluteDate(), at(11, 2, 20));
  EXPECT_EQ(opened->alarms()[1]->relativeOffset(), 0);
}

TEST_P(EventKitContract, DerivesTheTypeOfAnAlarmFromWhatIsSet) {
  const auto alarm = kit().alarmWithRelativeOffset(-60);
  EXPECT_EQ(alarm->type(), static_cast<int>(EKAlarmType::kDisplay));
  alarm->setSoundName("Basso");
  EXPECT_EQ(alarm->type(), static_cast<int>(EKAlarmType::kAudio));
  alarm->setSoundName(std::nullopt);
  alarm->setEmailAddress("me@example.org");
  EXPECT_EQ(alarm->type(), static_cast<int>(EKAlarmType::kEmail));
  alarm->setEmailAddress(std::nullopt);
  alarm->setUrl("file:///usr/bin/true");
  EXPECT_EQ(alarm->type(), static_cast<int>(EKAlarmType::kProcedure));
}

TEST_P(EventKitContract, KeepsTheTypeThatAnAlarmWasGivenUntilItFollowsFromWhatIsSet) {
  const auto alarm = kit().alarmWithRelativeOffset(-60);
  alarm->setEmailAddress("me@example.org");
  alarm->setType(EKAlarmType::kDisplay);
  EXPECT_EQ(alarm->type(), static_cast<int>(EKAlarmType::kDisplay));
  EXPECT_EQ(alarm->emailAddress(), "me@example.org");
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->addAlarm(alarm);
  const auto opened = store->eventWithIdentifier(save(event));
  EXPECT_EQ(opened->alarms().front()->type(), static_cast<int>(EKAlarmType::kDisplay));
  alarm->setEmailAddress("you@example.org");
  EXPECT_EQ(alarm->type(), static_cast<int>(EKAlarmType::kEmail));
}

TEST_P(EventKitContract, MakesAnAlarmAbsoluteOrRelativeByWhatIsSetLast) {
  const auto alarm = kit().alarmWithRelativeOffset(-60);
  alarm->setAbsoluteDate(at(11, 2, 20));
  EXPECT_EQ(alarm->absoluteDate(), at(11, 2, 20));
  EXPECT_EQ(alarm->relativeOffset(), 0);
  alarm->setRelativeOffset(-120);
  EXPECT_EQ(alarm->absoluteDate(), std::nullopt);
  EXPECT_EQ(alarm->relativeOffset(), -120);
}

TEST_P(EventKitContract, KeepsWhatIsSetOnAnAlarm) {
  auto made = newReminder("Water the plants");
  const auto alarm = kit().alarmWithRelativeOffset(-60);
  alarm->setEmailAddress("me@example.org");
  made->addAlarm(alarm);
  const auto second = kit().alarmWithRelativeOffset(-120);
  second->setSoundName("Basso");
  made->addAlarm(second);
  const auto opened = reminder(save(made));
  ASSERT_EQ(opened->alarms().size(), 2u);
  EXPECT_EQ(opened->alarms()[0]->emailAddress(), "me@example.org");
  EXPECT_EQ(opened->alarms()[1]->soundName(), "Basso");
}

TEST_P(EventKitContract, SaysWhenTheAlarmsOfASavedItemWereMade) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->addAlarm(kit().alarmWithRelativeOffset(-900));
  const auto opened = store->eventWithIdentifier(save(event));
  ASSERT_EQ(opened->alarms().size(), 1u);
  EXPECT_EQ(opened->alarms()[0]->creationDate(), subject->now());
}

TEST_P(EventKitContract, ChangesAnAlarmWithTheItemThatHoldsIt) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->addAlarm(kit().alarmWithRelativeOffset(-900));
  const auto identifier = save(event);
  event = store->eventWithIdentifier(identifier);
  event->alarms().front()->setRelativeOffset(-60);
  save(event);
  EXPECT_EQ(store->eventWithIdentifier(identifier)->alarms().front()->relativeOffset(), -60);
}

TEST_P(EventKitContract, RemovesTheAlarmThatIsNamed) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->addAlarm(kit().alarmWithRelativeOffset(-900));
  event->addAlarm(kit().alarmWithRelativeOffset(-60));
  event = store->eventWithIdentifier(save(event));
  event->removeAlarm(event->alarms().front());
  ASSERT_EQ(event->alarms().size(), 1u);
  EXPECT_EQ(event->alarms().front()->relativeOffset(), -60);
  event->removeAlarm(event->alarms().front());
  EXPECT_FALSE(event->hasAlarms());
}

// Recurrence rules

TEST_P(EventKitContract, KeepsARule) {
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kWeekly;
  parts.interval = 2;
  parts.daysOfTheWeek.emplace({kit().dayOfWeek(2, 0), kit().dayOfWeek(6, 0)});
  parts.end = kit().recurrenceEndWithOccurrenceCount(6);
  const auto made = kit().recurrenceRule(parts);
  ASSERT_NE(made.rule, nullptr) << made.refusal.value_or(Error{}).localizedDescription;
  auto event = newEvent("Practice", at(11, 2, 17), at(11, 2, 18));
  event->addRecurrenceRule(made.rule);
  const auto opened = store->eventWithIdentifier(save(event));
  ASSERT_TRUE(opened->recurrenceRules().has_value());
  ASSERT_EQ(opened->recurrenceRules()->size(), 1u);
  const auto rule = opened->recurrenceRules()->front();
  EXPECT_EQ(rule->frequency(), static_cast<int>(EKRecurrenceFrequency::kWeekly));
  EXPECT_EQ(rule->interval(), 2);
  ASSERT_EQ(rule->daysOfTheWeek().size(), 2u);
  EXPECT_EQ(rule->daysOfTheWeek()[0]->dayOfTheWeek(), 2);
  EXPECT_EQ(rule->daysOfTheWeek()[1]->dayOfTheWeek(), 6);
  EXPECT_EQ(rule->daysOfTheWeek()[0]->weekNumber(), 0);
  EXPECT_THAT(rule->daysOfTheMonth(), IsEmpty());
  EXPECT_THAT(rule->monthsOfTheYear(), IsEmpty());
  ASSERT_NE(rule->recurrenceEnd(), nullptr);
  EXPECT_EQ(rule->recurrenceEnd()->occurrenceCount(), 6);
  EXPECT_EQ(rule->recurrenceEnd()->endDate(), std::nullopt);
}

TEST_P(EventKitContract, KeepsDaysMonthsAndTheEndDateOfARule) {
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kYearly;
  parts.daysOfTheMonth = {1, 15};
  parts.monthsOfTheYear = {1, 6};
  parts.end = kit().recurrenceEndWithEndDate(at(12, 31, 22));
  const auto made = kit().recurrenceRule(parts);
  ASSERT_NE(made.rule, nullptr) << made.refusal.value_or(Error{}).localizedDescription;
  EXPECT_THAT(made.rule->daysOfTheMonth(), ElementsAre(1, 15));
  EXPECT_THAT(made.rule->monthsOfTheYear(), ElementsAre(1, 6));
  EXPECT_EQ(made.rule->recurrenceEnd()->endDate(), at(12, 31, 22));
  EXPECT_EQ(made.rule->recurrenceEnd()->occurrenceCount(), 0);
}

TEST_P(EventKitContract, TakesRulesAway) {
  auto event = newEvent("Practice", at(11, 2, 17), at(11, 2, 18));
  EKRecurrenceRuleParts parts;
  parts.end = kit().recurrenceEndWithOccurrenceCount(3);
  event->addRecurrenceRule(kit().recurrenceRule(parts).rule);
  const auto identifier = save(event);
  event = store->eventWithIdentifier(identifier);
  event->removeRecurrenceRule(event->recurrenceRules()->front());
  event->setRecurrenceRules(std::nullopt);
  EXPECT_FALSE(event->recurrenceRules().has_value());
  save(event, EKSpan::kFutureEvents);
  EXPECT_FALSE(store->eventWithIdentifier(identifier)->recurrenceRules().has_value());
}

TEST_P(EventKitContract, RefusesRulesThatCannotBe) {
  const auto refusalOf = [&](EKRecurrenceFrequency frequency, std::vector<long> days, std::vector<long> months) {
    EKRecurrenceRuleParts parts;
    parts.frequency = frequency;
    if (!days.empty()) parts.daysOfTheMonth = days;
    if (!months.empty()) parts.monthsOfTheYear = months;
    const auto made = kit().recurrenceRule(parts);
    return made.rule == nullptr && made.refusal.has_value();
  };
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kMonthly, {0}, {}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kMonthly, {32}, {}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kMonthly, {-32}, {}));
  EXPECT_FALSE(refusalOf(EKRecurrenceFrequency::kMonthly, {-31, 31}, {}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kYearly, {}, {0}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kYearly, {}, {13}));
  EXPECT_FALSE(refusalOf(EKRecurrenceFrequency::kYearly, {}, {1, 12}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kWeekly, {15}, {}));
}

TEST_P(EventKitContract, MakesNoDayOutsideTheWeek) {
  EXPECT_EQ(kit().dayOfWeek(0, 0), nullptr);
  EXPECT_EQ(kit().dayOfWeek(8, 0), nullptr);
  ASSERT_NE(kit().dayOfWeek(7, 0), nullptr);
  EXPECT_EQ(kit().dayOfWeek(7, 0)->dayOfTheWeek(), 7);
  EXPECT_EQ(kit().dayOfWeek(7, 0)->weekNumber(), 0);
}

TEST_P(EventKitContract, MakesTheNthDayOfItsMonthOrYear) {
  ASSERT_NE(kit().dayOfWeek(3, -1), nullptr);
  EXPECT_EQ(kit().dayOfWeek(3, -1)->weekNumber(), -1);
  EXPECT_EQ(kit().dayOfWeek(3, 53)->weekNumber(), 53);
  EXPECT_EQ(kit().dayOfWeek(3, 54), nullptr);
  EXPECT_EQ(kit().dayOfWeek(3, -54), nullptr);
}

TEST_P(EventKitContract, HandsOutAStoreThatCannotBeOpenedToo) {
  subject->keepFromOpening();
  EXPECT_NE(kit().eventStoreWithAccessToEntityTypes(EventKit::kMaskEvent), nullptr);
}

TEST_P(EventKitContract, AStoreThatCannotBeOpenedHasNothing) {
  subject->keepFromOpening();
  EXPECT_THAT(store->calendarsForEntityType(EKEntityType::kEvent), IsEmpty());
  EXPECT_THAT(store->calendarsForEntityType(EKEntityType::kReminder), IsEmpty());
  EXPECT_EQ(store->defaultCalendarForNewEvents(), nullptr);
  EXPECT_EQ(store->defaultCalendarForNewReminders(), nullptr);
  EXPECT_EQ(store->calendarWithIdentifier("calendar"), nullptr);
  EXPECT_EQ(store->eventWithIdentifier("event"), nullptr);
  EXPECT_EQ(store->occurrenceOfEvent("event", at(11, 2, 9)), nullptr);
  EXPECT_EQ(store->calendarItemWithIdentifier("reminder"), nullptr);
}

TEST_P(EventKitContract, AStoreThatCannotBeOpenedMakesNoPredicate) {
  subject->keepFromOpening();
  EXPECT_EQ(store->predicateForEvents(distantPast(), distantFuture(), {}), nullptr);
  EXPECT_EQ(store->predicateForOneEvent(distantPast(), distantFuture(), {}, "event"), nullptr);
  EXPECT_EQ(store->predicateForRemindersInCalendars({}), nullptr);
  EXPECT_EQ(store->predicateForIncompleteReminders(std::nullopt, std::nullopt, {}), nullptr);
  EXPECT_EQ(store->predicateForCompletedReminders(at(11, 2, 9), std::nullopt, {}), nullptr);
  EXPECT_EQ(store->eventsMatchingPredicate(nullptr), nullptr);
  EXPECT_EQ(delivered(nullptr), nullptr);
}

TEST_P(EventKitContract, AStoreThatCannotBeOpenedRefusesSavesAndRemovals) {
  subject->keepFromOpening();
  const auto made = kit().calendarForEntityType(EKEntityType::kEvent, store);
  made->setTitle("Work");
  const auto refused = [&](bool done) {
    expectRefused(done);
    error.reset();
  };
  refused(store->saveCalendar(made, true, error));
  refused(store->removeCalendar(made, true, error));
  const auto event = newEvent("Review", at(11, 2, 9), at(11, 2, 10));
  refused(store->saveEvent(event, EKSpan::kThisEvent, true, error));
  refused(store->removeEvent(event, EKSpan::kFutureEvents, true, error));
  const auto task = newReminder("Water the plants");
  refused(store->saveReminder(task, true, error));
  refused(store->removeReminder(task, true, error));
}

}  // namespace orlocal::contract
