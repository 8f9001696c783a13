#pragma once

#include "platform/eventkit_contract.h"

// What calendars and reminder lists promise, and that a save or removal of nothing is refused.

namespace orlocal::contract {

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

}  // namespace orlocal::contract
