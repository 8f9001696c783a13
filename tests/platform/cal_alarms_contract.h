#pragma once

#include "platform/cal_contract.h"

// What alarms promise.

namespace orlocal::contract {

TEST_P(CalContract, ANewAlarmHasNoAction) {
  const auto alarm = framework().alarm();
  EXPECT_FALSE(alarm->action());
  EXPECT_FALSE(alarm->absoluteTrigger());
  EXPECT_EQ(alarm->relativeTrigger(), 0);
}

TEST_P(CalContract, AnAlarmIsEitherAbsoluteOrRelative) {
  const auto alarm = framework().alarm();
  alarm->setRelativeTrigger(-900);
  alarm->setAbsoluteTrigger(at(11, 2, 9));
  EXPECT_EQ(alarm->relativeTrigger(), 0);
  EXPECT_EQ(alarm->absoluteTrigger(), at(11, 2, 9));
  alarm->setRelativeTrigger(-60);
  EXPECT_EQ(alarm->relativeTrigger(), -60);
  EXPECT_FALSE(alarm->absoluteTrigger());
}

TEST_P(CalContract, KeepsTheActionsOfAlarms) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  auto email = framework().alarm();
  email->setAction(std::string(CalAlarmActionEmail));
  email->setEmailAddress("a@example.org");
  email->setRelativeTrigger(-60);
  event->addAlarm(email);
  auto sound = framework().alarm();
  sound->setAction(std::string(CalAlarmActionSound));
  sound->setSound("Basso");
  sound->setRelativeTrigger(-120);
  event->addAlarm(sound);
  auto procedure = framework().alarm();
  procedure->setAction(std::string(CalAlarmActionProcedure));
  procedure->setUrl("file:///bin/true");
  procedure->setAbsoluteTrigger(at(11, 3, 8));
  event->addAlarm(procedure);
  const auto alarms = store()->eventWithUID(saved(event), std::nullopt)->alarms();
  ASSERT_EQ(alarms.size(), 3U);
  EXPECT_EQ(alarms[0]->action(), CalAlarmActionEmail);
  EXPECT_EQ(alarms[0]->emailAddress(), "a@example.org");
  EXPECT_EQ(alarms[0]->relativeTrigger(), -60);
  EXPECT_EQ(alarms[1]->action(), CalAlarmActionSound);
  EXPECT_EQ(alarms[1]->sound(), "Basso");
  EXPECT_EQ(alarms[2]->action(), CalAlarmActionProcedure);
  EXPECT_EQ(alarms[2]->url(), "file:///bin/true");
  EXPECT_EQ(alarms[2]->absoluteTrigger(), at(11, 3, 8));
}

TEST_P(CalContract, RemovesOneAlarmOrSeveral) {
  auto task = newTask("Tidy");
  for (const double seconds : {-60.0, -120.0, -180.0}) {
    auto alarm = framework().alarm();
    alarm->setRelativeTrigger(seconds);
    task->addAlarm(alarm);
  }
  task->removeAlarm(task->alarms()[1]);
  ASSERT_EQ(task->alarms().size(), 2U);
  EXPECT_EQ(task->alarms()[0]->relativeTrigger(), -60);
  EXPECT_EQ(task->alarms()[1]->relativeTrigger(), -180);
  EXPECT_TRUE(task->hasAlarm());
  task->removeAlarms(task->alarms());
  EXPECT_FALSE(task->hasAlarm());
}

TEST_P(CalContract, AnItemWithoutAlarmsHasNoNextOne) {
  EXPECT_FALSE(newTask("Tidy")->nextAlarmDate());
  EXPECT_FALSE(newTask("Tidy")->hasAlarm());
}

TEST_P(CalContract, TheNextAlarmIsTheFirstThatIsStillToCome) {
  auto event = newEvent("Review", subject->now() + std::chrono::hours(1), subject->now() + std::chrono::hours(2));
  for (const double minutes : {-90.0, -10.0, -30.0}) {
    auto alarm = framework().alarm();
    alarm->setRelativeTrigger(minutes * 60);
    event->addAlarm(alarm);
  }
  EXPECT_EQ(event->nextAlarmDate(), subject->now() + std::chrono::minutes(30));
}

}  // namespace orlocal::contract
