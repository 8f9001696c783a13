#pragma once

#include "platform/eventkit_contract.h"

// What a store promises that cannot be opened.

namespace orlocal::contract {

TEST_P(EventKitContract, HandsOutAStoreThatCannotBeOpenedToo) {
  subject->keepFromOpening();
  EXPECT_NE(kit().eventStoreWithAccessToEntityTypes(EventKit::kMaskEvent), nullptr);
}

TEST_P(EventKitContract, AStoreThatCannotBeOpenedHasNothing) {
  subject->keepFromOpening();
  EXPECT_THAT(store->calendarsForEntityType(EKEntityType::kEvent), testing::IsEmpty());
  EXPECT_THAT(store->calendarsForEntityType(EKEntityType::kReminder), testing::IsEmpty());
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
