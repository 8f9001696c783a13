#include "backend/legacy/legacy_fixture.h"

namespace orlocal {
namespace {

class LegacyAlarms : public Legacy {
 protected:
  std::int32_t add(const OptionalText& type, const OptionalText& action = std::nullopt) {
    return backend.addAlarm(type, std::nullopt, action, std::nullopt, -900, std::nullopt, std::nullopt);
  }
  void openAlarm() {
    openEvent();
    alarm = addAlarmTo(*event());
    ASSERT_EQ(backend.openAlarmAt(1), 0);
  }

  std::shared_ptr<fakes::FakeAlarm> alarm;
};

// Adding

TEST_F(LegacyAlarms, SetsWhatIsGiven) {
  openEvent();
  EXPECT_EQ(backend.addAlarm("Event", std::nullopt, "email", "a@example.org", -900, "Basso", "file:///a"), 0);
  ASSERT_EQ(event()->m_alarms.size(), 1U);
  const auto added = backend.m_event->alarms()[0];
  EXPECT_EQ(added->relativeTrigger(), -900);
  EXPECT_EQ(added->action(), CalAlarmActionEmail);
  EXPECT_EQ(added->emailAddress(), "a@example.org");
  EXPECT_EQ(added->sound(), "Basso");
  EXPECT_EQ(added->url(), "file:///a");
}

TEST_F(LegacyAlarms, SetsAnAbsoluteTriggerAndNoRelativeOneOfZero) {
  openEvent();
  backend.addAlarm("event", at(11, 3, 8), std::nullopt, std::nullopt, 0, std::nullopt, std::nullopt);
  EXPECT_EQ(backend.m_event->alarms()[0]->absoluteTrigger(), at(11, 3, 8));
}

TEST_F(LegacyAlarms, AnAlarmMayBeAddedWithoutAnything) {
  openEvent();
  EXPECT_EQ(backend.addAlarm("event", std::nullopt, std::nullopt, std::nullopt, 0, std::nullopt, std::nullopt), 0);
  EXPECT_EQ(backend.m_event->alarms()[0]->action(), std::nullopt);
}

TEST_F(LegacyAlarms, BothTaskWordsAddToTheTask) {
  openTask();
  EXPECT_EQ(add("task"), 0);
  EXPECT_EQ(add("Reminder"), 0);
  EXPECT_EQ(task()->m_alarms.size(), 2U);
}

TEST_F(LegacyAlarms, TheProcedureIsAddedAsPocedureOnly) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("event", "procedure"), -1); }), 9005);
  EXPECT_TRUE(event()->m_alarms.empty());
  EXPECT_EQ(add("event", "Pocedure"), 0);
  EXPECT_EQ(backend.m_event->alarms()[0]->action(), CalAlarmActionProcedure);
}

TEST_F(LegacyAlarms, EveryOtherActionWordStandsForItsConstant) {
  openEvent();
  const std::pair<const char*, std::string_view> words[] = {
      {"display", CalAlarmActionDisplay}, {"EMAIL", CalAlarmActionEmail}, {"sound", CalAlarmActionSound}};
  for (const auto& [word, constant] : words) {
    ASSERT_EQ(add("event", word), 0);
    EXPECT_EQ(backend.m_event->alarms().back()->action(), constant);
  }
}

TEST_F(LegacyAlarms, AnotherActionWordGives9005AndAddsNothing) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("event", "shout"), -1); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("event", ""), -1); }), 9005);
  EXPECT_TRUE(event()->m_alarms.empty());
}

TEST_F(LegacyAlarms, AddingWithoutATypeGives9005AndKeepsTheCurrentAlarm) {
  openAlarm();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add(std::nullopt), -1); }), 9005);
  EXPECT_NE(backend.m_alarm, nullptr);
}

TEST_F(LegacyAlarms, AddingReleasesTheCurrentAlarmAndOpensNone) {
  openAlarm();
  EXPECT_EQ(add("event"), 0);
  EXPECT_EQ(backend.m_alarm, nullptr);
}

TEST_F(LegacyAlarms, AddingToOtherTypesGives9006AndWithoutAnItem9000) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("calendar"), -1); }), 9006);
  for (const char* type : {"event", "task", "reminder"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(add(type), -1); }), 9000) << type;
  }
}

// Removing

TEST_F(LegacyAlarms, RemovesTheAlarmAtAnIndex) {
  openEvent();
  addAlarmTo(*event());
  const auto stays = addAlarmTo(*event());
  EXPECT_EQ(backend.removeAlarmFrom("Event", 1), 0);
  EXPECT_THAT(event()->m_alarms, testing::ElementsAre(stays));
}

TEST_F(LegacyAlarms, IndexMinusOneRemovesAll) {
  openTask();
  addAlarmTo(*task());
  addAlarmTo(*task());
  EXPECT_EQ(backend.removeAlarmFrom("task", -1), 0);
  EXPECT_TRUE(task()->m_alarms.empty());
}

TEST_F(LegacyAlarms, OtherIndexesGive9002) {
  openEvent();
  addAlarmTo(*event());
  for (const int index : {0, 2, -2}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeAlarmFrom("event", index), -1); }), 9002) << index;
  }
  EXPECT_EQ(event()->m_alarms.size(), 1U);
}

TEST_F(LegacyAlarms, AnItemWithoutAlarmsHasNothingToRemove) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeAlarmFrom("event", 7), 0); }), 0);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeAllAlarmsFrom("event"), 0); }), 0);
}

TEST_F(LegacyAlarms, RemovesAllAlarms) {
  openEvent();
  addAlarmTo(*event());
  addAlarmTo(*event());
  EXPECT_EQ(backend.removeAllAlarmsFrom("event"), 0);
  EXPECT_TRUE(event()->m_alarms.empty());
}

TEST_F(LegacyAlarms, RemovingKnowsATaskByOneWordOnly) {
  openTask();
  addAlarmTo(*task());
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeAlarmFrom("reminder", 1), -1); }), 9006);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeAllAlarmsFrom("Reminder"), -1); }), 9006);
  EXPECT_EQ(task()->m_alarms.size(), 1U);
  EXPECT_EQ(backend.removeAllAlarmsFrom("Task"), 0);
}

TEST_F(LegacyAlarms, RemovingWithoutATypeGives9005FromOtherTypes9006AndWithoutAnItem9000) {
  const auto expect = [&](const OptionalText& type, std::int64_t code) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeAlarmFrom(type, 1), -1); }), code);
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeAllAlarmsFrom(type), -1); }), code);
  };
  expect(std::nullopt, 9005);
  expect("calendar", 9006);
  expect("event", 9000);
  expect("task", 9000);
}

// Opening

TEST_F(LegacyAlarms, OpensTheTasksAlarmWhenATaskAndAnEventAreOpen) {
  openTask();
  backend.m_event = framework->event();
  addAlarmTo(*event());
  const auto own = addAlarmTo(*task());
  EXPECT_EQ(backend.openAlarmAt(1), 0);
  EXPECT_EQ(openedAlarm(), own);
}

TEST_F(LegacyAlarms, OpensTheEventsAlarm) {
  openAlarm();
  EXPECT_EQ(openedAlarm(), alarm);
}

TEST_F(LegacyAlarms, OpeningNeedsAnItemWithAlarms) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAlarmAt(1), -1); }), 9000);
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAlarmAt(1), -1); }), 9008);
}

TEST_F(LegacyAlarms, IndexesOutsideGive9002AndKeepTheCurrentAlarm) {
  openAlarm();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAlarmAt(0), -1); }), 9002);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAlarmAt(2), -1); }), 9002);
  EXPECT_EQ(openedAlarm(), alarm);
}

TEST_F(LegacyAlarms, NothingAtAnIndexGives9001) {
  openEvent();
  event()->m_alarms.push_back(nullptr);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openAlarmAt(1), -1); }), 9001);
}

// Properties

TEST_F(LegacyAlarms, SetsEveryProperty) {
  openAlarm();
  EXPECT_EQ(backend.setAlarmProp("RelativeTrigger", std::string("-900 seconds")), 0);
  EXPECT_EQ(alarm->m_relativeOffset, -900);
  EXPECT_EQ(backend.setAlarmProp("absolutetrigger", at(11, 3, 8)), 0);
  EXPECT_EQ(alarm->m_absoluteDate, at(11, 3, 8));
  EXPECT_EQ(backend.setAlarmProp("action", std::string("Procedure")), 0);
  EXPECT_EQ(backend.m_alarm->action(), CalAlarmActionProcedure);
  EXPECT_EQ(backend.setAlarmProp("email", std::string("a@example.org")), 0);
  EXPECT_EQ(alarm->m_emailAddress, "a@example.org");
  EXPECT_EQ(backend.setAlarmProp("url", std::string("file:///a")), 0);
  EXPECT_EQ(alarm->m_url, "file:///a");
  EXPECT_EQ(backend.setAlarmProp("sound", std::string("Basso")), 0);
  EXPECT_EQ(alarm->m_soundName, "Basso");
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(LegacyAlarms, ATriggerWithoutDigitsIsZeroSeconds) {
  openAlarm();
  alarm->m_relativeOffset = -900;
  EXPECT_EQ(backend.setAlarmProp("relativetrigger", std::string("soon")), 0);
  EXPECT_EQ(alarm->m_relativeOffset, 0);
}

TEST_F(LegacyAlarms, SettingOtherActionsAndPropertiesGives9005) {
  openAlarm();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setAlarmProp("action", std::string("pocedure")), -1); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setAlarmProp("action", {}), -1); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setAlarmProp("emailaddress", std::string("x")), -1); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setAlarmProp(std::nullopt, std::string("x")), -1); }), 9005);
}

TEST_F(LegacyAlarms, SettingWithoutAnAlarmGives9000) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setAlarmProp("sound", std::string("x")), -1); }), 9000);
}

TEST_F(LegacyAlarms, ReadsEveryProperty) {
  openAlarm();
  alarm->m_relativeOffset = -900;
  alarm->setType(EKAlarmType::kProcedure);
  alarm->m_emailAddress = "a@example.org";
  alarm->m_soundName = "Basso";
  alarm->m_url = "file:///a";
  EXPECT_EQ(alarmAttribute("relativetrigger"), "-900.000000");
  EXPECT_EQ(alarmAttribute("absolutetrigger"), std::nullopt);
  EXPECT_EQ(alarmAttribute("Action"), "procedure");
  EXPECT_EQ(alarmAttribute("email"), "a@example.org");
  EXPECT_EQ(alarmAttribute("sound"), "Basso");
  EXPECT_EQ(alarmAttribute("url"), "file:///a");
  alarm->setAbsoluteDate(at(11, 3, 8));
  EXPECT_EQ(alarmAttribute("absolutetrigger"), "2026-11-03 09:00:00 +0100");
  EXPECT_EQ(alarmAttribute("relativetrigger"), "0.000000");
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(LegacyAlarms, EveryActionReadsAsItsWordAndOthersAsNone) {
  struct Acting : AlarmFace {
    explicit Acting(OptionalText action)
        : AlarmFace(std::make_shared<fakes::FakeAlarm>(), true), m_action(std::move(action)) {}
    OptionalText action() const override { return m_action; }
    OptionalText m_action;
  };
  const std::pair<OptionalText, const char*> actions[] = {{std::string(CalAlarmActionDisplay), "display"},
                                                          {std::string(CalAlarmActionEmail), "email"},
                                                          {std::string(CalAlarmActionProcedure), "procedure"},
                                                          {std::string(CalAlarmActionSound), "sound"},
                                                          {std::nullopt, "none"},
                                                          {"WHISTLE", "none"}};
  for (const auto& [constant, word] : actions) {
    backend.m_alarm = std::make_shared<Acting>(constant);
    EXPECT_EQ(alarmAttribute("action"), word);
  }
}

TEST_F(LegacyAlarms, ATypeThatThePlatformHasNoNameForReadsAsNone) {
  openAlarm();
  alarm->m_type = 7;
  EXPECT_EQ(alarmAttribute("action"), "none");
}

TEST_F(LegacyAlarms, ReadingWithoutAnAlarmGives9000WithoutAProperty9005AndAnUnknownOne9006) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(alarmAttribute("sound"), std::nullopt); }), 9000);
  openAlarm();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(alarmAttribute(std::nullopt), std::nullopt); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(alarmAttribute("emailaddress"), std::nullopt); }), 9006);
}

}  // namespace
}  // namespace orlocal
