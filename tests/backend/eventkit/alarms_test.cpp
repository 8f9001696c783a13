#include <limits>

#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Alarms : public BackendTest {
 protected:
  /// Adds an alarm 15 minutes before.
  std::int32_t add(const OptionalText& type, const OptionalText& action, const OptionalText& address = std::nullopt,
                   const OptionalText& sound = std::nullopt) {
    return backend.addAlarm(type, std::nullopt, action, address, -900, sound);
  }
  OptionalText get(const OptionalText& property) { return backend.getAlarmAttribute(property, 1, std::nullopt); }

  static std::shared_ptr<fakes::FakeAlarm> alarm(double seconds) {
    auto made = std::make_shared<fakes::FakeAlarm>();
    made->m_relativeOffset = seconds;
    return made;
  }
  static std::vector<double> offsets(const EKCalendarItem& item) {
    std::vector<double> found;
    for (const auto& each : item.alarms()) { found.push_back(each->relativeOffset()); }
    return found;
  }
};

/// Takes no alarm and gives none away.
class StubbornEvent : public fakes::FakeEvent {
 public:
  void addAlarm(std::shared_ptr<EKAlarm>) override {}
  void removeAlarm(const std::shared_ptr<EKAlarm>&) override {}
};

/// Makes no alarms.
class AlarmlessKit : public fakes::ForwardingEventKit {
 public:
  using ForwardingEventKit::ForwardingEventKit;
  std::shared_ptr<EKAlarm> alarmWithAbsoluteDate(Date) override { return nullptr; }
  std::shared_ptr<EKAlarm> alarmWithRelativeOffset(double) override { return nullptr; }
};

// Adding

TEST_F(Alarms, WantAnOwnerAnActionAndATriggerInThatOrder) {
  expectFailed(backend.addAlarm(std::nullopt, std::nullopt, std::nullopt, std::nullopt, 0, std::nullopt),
               kAlarmTypeRequired);
  expectFailed(backend.addAlarm("event", std::nullopt, std::nullopt, std::nullopt, 0, std::nullopt),
               kAlarmActionRequired);
  expectFailed(backend.addAlarm("event", std::nullopt, "display", std::nullopt, 0, std::nullopt),
               kAlarmTriggerRequired);
}

TEST_F(Alarms, WantTheirOwnerOpen) {
  expectFailed(add("event", "display"), kNoEventToAddAlarm);
  expectFailed(add("task", "display"), kNoReminderToAddAlarm);
  expectFailed(add("Reminder", "display"), kNoReminderToAddAlarm);
  openNewEvent();
  expectFailed(add("reminder", "display"), kNoReminderToAddAlarm);
  openNewReminder();
  for (const char* type : {"calendar", "alarm", "attendee", "nonsense", ""}) {
    expectFailed(add(type, "display"), kInvalidArgument);
  }
}

TEST_F(Alarms, KeepTheOpenOneUntilOwnerAndActionAreNamed) {
  openNewAlarm();
  expectFailed(add(std::nullopt, "display"), kAlarmTypeRequired);
  expectFailed(add("event", std::nullopt), kAlarmActionRequired);
  EXPECT_NE(backend.m_ekAlarm, nullptr);
  expectFailed(backend.addAlarm("event", std::nullopt, "display", std::nullopt, 0, std::nullopt),
               kAlarmTriggerRequired);
  EXPECT_EQ(backend.m_ekAlarm, nullptr);
}

TEST_F(Alarms, AreAddedWithoutBecomingCurrent) {
  const auto event = openNewEvent();
  openNewAlarm();
  expectDone(add("Event", "Display"));
  EXPECT_THAT(offsets(*event), ElementsAre(-900));
  EXPECT_EQ(backend.m_ekAlarm, nullptr);
}

TEST_F(Alarms, AreAddedToTheOwnerThatIsNamed) {
  const auto event = openNewEvent();
  const auto reminder = openNewReminder();
  expectDone(add("task", "display"));
  expectDone(add("reminder", "display"));
  EXPECT_EQ(reminder->m_alarms.size(), 2u);
  EXPECT_THAT(event->m_alarms, IsEmpty());
  expectDone(add("event", "display"));
  EXPECT_EQ(event->m_alarms.size(), 1u);
}

TEST_F(Alarms, AreAbsoluteWhenBothTriggersAreGiven) {
  const auto event = openNewEvent();
  expectDone(backend.addAlarm("event", at(11, 2, 20), "display", std::nullopt, -60, std::nullopt));
  expectDone(backend.addAlarm("event", at(11, 2, 20), "display", std::nullopt, 0, std::nullopt));
  for (const auto& each : event->m_alarms) {
    EXPECT_EQ(each->absoluteDate(), at(11, 2, 20));
    EXPECT_EQ(each->relativeOffset(), 0);
  }
}

TEST_F(Alarms, MayComeAfterTheStart) {
  const auto event = openNewEvent();
  expectDone(backend.addAlarm("event", std::nullopt, "display", std::nullopt, 60, std::nullopt));
  EXPECT_THAT(offsets(*event), ElementsAre(60));
}

TEST_F(Alarms, ThatDisplayLoseAddressAndSound) {
  const auto event = openNewEvent();
  expectDone(add("event", "display", "me@example.org", "Basso"));
  EXPECT_EQ(event->m_alarms.front()->emailAddress(), std::nullopt);
  EXPECT_EQ(event->m_alarms.front()->soundName(), std::nullopt);
  EXPECT_EQ(event->m_alarms.front()->type(), 0);
}

TEST_F(Alarms, ThatWriteNeedAnAddress) {
  const auto event = openNewEvent();
  expectFailed(add("event", "email"), kAlarmEmailRequired);
  EXPECT_THAT(event->m_alarms, IsEmpty());
  expectDone(add("event", "Email", "me@example.org"));
  EXPECT_EQ(event->m_alarms.front()->emailAddress(), "me@example.org");
  EXPECT_EQ(event->m_alarms.front()->type(), 3);
}

TEST_F(Alarms, ThatSoundNeedASoundName) {
  const auto event = openNewEvent();
  expectFailed(add("event", "sound"), kAlarmSoundRequired);
  EXPECT_THAT(event->m_alarms, IsEmpty());
  expectDone(add("event", "SOUND", std::nullopt, "Basso"));
  EXPECT_EQ(event->m_alarms.front()->soundName(), "Basso");
  EXPECT_EQ(event->m_alarms.front()->type(), 1);
}

TEST_F(Alarms, NeverRunAProcedure) {
  expectFailed(add("event", "procedure"), kNoEventToAddAlarm);
  const auto event = openNewEvent();
  expectFailed(add("event", "procedure"), kAlarmProcedureNotSupported);
  EXPECT_THAT(event->m_alarms, IsEmpty());
}

TEST_F(Alarms, HaveNoOtherAction) {
  const auto event = openNewEvent();
  for (const char* action : {"shout", "", "pocedure"}) { expectFailed(add("event", action), kMissingArgument); }
  EXPECT_THAT(event->m_alarms, IsEmpty());
}

TEST_F(Alarms, ReportAnOwnerThatDoesNotTakeThem) {
  backend.m_ekEvent = std::make_shared<StubbornEvent>();
  expectFailed(add("event", "display"), kAlarmNotAdded);
}

TEST_F(Alarms, ReportWhenThePlatformMakesNone) {
  platform->m_eventKit = std::make_shared<AlarmlessKit>(kit);
  openNewEvent();
  expectFailed(add("event", "display"), kAlarmNotAdded);
  expectFailed(backend.addAlarm("event", at(11, 2, 20), "sound", std::nullopt, 0, "Basso"), kAlarmNotAdded);
}

// Removing one

TEST_F(Alarms, AreRemovedByIndex) {
  const auto event = openNewEvent();
  event->m_alarms = {alarm(-1), alarm(-2), alarm(-3)};
  expectDone(backend.removeAlarmFrom("Event", 2));
  EXPECT_THAT(offsets(*event), ElementsAre(-1, -3));
  expectDone(backend.removeAlarmFrom("event", 1));
  EXPECT_THAT(offsets(*event), ElementsAre(-3));
}

TEST_F(Alarms, AreRemovedFromAnOwnerThatIsOpen) {
  expectFailed(backend.removeAlarmFrom(std::nullopt, 1), kAlarmTypeRequired);
  expectFailed(backend.removeAlarmFrom("event", 1), kNoEventToAddAlarm);
  expectFailed(backend.removeAlarmFrom("task", 1), kNoReminderToAddAlarm);
  expectFailed(backend.removeAlarmFrom("reminder", 1), kNoReminderToAddAlarm);
  expectFailed(backend.removeAlarmFrom("alarm", 1), kInvalidArgument);
}

TEST_F(Alarms, AreRemovedFromAReminderByEitherWord) {
  const auto reminder = openNewReminder();
  reminder->m_alarms = {alarm(-1), alarm(-2)};
  expectDone(backend.removeAlarmFrom("task", 1));
  expectDone(backend.removeAlarmFrom("reminder", 1));
  EXPECT_THAT(reminder->m_alarms, IsEmpty());
}

TEST_F(Alarms, AreNoMatterWhereThereAreNone) {
  openNewEvent();
  for (const std::int32_t index : {1, 0, 7, -1}) { expectDone(backend.removeAlarmFrom("event", index)); }
}

TEST_F(Alarms, AreNotRemovedOutsideTheirRange) {
  const auto event = openNewEvent();
  event->m_alarms = {alarm(-1), alarm(-2)};
  for (const std::int32_t index : {3, 0, -2, std::numeric_limits<std::int32_t>::min()}) {
    expectFailed(backend.removeAlarmFrom("event", index), kIndexOutOfBounds);
  }
  EXPECT_EQ(event->m_alarms.size(), 2u);
}

TEST_F(Alarms, AreAllRemovedByMinusOneBeforeTheRangeExceptionLeaves) {
  const auto event = openNewEvent();
  event->m_alarms = {alarm(-1), alarm(-2), alarm(-3)};
  try {
    backend.removeAlarmFrom("event", -1);
    FAIL() << "no exception";
  } catch (const Exception& exception) { EXPECT_EQ(exception.name(), "NSRangeException"); }
  EXPECT_THAT(event->m_alarms, IsEmpty());
  EXPECT_EQ(takeCode(), 0);
  EXPECT_EQ(backend.getLastErrorString(), std::nullopt);
}

TEST_F(Alarms, ReportAnOwnerThatDoesNotGiveThemAway) {
  auto event = std::make_shared<StubbornEvent>();
  event->m_alarms = {alarm(-1)};
  backend.m_ekEvent = event;
  expectFailed(backend.removeAlarmFrom("event", 1), kAlarmNotDeleted);
}

// Removing all

TEST_F(Alarms, AreAllRemoved) {
  const auto event = openNewEvent();
  const auto reminder = openNewReminder();
  event->m_alarms = {alarm(-1), alarm(-2), alarm(-3)};
  reminder->m_alarms = {alarm(-1), alarm(-2)};
  expectDone(backend.removeAllAlarmsFrom("EVENT"));
  EXPECT_THAT(event->m_alarms, IsEmpty());
  expectDone(backend.removeAllAlarmsFrom("task"));
  EXPECT_THAT(reminder->m_alarms, IsEmpty());
  expectDone(backend.removeAllAlarmsFrom("reminder"));
}

TEST_F(Alarms, AreAllRemovedFromAnOwnerThatIsOpen) {
  expectFailed(backend.removeAllAlarmsFrom(std::nullopt), kMissingArgument);
  for (const char* type : {"event", "task", "reminder"}) {
    expectFailed(backend.removeAllAlarmsFrom(type), kInvalidCallOrder);
  }
  expectFailed(backend.removeAllAlarmsFrom("calendar"), kInvalidArgument);
}

TEST_F(Alarms, AreAskedToGoAsOftenAsThereWereAny) {
  auto event = std::make_shared<StubbornEvent>();
  event->m_alarms = {alarm(-1), alarm(-2)};
  backend.m_ekEvent = event;
  expectDone(backend.removeAllAlarmsFrom("event"));
  EXPECT_EQ(event->m_alarms.size(), 2u);
}

// Opening

TEST_F(Alarms, OpenByIndex) {
  const auto event = openNewEvent();
  event->m_alarms = {alarm(-1), alarm(-2)};
  expectDone(backend.openAlarmAt(2));
  EXPECT_EQ(backend.m_ekAlarm->relativeOffset(), -2);
  expectDone(backend.openAlarmAt(1));
  EXPECT_EQ(backend.m_ekAlarm->relativeOffset(), -1);
}

TEST_F(Alarms, OpenOfTheReminderBeforeTheEvent) {
  openNewEvent()->m_alarms = {alarm(-1)};
  openNewReminder()->m_alarms = {alarm(-2)};
  expectDone(backend.openAlarmAt(1));
  EXPECT_EQ(backend.m_ekAlarm->relativeOffset(), -2);
}

TEST_F(Alarms, AreNotLookedForInTheEventWhenTheReminderHasNone) {
  openNewEvent()->m_alarms = {alarm(-1)};
  openNewReminder();
  expectFailed(backend.openAlarmAt(1), kNoAlarms);
}

TEST_F(Alarms, DoNotOpenWithoutAnOwner) { expectFailed(backend.openAlarmAt(1), kInvalidCallOrder); }

TEST_F(Alarms, DoNotOpenWhereThereAreNone) {
  openNewEvent();
  expectFailed(backend.openAlarmAt(1), kNoAlarms);
  expectFailed(backend.openAlarmAt(0), kNoAlarms);
}

TEST_F(Alarms, DoNotOpenOutsideTheirRange) {
  openNewEvent()->m_alarms = {alarm(-1)};
  for (const std::int32_t index : {0, 2, -1}) { expectFailed(backend.openAlarmAt(index), kIndexOutOfBounds); }
}

TEST_F(Alarms, ReportTheOneThatIsMissing) {
  openNewEvent()->m_alarms = {nullptr};
  expectFailed(backend.openAlarmAt(1), kAlarmNotOpenedAtIndex);
}

TEST_F(Alarms, OpenWithoutTouchingAnotherSlot) {
  fillSlots();
  backend.m_ekReminder.reset();
  const auto event = openNewEvent();
  event->m_alarms = {alarm(-1)};
  const auto before = filledSlots();
  released->clear();
  expectDone(backend.openAlarmAt(1));
  EXPECT_EQ(filledSlots(), before);
  EXPECT_THAT(*released, ElementsAre("alarm"));
}

// Setting

TEST_F(Alarms, AreNotSetWhenNoneIsOpen) {
  expectFailed(backend.setAlarmProp("sound", std::string("Basso")), kInvalidCallOrder);
}

TEST_F(Alarms, TakeAMoment) {
  const auto open = openNewAlarm();
  expectDone(backend.setAlarmProp("AbsoluteTrigger", at(11, 2, 20)));
  EXPECT_EQ(open->m_absoluteDate, at(11, 2, 20));
  expectFailed(backend.setAlarmProp("absolutetrigger", std::monostate()), kAbsoluteDateRequired);
  EXPECT_EQ(open->m_absoluteDate, at(11, 2, 20));
}

TEST_F(Alarms, TakeWholeSeconds) {
  const auto open = openNewAlarm();
  const std::pair<const char*, double> cases[] = {{"-900", -900}, {"60 seconds", 60}, {"-1.9", -1}, {"soon", 0}};
  for (const auto& [text, seconds] : cases) {
    expectDone(backend.setAlarmProp("relativetrigger", std::string(text)));
    EXPECT_EQ(open->m_relativeOffset, seconds) << text;
  }
  expectFailed(backend.setAlarmProp("RelativeTrigger", std::monostate()), kRelativeOffsetRequired);
}

TEST_F(Alarms, LoseWhatIsNotForDisplayWhenTheyDisplay) {
  const auto open = openNewAlarm();
  open->m_emailAddress = open->m_soundName = open->m_url = "x";
  expectDone(backend.setAlarmProp("action", std::string("Display")));
  EXPECT_EQ(open->m_emailAddress, std::nullopt);
  EXPECT_EQ(open->m_soundName, std::nullopt);
  EXPECT_EQ(open->m_url, std::nullopt);
}

TEST_F(Alarms, AcceptOtherActionsAndChangeNothing) {
  const auto open = openNewAlarm();
  open->m_soundName = "Basso";
  for (const char* action : {"email", "Procedure", "sound"}) {
    expectDone(backend.setAlarmProp("action", std::string(action)));
    EXPECT_EQ(open->m_soundName, "Basso");
  }
}

TEST_F(Alarms, RefuseAnUnknownAction) {
  openNewAlarm();
  expectFailed(backend.setAlarmProp("action", std::string("shout")), kAlarmActionNotSpecified);
  expectFailed(backend.setAlarmProp("action", std::monostate()), kAlarmActionNotSpecified);
}

TEST_F(Alarms, TakeAddressAndSound) {
  const auto open = openNewAlarm();
  expectDone(backend.setAlarmProp("EmailAddress", std::string("me@example.org")));
  expectDone(backend.setAlarmProp("sound", std::string("Basso")));
  EXPECT_EQ(open->m_emailAddress, "me@example.org");
  EXPECT_EQ(open->m_soundName, "Basso");
  expectDone(backend.setAlarmProp("emailaddress", std::monostate()));
  EXPECT_EQ(open->m_emailAddress, std::nullopt);
}

TEST_F(Alarms, ReportAPropertyThatCannotBeSet) {
  openNewAlarm();
  for (const char* property : {"url", "email", "nonsense", ""}) {
    expectFailed(backend.setAlarmProp(property, std::string("x")), kMissingArgument);
  }
  expectFailed(backend.setAlarmProp(std::nullopt, std::string("x")), kMissingArgument);
}

// Reading

TEST_F(Alarms, AreNotReadWhenNoneIsOpen) {
  expectNone(get("action"), kNoAlarmToGetProperty);
  expectNone(get(std::nullopt), kNoAlarmToGetProperty);
}

TEST_F(Alarms, WantAPropertyToRead) {
  openNewAlarm();
  expectNone(get(std::nullopt), kPropertyRequired);
}

TEST_F(Alarms, ReadTheAddressOfTheEventsFirstAlarmWithoutAnOpenOne) {
  expectNone(get("email"));
  const auto event = openNewEvent();
  expectNone(get("email"));
  event->m_alarms = {alarm(-1), alarm(-2)};
  expectNone(get("email"));
  event->m_alarms[0]->setEmailAddress("first@example.org");
  event->m_alarms[1]->setEmailAddress("second@example.org");
  expectText(get("Email"), "first@example.org");
  openNewAlarm();
  expectText(get("email"), "first@example.org");
}

TEST_F(Alarms, ReadTheirMoment) {
  const auto open = openNewAlarm();
  open->m_relativeOffset = -900;
  expectNone(get("absolutetrigger"));
  open->m_absoluteDate = at(11, 2, 20);
  expectText(get("AbsoluteTrigger"), "2026-11-02 21:00:00 +0100");
}

TEST_F(Alarms, ReadTheirOffsetWithSixDecimals) {
  const auto open = openNewAlarm();
  expectNone(get("relativetrigger"));
  open->m_relativeOffset = -900;
  expectText(get("RelativeTrigger"), "-900.000000");
  open->m_relativeOffset = 1.5;
  expectText(get("relativetrigger"), "1.500000");
  open->m_absoluteDate = at(11, 2, 20);
  expectText(get("relativetrigger"), "");
}

TEST_F(Alarms, ReadTheirActionByTheirType) {
  class TypedAlarm : public fakes::FakeAlarm {
   public:
    int type() const override { return m_type; }
    int m_type = 0;
  };
  const auto open = std::make_shared<TypedAlarm>();
  backend.m_ekAlarm = open;
  const char* const words[] = {"display", "sound", "procedure", "email", ""};
  for (open->m_type = 0; open->m_type < 5; ++open->m_type) { expectText(get("action"), words[open->m_type]); }
  open->m_type = -1;
  expectText(get("action"), "");
}

TEST_F(Alarms, ReadTheirTexts) {
  const auto open = openNewAlarm();
  for (const char* property : {"emailaddress", "sound", "url"}) { expectNone(get(property)); }
  open->m_emailAddress = "me@example.org";
  open->m_soundName = "Basso";
  open->m_url = "file:///usr/bin/true";
  expectText(get("emailaddress"), "me@example.org");
  expectText(get("sound"), "Basso");
  expectText(get("url"), "file:///usr/bin/true");
}

TEST_F(Alarms, ReportAPropertyThatTheyDoNotHave) {
  openNewAlarm();
  for (const char* property : {"nonsense", "", "title"}) { expectNone(get(property), kInvalidProperty); }
}

}  // namespace
}  // namespace orlocal
