#pragma once

#include "platform/cal_contract.h"

// What calendars promise.

namespace orlocal::contract {

TEST_P(CalContract, ASavedCalendarIsListedUnderAUidOfItsOwn) {
  auto calendar = framework().calendar();
  calendar->setTitle("Work");
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  ASSERT_TRUE(calendar->uid());
  const auto found = store()->calendarWithUID(*calendar->uid());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->title(), "Work");
}

TEST_P(CalContract, ListsCalendarsOfEventsAndOfTasksTogether) {
  std::vector<std::string> uids;
  for (const auto& calendar : store()->calendars()) { uids.push_back(*calendar->uid()); }
  EXPECT_THAT(uids, testing::IsSupersetOf({*subject->eventCalendar()->uid(), *subject->taskCalendar()->uid()}));
}

TEST_P(CalContract, ChangesOfACalendarStayInTheObjectUntilItIsSaved) {
  const auto calendar = subject->eventCalendar();
  calendar->setTitle("Renamed");
  EXPECT_NE(store()->calendarWithUID(*calendar->uid())->title(), "Renamed");
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  EXPECT_EQ(store()->calendarWithUID(*calendar->uid())->title(), "Renamed");
}

TEST_P(CalContract, KeepsACalendarsColorWithComponentsAboveOne) {
  const auto calendar = subject->eventCalendar();
  calendar->setColor(Color::calibratedRgb(300 / 255.0, 0, 0.5));
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  const auto color = store()->calendarWithUID(*calendar->uid())->color();
  ASSERT_TRUE(color);
  EXPECT_DOUBLE_EQ(color->red, 300 / 255.0);
  EXPECT_DOUBLE_EQ(color->blue, 0.5);
}

TEST_P(CalContract, ALocalCalendarSaysSoAndIsEditable) {
  EXPECT_EQ(subject->eventCalendar()->type(), "Local");
  EXPECT_TRUE(subject->eventCalendar()->isEditable());
}

TEST_P(CalContract, UnknownUidsFindNothing) {
  EXPECT_EQ(store()->calendarWithUID("nowhere"), nullptr);
  EXPECT_EQ(store()->eventWithUID("nowhere", std::nullopt), nullptr);
  EXPECT_EQ(store()->taskWithUID("nowhere"), nullptr);
  EXPECT_EQ(store()->taskWithUID(""), nullptr);
}

TEST_P(CalContract, RemovesACalendarWithItsItems) {
  auto calendar = framework().calendar();
  calendar->setTitle("Short-lived");
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  auto event = newEvent("Inside", at(11, 3, 9), at(11, 3, 10));
  event->setCalendar(calendar);
  const auto uid = saved(event);
  ASSERT_TRUE(store()->removeCalendar(calendar, error));
  EXPECT_EQ(store()->calendarWithUID(*calendar->uid()), nullptr);
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt), nullptr);
}

TEST_P(CalContract, RefusesToSaveACalendarWithoutATitle) {
  EXPECT_FALSE(store()->saveCalendar(framework().calendar(), error));
  ASSERT_TRUE(error);
  EXPECT_FALSE(error->localizedDescription.empty());
}

}  // namespace orlocal::contract
