#pragma once

#include "platform/eventkit_contract.h"

// What events and queries for them promise.

namespace orlocal::contract {

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
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), testing::ElementsAre("Changed"));
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
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), testing::IsEmpty());
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
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), testing::IsEmpty());
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
  EXPECT_THAT(titlesBetween(at(11, 2, 9), at(11, 2, 17)), testing::ElementsAre("reaches in", "inside", "reaches out"));
}

TEST_P(EventKitContract, OrdersEventsByStartThenEnd) {
  addEvent("late", at(11, 3, 9), at(11, 3, 10));
  addEvent("long", at(11, 2, 9), at(11, 2, 12));
  addEvent("short", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(12, 1, 0)), testing::ElementsAre("short", "long", "late"));
}

TEST_P(EventKitContract, AsksOnlyTheCalendarsOfThePredicate) {
  addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto team = addCalendar("Team");
  EXPECT_THAT(titles(store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {team})), testing::IsEmpty());
  EXPECT_THAT(titles(store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {team, calendar()})),
              testing::ElementsAre("Review"));
}

TEST_P(EventKitContract, AnswersFromTheDistantPastToTheDistantFuture) {
  addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_THAT(titlesBetween(distantPast(), distantFuture()), testing::ElementsAre("Review"));
}

TEST_P(EventKitContract, MakesNoPredicateOfAStartAfterItsEnd) {
  EXPECT_EQ(store->predicateForEvents(at(12, 1, 0), at(11, 1, 0), {calendar()}), nullptr);
}

TEST_P(EventKitContract, NarrowsAPredicateToOneEvent) {
  addEvent("Other", at(11, 2, 9), at(11, 2, 10));
  const auto identifier = addEvent("Wanted", at(11, 2, 9), at(11, 2, 10));
  const auto calendars = store->calendarsForEntityType(EKEntityType::kEvent);
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 2, 0), at(11, 3, 0), calendars, identifier)),
              testing::ElementsAre("Wanted"));
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 3, 0), at(11, 4, 0), calendars, identifier)),
              testing::IsEmpty());
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 2, 0), at(11, 3, 0), {addCalendar("Work")}, identifier)),
              testing::IsEmpty());
  EXPECT_THAT(titles(store->predicateForOneEvent(at(11, 2, 0), at(11, 3, 0), calendars, "nowhere")),
              testing::IsEmpty());
  EXPECT_EQ(store->predicateForOneEvent(at(11, 3, 0), at(11, 2, 0), calendars, identifier), nullptr);
}

}  // namespace orlocal::contract
