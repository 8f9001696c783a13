#pragma once

#include "platform/eventkit_contract.h"

// What alarms promise.

namespace orlocal::contract {

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

}  // namespace orlocal::contract
