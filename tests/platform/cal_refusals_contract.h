#pragma once

#include "platform/cal_contract.h"

// What is refused, and with which error.

namespace orlocal::contract {

TEST_P(CalContract, NothingIsRefusedWithAnErrorThatSaysWhy) {
  const auto expectRefused = [this](bool saved) {
    EXPECT_FALSE(saved);
    ASSERT_TRUE(error);
    EXPECT_FALSE(error->localizedDescription.empty());
    EXPECT_FALSE(error->localizedDescription.ends_with('.')) << error->localizedDescription;
    error.reset();
  };
  expectRefused(store()->saveCalendar(nullptr, error));
  expectRefused(store()->saveEvent(nullptr, CalSpan::kThisEvent, error));
  expectRefused(store()->saveTask(nullptr, error));
  expectRefused(store()->removeCalendar(nullptr, error));
  expectRefused(store()->removeEvent(nullptr, CalSpan::kThisEvent, error));
  expectRefused(store()->removeTask(nullptr, error));
}

TEST_P(CalContract, RefusesAnEventWithoutCalendarStartOrEnd) {
  auto homeless = newEvent("Homeless", at(11, 3, 9), at(11, 3, 10));
  homeless->setCalendar(nullptr);
  EXPECT_FALSE(store()->saveEvent(homeless, CalSpan::kThisEvent, error));
  auto startless = newEvent("Startless", at(11, 3, 9), at(11, 3, 10));
  startless->setStartDate(std::nullopt);
  EXPECT_FALSE(store()->saveEvent(startless, CalSpan::kThisEvent, error));
  auto endless = newEvent("Endless", at(11, 3, 9), at(11, 3, 10));
  endless->setEndDate(std::nullopt);
  EXPECT_FALSE(store()->saveEvent(endless, CalSpan::kThisEvent, error));
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(11, 30, 0)), testing::IsEmpty());
}

TEST_P(CalContract, RefusesATaskWithoutACalendar) {
  auto task = newTask("Homeless");
  task->setCalendar(nullptr);
  EXPECT_FALSE(store()->saveTask(task, error));
}

TEST_P(CalContract, AReadOnlyCalendarTakesNoChanges) {
  const auto uid = addEvent("Fixed", at(11, 3, 9), at(11, 3, 10));
  const auto event = store()->eventWithUID(uid, std::nullopt);
  subject->makeReadOnly(*subject->eventCalendar()->uid());
  event->setTitle("Changed");
  EXPECT_FALSE(store()->saveEvent(event, CalSpan::kThisEvent, error));
  EXPECT_FALSE(store()->removeEvent(event, CalSpan::kThisEvent, error));
  const auto calendar = store()->calendarWithUID(*event->calendar()->uid());
  EXPECT_FALSE(calendar->isEditable());
  EXPECT_FALSE(store()->saveCalendar(calendar, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->title(), "Fixed");
}

}  // namespace orlocal::contract
