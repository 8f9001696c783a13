#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

/// Notes how the store is asked, and answers as it is told to.
class SaveNotingStore : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;

  bool saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override {
    note("save calendar", commit);
    return m_next->saveCalendar(calendar, commit, error);
  }
  bool removeCalendar(const std::shared_ptr<EKCalendar>& calendar, bool commit, std::optional<Error>& error) override {
    note("remove calendar", commit);
    return m_next->removeCalendar(calendar, commit, error);
  }
  bool saveEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                 std::optional<Error>& error) override {
    note(span == EKSpan::kThisEvent ? "save event, this" : "save event, future", commit);
    if (m_silent) { return false; }
    return m_next->saveEvent(event, span, commit, error);
  }
  bool removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool commit,
                   std::optional<Error>& error) override {
    note(span == EKSpan::kThisEvent ? "remove event, this" : "remove event, future", commit);
    return m_next->removeEvent(event, span, commit, error);
  }
  bool saveReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override {
    note("save reminder", commit);
    return m_next->saveReminder(reminder, commit, error);
  }
  bool removeReminder(const std::shared_ptr<EKReminder>& reminder, bool commit, std::optional<Error>& error) override {
    note("remove reminder", commit);
    return m_next->removeReminder(reminder, commit, error);
  }

  std::vector<std::string> m_asked;
  bool m_silent = false;  ///< events are refused without an error

 private:
  void note(const std::string& what, bool commit) { m_asked.push_back(commit ? what : what + ", later"); }
};

/// Makes none of the objects that can be new.
class BarrenKit : public fakes::ForwardingEventKit {
 public:
  using ForwardingEventKit::ForwardingEventKit;
  std::shared_ptr<EKCalendar> calendarForEntityType(EKEntityType, const std::shared_ptr<EKEventStore>&) override {
    return nullptr;
  }
  std::shared_ptr<EKEvent> eventWithEventStore(const std::shared_ptr<EKEventStore>&) override { return nullptr; }
  std::shared_ptr<EKReminder> reminderWithEventStore(const std::shared_ptr<EKEventStore>&) override { return nullptr; }
};

class Lifecycle : public BackendTest {
 protected:
  Lifecycle() { backend.m_ekEventStore = noting; }

  /// A new event, open, that can be saved.
  std::shared_ptr<fakes::FakeEvent> openGoodEvent() {
    auto event = openNewEvent();
    event->m_calendar = store().m_calendars.front();
    event->m_startDate = at(11, 3, 9);
    event->m_endDate = at(11, 3, 10);
    return event;
  }
  std::string addEvent() {
    return *store().addEvent("Calendar", "Review", at(11, 3, 9), at(11, 3, 10))->m_eventIdentifier;
  }
  std::int32_t remove(const OptionalText& type, const OptionalText& uid, const OptionalText& span = std::nullopt) {
    return backend.removeItem(type, uid, std::nullopt, span);
  }
  void expectAsked(const std::vector<std::string>& asked) { EXPECT_EQ(std::exchange(noting->m_asked, {}), asked); }

  std::shared_ptr<SaveNotingStore> noting = std::make_shared<SaveNotingStore>(kit->m_store);
};

// New

TEST_F(Lifecycle, MakesANewItemTheOnlyCurrentOne) {
  const std::pair<const char*, const char*> cases[] = {{"calendar", "calendar"},
                                                       {"ReminderList", "calendar"},
                                                       {"Event", "event"},
                                                       {"task", "reminder"},
                                                       {"REMINDER", "reminder"}};
  for (const auto& [type, slot] : cases) {
    released->clear();
    fillSlots();
    expectDone(backend.newItem(type));
    EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder)) << type;
    EXPECT_EQ(filledSlots(), std::set<std::string>{slot}) << type;
  }
}

TEST_F(Lifecycle, MakesCalendarsAndListsOfTheirOwnKind) {
  backend.newItem("calendar");
  EXPECT_EQ(std::dynamic_pointer_cast<fakes::FakeCalendar>(backend.m_ekCalendar)->m_kind, EKEntityType::kEvent);
  backend.newItem("reminderlist");
  EXPECT_EQ(std::dynamic_pointer_cast<fakes::FakeCalendar>(backend.m_ekCalendar)->m_kind, EKEntityType::kReminder);
}

TEST_F(Lifecycle, MakesNothingOfAnotherType) {
  for (const OptionalText& type :
       {OptionalText("alarm"), OptionalText("attendee"), OptionalText("nonsense"), OptionalText(""), OptionalText()}) {
    fillSlots();
    expectFailed(backend.newItem(type), kInvalidType);
    EXPECT_THAT(filledSlots(), IsEmpty());
  }
}

TEST_F(Lifecycle, ReportsWhatThePlatformDoesNotMake) {
  platform->m_eventKit = std::make_shared<BarrenKit>(kit);
  expectFailed(backend.newItem("calendar"), kCalendarNotCreated);
  expectFailed(backend.newItem("reminderlist"), kReminderListNotCreated);
  expectFailed(backend.newItem("event"), kEventNotCreated);
  expectFailed(backend.newItem("task"), kReminderNotCreated);
  expectFailed(backend.newItem("reminder"), kReminderNotCreated);
}

TEST_F(Lifecycle, WritesNothingBeforeASave) {
  for (const char* type : {"calendar", "reminderlist", "event", "reminder"}) { backend.newItem(type); }
  expectAsked({});
  EXPECT_EQ(store().m_calendars.size(), 2u);
}

// Save

TEST_F(Lifecycle, ChecksTheSpanBeforeItSaves) {
  openGoodEvent();
  for (const char* span : {"weekly", "", "this "}) { expectFailed(backend.saveItem("event", span), kInvalidSpan); }
  expectFailed(backend.saveItem("nonsense", "weekly"), kInvalidSpan);
  expectAsked({});
}

TEST_F(Lifecycle, SavesAnEventWithItsSpan) {
  const std::pair<OptionalText, const char*> cases[] = {{std::nullopt, "save event, this"},
                                                        {"This", "save event, this"},
                                                        {"future", "save event, future"},
                                                        {"ALL", "save event, future"}};
  openGoodEvent();
  for (const auto& [span, asked] : cases) {
    expectDone(backend.saveItem("Event", span));
    expectAsked({asked});
  }
  EXPECT_EQ(store().m_events.size(), 1u);
}

TEST_F(Lifecycle, KeepsTheEventCurrentThatItSaved) {
  const auto event = openGoodEvent();
  backend.saveItem("event", std::nullopt);
  EXPECT_EQ(backend.m_ekEvent, event);
  EXPECT_TRUE(backend.getEventAttribute("uid", 1, std::nullopt).has_value());
}

TEST_F(Lifecycle, RefusesAnEventThatEndsBeforeItStartsWithoutAskingTheStore) {
  const auto event = openGoodEvent();
  event->m_endDate = at(11, 3, 8);
  expectFailed(backend.saveItem("event", std::nullopt), kStartAfterEnd);
  expectAsked({});
}

TEST_F(Lifecycle, SavesAnEventThatEndsWhenItStarts) {
  const auto event = openGoodEvent();
  event->m_endDate = event->m_startDate;
  expectDone(backend.saveItem("event", std::nullopt));
}

TEST_F(Lifecycle, LeavesAMissingStartOrEndToTheStore) {
  openGoodEvent()->m_startDate.reset();
  expectFailed(backend.saveItem("event", std::nullopt), kEventNotSaved);
  openGoodEvent()->m_endDate.reset();
  expectFailed(backend.saveItem("event", std::nullopt), kEventNotSaved);
  expectAsked({"save event, this", "save event, this"});
}

TEST_F(Lifecycle, CountsARefusalWithoutAnErrorAsASave) {
  openGoodEvent();
  noting->m_silent = true;
  expectDone(backend.saveItem("event", std::nullopt));
}

TEST_F(Lifecycle, TellsAnEventWithAttendeesFromAnotherThatIsNotSaved) {
  const auto event = openGoodEvent();
  event->m_attendees = {std::make_shared<fakes::FakeParticipant>()};
  expectFailed(backend.saveItem("event", std::nullopt), kEventWithAttendeesNotSaved);
  event->m_attendees.reset();
  event->m_calendar = nullptr;
  expectFailed(backend.saveItem("event", std::nullopt), kEventNotSaved);
}

TEST_F(Lifecycle, SavesAReminder) {
  for (const char* type : {"task", "Reminder"}) {
    const auto reminder = openNewReminder();
    reminder->m_calendar = store().m_calendars.back();
    expectDone(backend.saveItem(type, std::nullopt));
    expectAsked({"save reminder"});
    reminder->m_calendar = nullptr;
    expectFailed(backend.saveItem(type, "this"), kReminderNotSaved);
    expectAsked({"save reminder"});
  }
}

TEST_F(Lifecycle, SavesACalendarUnderTheSourceOfTheDefaultOne) {
  backend.newItem("calendar");
  backend.setCalendarProp("title", std::string("Team"));
  expectDone(backend.saveItem("Calendar", std::nullopt));
  expectAsked({"save calendar"});
  EXPECT_EQ(backend.m_ekCalendar->source(), store().m_source);
  EXPECT_EQ(store().m_calendars.back()->m_title, "Team");
}

TEST_F(Lifecycle, MovesASavedCalendarToTheSourceOfTheDefaultOneOfItsKind) {
  const auto other = std::make_shared<fakes::FakeSource>("Elsewhere");
  store().addCalendar("Team")->m_source = other;
  store().m_calendars[1]->m_source = std::make_shared<fakes::FakeSource>("Lists");
  store().addCalendar("Chores", EKEntityType::kReminder)->m_source = other;
  backend.openCalendarWithTitle("Team");
  expectDone(backend.saveItem("calendar", std::nullopt));
  EXPECT_EQ(backend.m_ekCalendar->source()->title(), "Local");
  backend.openCalendarWithTitle("Chores");
  expectDone(backend.saveItem("ReminderList", "all"));
  EXPECT_EQ(backend.m_ekCalendar->source()->title(), "Lists");
}

TEST_F(Lifecycle, TellsACalendarThatAllowsNoChangesFromAnotherThatIsNotSaved) {
  backend.newItem("calendar");
  expectFailed(backend.saveItem("calendar", std::nullopt), kCalendarNotSaved);
  store().addCalendar("Holidays")->m_allowsContentModifications = false;
  backend.openCalendarWithTitle("Holidays");
  expectFailed(backend.saveItem("calendar", std::nullopt), kCalendarContentNotModifiable);
}

TEST_F(Lifecycle, HasOneCodeForAListThatIsNotSaved) {
  backend.newItem("reminderlist");
  expectFailed(backend.saveItem("reminderlist", std::nullopt), kCalendarNotSaved);
  store().m_calendars.back()->m_allowsContentModifications = false;
  backend.openReminderListAt(1);
  expectFailed(backend.saveItem("reminderlist", std::nullopt), kCalendarNotSaved);
}

TEST_F(Lifecycle, RefusesACalendarWhenThereIsNoSource) {
  store().m_calendars.clear();
  backend.newItem("calendar");
  backend.setCalendarProp("title", std::string("Team"));
  expectFailed(backend.saveItem("calendar", std::nullopt), kCalendarNotSaved);
}

TEST_F(Lifecycle, LeavesASaveOfNothingToTheStore) {
  expectFailed(backend.saveItem("event", std::nullopt), kEventNotSaved);
  expectFailed(backend.saveItem("reminder", std::nullopt), kReminderNotSaved);
  expectFailed(backend.saveItem("reminderlist", std::nullopt), kCalendarNotSaved);
  // What is not there allows no changes.
  expectFailed(backend.saveItem("calendar", std::nullopt), kCalendarContentNotModifiable);
  expectAsked({"save event, this", "save reminder", "save calendar", "save calendar"});
}

TEST_F(Lifecycle, SavesNothingOfAnotherType) {
  for (const OptionalText& type :
       {OptionalText("alarm"), OptionalText("attendee"), OptionalText("nonsense"), OptionalText(""), OptionalText()}) {
    expectFailed(backend.saveItem(type, "this"), kMissingArgument);
  }
  expectAsked({});
}

// Remove

TEST_F(Lifecycle, ReleasesTheItemsInOrderBeforeItRemoves) {
  fillSlots();
  remove("nonsense", "x", "weekly");
  takeCode();
  EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder));
  EXPECT_THAT(filledSlots(), IsEmpty());
}

TEST_F(Lifecycle, ChecksTheSpanBeforeItRemoves) {
  const auto uid = addEvent();
  for (const char* span : {"weekly", ""}) { expectFailed(remove("event", uid, span), kInvalidArgument); }
  expectFailed(remove("calendar", "calendar-1", "weekly"), kInvalidArgument);
  expectAsked({});
}

TEST_F(Lifecycle, RemovesAnEventWithItsSpan) {
  const std::pair<const char*, const char*> cases[] = {
      {"This", "remove event, this"}, {"future", "remove event, future"}, {"ALL", "remove event, future"}};
  for (const auto& [span, asked] : cases) {
    expectDone(remove("Event", addEvent(), span));
    expectAsked({asked});
    EXPECT_THAT(store().m_events, IsEmpty());
  }
}

TEST_F(Lifecycle, WantsASpanForAnEventThatExists) {
  const auto uid = addEvent();
  expectFailed(remove("event", uid), kSpanRequired);
  expectFailed(remove("event", "event-99"), kEventNotFound);
  expectFailed(remove("event", "event-99", "this"), kEventNotFound);
  expectFailed(remove("event", std::nullopt, "this"), kEventNotFound);
  EXPECT_EQ(store().m_events.size(), 1u);
}

TEST_F(Lifecycle, ReportsAnEventThatIsNotRemoved) {
  const auto uid = addEvent();
  store().m_calendars.front()->m_allowsContentModifications = false;
  expectFailed(remove("event", uid, "this"), kEventNotDeleted);
}

TEST_F(Lifecycle, RemovesAReminder) {
  for (const char* type : {"Task", "reminder"}) {
    const auto uid = store().addReminder("Reminders", "Water the plants")->m_itemIdentifier;
    expectDone(remove(type, uid));
    expectAsked({"remove reminder"});
    EXPECT_THAT(store().m_reminders, IsEmpty());
  }
}

TEST_F(Lifecycle, ReportsAReminderThatIsNotFoundOrNotRemoved) {
  expectFailed(remove("task", "item-99"), kReminderNotFound);
  expectFailed(remove("reminder", std::nullopt), kReminderNotFound);
  addEvent();
  expectFailed(remove("reminder", store().m_events.front()->m_itemIdentifier), kReminderNotFound);
  const auto uid = store().addReminder("Reminders", "Water the plants")->m_itemIdentifier;
  store().m_calendars.back()->m_allowsContentModifications = false;
  expectFailed(remove("reminder", uid), kReminderNotDeleted);
}

TEST_F(Lifecycle, RemovesACalendarOrList) {
  expectDone(remove("Calendar", store().addCalendar("Team")->m_identifier));
  expectDone(remove("reminderlist", store().addCalendar("Chores", EKEntityType::kReminder)->m_identifier, "this"));
  expectAsked({"remove calendar", "remove calendar"});
  EXPECT_EQ(store().m_calendars.size(), 2u);
}

TEST_F(Lifecycle, ReportsACalendarThatIsNotFoundOrNotRemoved) {
  const auto reminder = store().addReminder("Reminders", "Water the plants");
  expectFailed(remove("reminderlist", reminder->m_itemIdentifier), kCalendarNotFound);
  expectFailed(remove("calendar", std::nullopt), kCalendarNotFound);
  expectFailed(remove("calendar", store().m_calendars.front()->m_identifier), kCalendarNotDeleted);
  expectFailed(remove("reminderlist", store().m_calendars.back()->m_identifier), kCalendarNotDeleted);
}

TEST_F(Lifecycle, RemovesNothingOfAnotherType) {
  for (const OptionalText& type :
       {OptionalText("alarm"), OptionalText("attendee"), OptionalText("x"), OptionalText()}) {
    expectFailed(remove(type, "x", "this"), kMissingArgument);
  }
}

}  // namespace
}  // namespace orlocal
