#pragma once

#include "platform/cal_contract.h"

// What events and queries for them promise.

namespace orlocal::contract {

// Events

TEST_P(CalContract, ChangesOfAnEventStayInTheObjectUntilItIsSaved) {
  const auto uid = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto event = store()->eventWithUID(uid, std::nullopt);
  event->setTitle("Renamed");
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->title(), "Review");
  ASSERT_TRUE(store()->saveEvent(event, CalSpan::kThisEvent, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->title(), "Renamed");
}

TEST_P(CalContract, KeepsEveryPropertyOfAnEvent) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setNotes("Bring\nnotes");
  event->setUrl("https://example.org/a");
  event->setLocation("Room 1");
  const auto found = store()->eventWithUID(saved(event), std::nullopt);
  EXPECT_EQ(found->notes(), "Bring\nnotes");
  EXPECT_EQ(found->url(), "https://example.org/a");
  EXPECT_EQ(found->location(), "Room 1");
  EXPECT_EQ(found->startDate(), at(11, 3, 9));
  EXPECT_EQ(found->endDate(), at(11, 3, 10));
  EXPECT_FALSE(found->isAllDay());
  EXPECT_FALSE(found->isDetached());
  EXPECT_EQ(found->calendar()->uid(), subject->eventCalendar()->uid());
}

TEST_P(CalContract, AnAllDayEventStaysOne) {
  auto event = newEvent("Fair", at(11, 3, 0), at(11, 3, 22));
  event->setIsAllDay(true);
  EXPECT_TRUE(store()->eventWithUID(saved(event), std::nullopt)->isAllDay());
}

TEST_P(CalContract, StampsAnItemWhenItIsSaved) {
  const auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_FALSE(event->dateStamp());
  EXPECT_EQ(store()->eventWithUID(saved(event), std::nullopt)->dateStamp(), subject->now());
}

TEST_P(CalContract, NobodyIsInvitedToANewEvent) {
  const auto uid = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->attendees(), std::nullopt);
}

TEST_P(CalContract, RemovesAnEvent) {
  const auto uid = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, std::nullopt), CalSpan::kThisEvent, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt), nullptr);
}

// Event queries

TEST_P(CalContract, ARangeIsHalfOpenAndTakesInWhatReachesIntoIt) {
  addEvent("Ends at the start", at(11, 2, 9), at(11, 2, 10));
  addEvent("Reaches in", at(11, 2, 9), at(11, 2, 11));
  addEvent("Inside", at(11, 2, 11), at(11, 2, 12));
  addEvent("Starts at the end", at(11, 2, 13), at(11, 2, 14));
  EXPECT_THAT(titlesBetween(at(11, 2, 10), at(11, 2, 13)), testing::ElementsAre("Reaches in", "Inside"));
}

TEST_P(CalContract, EventsComeByStartThenEnd) {
  addEvent("Third", at(11, 2, 11), at(11, 2, 12));
  addEvent("Second", at(11, 2, 9), at(11, 2, 11));
  addEvent("First", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesBetween(at(11, 2, 0), at(11, 3, 0)), testing::ElementsAre("First", "Second", "Third"));
}

TEST_P(CalContract, AnOpenRangeFindsEveryEvent) {
  addEvent("Long ago", at(1, 2, 9), at(1, 2, 10));
  addEvent("Later", at(12, 2, 9), at(12, 2, 10));
  EXPECT_THAT(titlesBetween(distantPast(), distantFuture()), testing::ElementsAre("Long ago", "Later"));
}

TEST_P(CalContract, AQueryStaysInItsCalendars) {
  addEvent("Here", at(11, 2, 9), at(11, 2, 10));
  auto other = framework().calendar();
  other->setTitle("Other");
  ASSERT_TRUE(store()->saveCalendar(other, error));
  auto event = newEvent("There", at(11, 2, 9), at(11, 2, 10));
  event->setCalendar(other);
  saved(event);
  EXPECT_THAT(titlesOf(store()->eventPredicateWithStartDate(at(11, 2, 0), at(11, 3, 0), {other})),
              testing::ElementsAre("There"));
}

TEST_P(CalContract, AUidNarrowsAQueryToOneEvent) {
  addEvent("Other", at(11, 2, 9), at(11, 2, 10));
  const auto uid = addEvent("Wanted", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesOf(store()->eventPredicateWithStartDate(at(11, 2, 0), at(11, 3, 0), uid, store()->calendars())),
              testing::ElementsAre("Wanted"));
}

TEST_P(CalContract, ARangeThatEndsBeforeItStartsMakesNoPredicate) {
  EXPECT_EQ(store()->eventPredicateWithStartDate(at(11, 3, 0), at(11, 2, 0), store()->calendars()), nullptr);
}

TEST_P(CalContract, APredicateFindsWhatWasSavedAfterItWasMade) {
  const auto predicate = store()->eventPredicateWithStartDate(at(11, 2, 0), at(11, 3, 0), store()->calendars());
  EXPECT_THAT(titlesOf(predicate), testing::IsEmpty());
  addEvent("New", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesOf(predicate), testing::ElementsAre("New"));
}

TEST_P(CalContract, NoPredicateIsAnsweredWithNothing) {
  EXPECT_EQ(store()->eventsWithPredicate(nullptr), nullptr);
  EXPECT_EQ(store()->tasksWithPredicate(nullptr), nullptr);
}

}  // namespace orlocal::contract
