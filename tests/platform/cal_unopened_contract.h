#pragma once

#include "platform/cal_contract.h"

// What a store promises that cannot be opened.

namespace orlocal::contract {

TEST_P(CalContract, AStoreThatCannotBeOpenedHasNothing) {
  subject->keepFromOpening();
  ASSERT_NE(store(), nullptr);
  EXPECT_THAT(store()->calendars(), testing::IsEmpty());
  EXPECT_EQ(store()->calendarWithUID("calendar"), nullptr);
  EXPECT_EQ(store()->eventWithUID("event", std::nullopt), nullptr);
  EXPECT_EQ(store()->eventWithUID("event", at(11, 2, 9)), nullptr);
  EXPECT_EQ(store()->taskWithUID("task"), nullptr);
}

TEST_P(CalContract, AStoreThatCannotBeOpenedMakesNoPredicate) {
  subject->keepFromOpening();
  EXPECT_EQ(store()->eventPredicateWithStartDate(distantPast(), distantFuture(), {}), nullptr);
  EXPECT_EQ(store()->eventPredicateWithStartDate(distantPast(), distantFuture(), "event", {}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithCalendars({}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithUncompletedTasks({}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithUncompletedTasksDueBefore(at(11, 2, 9), {}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithTasksCompletedSince(at(11, 2, 9), {}), nullptr);
}

TEST_P(CalContract, AStoreThatCannotBeOpenedRefusesSavesAndRemovals) {
  subject->keepFromOpening();
  const auto refused = [&](bool done) {
    EXPECT_FALSE(done);
    EXPECT_FALSE(error.value_or(Error()).localizedDescription.empty());
    error.reset();
  };
  const auto calendar = framework().calendar();
  calendar->setTitle("Work");
  refused(store()->saveCalendar(calendar, error));
  refused(store()->removeCalendar(calendar, error));
  const auto event = newEvent("Review", at(11, 2, 9), at(11, 2, 10));
  refused(store()->saveEvent(event, CalSpan::kThisEvent, error));
  refused(store()->removeEvent(event, CalSpan::kAllEvents, error));
  const auto task = newTask("Water the plants");
  refused(store()->saveTask(task, error));
  refused(store()->removeTask(task, error));
}

}  // namespace orlocal::contract
