#pragma once

#include "platform/cal_contract.h"

// What tasks and queries for them promise.

namespace orlocal::contract {

TEST_P(CalContract, KeepsEveryPropertyOfATask) {
  auto task = newTask("Tidy");
  task->setNotes("Desk");
  task->setUrl("https://example.org/b");
  task->setDueDate(at(11, 5, 17));
  task->setPriority(5);
  const auto found = store()->taskWithUID(saved(task));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->title(), "Tidy");
  EXPECT_EQ(found->notes(), "Desk");
  EXPECT_EQ(found->url(), "https://example.org/b");
  EXPECT_EQ(found->dueDate(), at(11, 5, 17));
  EXPECT_EQ(found->priority(), 5);
  EXPECT_FALSE(found->isCompleted());
  EXPECT_FALSE(found->completedDate());
  EXPECT_EQ(found->calendar()->uid(), subject->taskCalendar()->uid());
}

TEST_P(CalContract, CompletingATaskDatesItNowAndReopeningClearsTheDate) {
  auto task = newTask("Tidy");
  task->setIsCompleted(true);
  EXPECT_EQ(task->completedDate(), subject->now());
  task->setIsCompleted(false);
  EXPECT_FALSE(task->completedDate());
}

TEST_P(CalContract, ACompletionDateCompletesATaskAndNoneReopensIt) {
  auto task = newTask("Tidy");
  task->setCompletedDate(at(10, 1, 12));
  EXPECT_TRUE(task->isCompleted());
  task->setCompletedDate(std::nullopt);
  EXPECT_FALSE(task->isCompleted());
}

TEST_P(CalContract, TaskQueriesTellOpenDueAndCompletedTasksApart) {
  saved(newTask("Whenever"));
  auto soon = newTask("Soon");
  soon->setDueDate(at(11, 3, 12));
  saved(soon);
  auto later = newTask("Later");
  later->setDueDate(at(11, 10, 12));
  saved(later);
  auto done = newTask("Done");
  done->setCompletedDate(at(10, 20, 12));
  saved(done);
  const auto all = store()->calendars();
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithCalendars(all)),
              testing::UnorderedElementsAre("Whenever", "Soon", "Later", "Done"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithUncompletedTasks(all)),
              testing::UnorderedElementsAre("Whenever", "Soon", "Later"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithUncompletedTasksDueBefore(at(11, 10, 12), all)),
              testing::ElementsAre("Soon"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithTasksCompletedSince(at(10, 20, 12), all)),
              testing::ElementsAre("Done"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithTasksCompletedSince(at(10, 20, 13), all)), testing::IsEmpty());
}

TEST_P(CalContract, TaskQueriesThatNeedADateAreNotMadeWithoutOne) {
  EXPECT_EQ(store()->taskPredicateWithUncompletedTasksDueBefore(std::nullopt, store()->calendars()), nullptr);
  EXPECT_EQ(store()->taskPredicateWithTasksCompletedSince(std::nullopt, store()->calendars()), nullptr);
}

TEST_P(CalContract, RemovesATask) {
  const auto uid = saved(newTask("Tidy"));
  ASSERT_TRUE(store()->removeTask(store()->taskWithUID(uid), error));
  EXPECT_EQ(store()->taskWithUID(uid), nullptr);
}

TEST_P(CalContract, AnEventIsNoTaskAndATaskNoEvent) {
  const auto event = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto task = saved(newTask("Tidy"));
  EXPECT_EQ(store()->taskWithUID(event), nullptr);
  EXPECT_EQ(store()->eventWithUID(task, std::nullopt), nullptr);
}

}  // namespace orlocal::contract
