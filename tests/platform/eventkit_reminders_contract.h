#pragma once

#include "platform/eventkit_contract.h"

// What reminders and queries for them promise.

namespace orlocal::contract {

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
  EXPECT_THAT(reminderTitles(store->predicateForRemindersInCalendars({list()})),
              testing::ElementsAre("Water the plants"));
  EXPECT_THAT(reminderTitles(store->predicateForRemindersInCalendars({chores})), testing::IsEmpty());
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
  EXPECT_THAT(reminderTitles(before(at(11, 5, 8))), testing::IsEmpty());
  EXPECT_THAT(reminderTitles(before(at(11, 5, 8, 1))), testing::ElementsAre("soon"));
  EXPECT_THAT(reminderTitles(store->predicateForIncompleteReminders(at(11, 6, 0), std::nullopt, {list()})),
              testing::ElementsAre("later"));
  EXPECT_THAT(reminderTitles(store->predicateForIncompleteReminders(std::nullopt, std::nullopt, {list()})),
              testing::UnorderedElementsAre("soon", "later", "some day"));
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
  EXPECT_THAT(reminderTitles(since(std::nullopt)), testing::UnorderedElementsAre("done on the 10", "done on the 20"));
  EXPECT_THAT(reminderTitles(since(at(10, 20, 12))), testing::ElementsAre("done on the 20"));
  EXPECT_THAT(reminderTitles(since(at(10, 20, 12, 1))), testing::IsEmpty());
}

TEST_P(EventKitContract, AnswersNoReminderPredicateWithNothing) { EXPECT_EQ(delivered(nullptr), nullptr); }

}  // namespace orlocal::contract
