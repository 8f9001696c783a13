#include "backend/legacy/legacy_fixture.h"

namespace orlocal {
namespace {

class LegacyLifecycle : public Legacy {};

/// A store whose saves and removals throw.
struct StoreThatSavesNothing : fakes::ForwardingEventStore {
  using ForwardingEventStore::ForwardingEventStore;
  bool saveCalendar(const std::shared_ptr<EKCalendar>&, bool, std::optional<Error>&) override { throw broken(); }
  bool removeReminder(const std::shared_ptr<EKReminder>&, bool, std::optional<Error>&) override { throw broken(); }
};

// New

TEST_F(LegacyLifecycle, BothCalendarWordsMakeACalendar) {
  for (const char* word : {"calendar", "reminderlist", "ReminderList"}) {
    backend.init();
    EXPECT_EQ(backend.newItem(word), 0);
    EXPECT_NE(backend.m_calendar, nullptr) << word;
  }
}

TEST_F(LegacyLifecycle, TheEventWordMakesAnEvent) {
  EXPECT_EQ(backend.newItem("EVENT"), 0);
  EXPECT_NE(backend.m_event, nullptr);
}

TEST_F(LegacyLifecycle, BothTaskWordsMakeATask) {
  for (const char* word : {"task", "reminder"}) {
    backend.init();
    EXPECT_EQ(backend.newItem(word), 0);
    EXPECT_NE(backend.m_task, nullptr) << word;
  }
}

TEST_F(LegacyLifecycle, OtherTypesMakeNothingAndGive9006) {
  for (const char* word : {"alarm", "attendee", "", "events"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.newItem(word), -1); }), 9006) << word;
  }
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.newItem(std::nullopt), -1); }), 9006);
}

TEST_F(LegacyLifecycle, ANewItemTakesThePlaceOfWhatWasOpen) {
  openEvent();
  backend.newItem("task");
  EXPECT_EQ(backend.m_event, nullptr);
}

TEST_F(LegacyLifecycle, AnItemThatThePlatformCannotMakeGives9012) {
  struct Barren : fakes::ForwardingEventKit {
    using ForwardingEventKit::ForwardingEventKit;
    std::shared_ptr<EKCalendar> calendarForEntityType(EKEntityType, const std::shared_ptr<EKEventStore>&) override {
      return nullptr;
    }
    std::shared_ptr<EKEvent> eventWithEventStore(const std::shared_ptr<EKEventStore>&) override { return nullptr; }
    std::shared_ptr<EKReminder> reminderWithEventStore(const std::shared_ptr<EKEventStore>&) override {
      return nullptr;
    }
  };
  platform->m_eventKit = std::make_shared<Barren>(kit);
  for (const char* word : {"calendar", "event", "task"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.newItem(word), -1); }), 9012) << word;
  }
}

// Save

TEST_F(LegacyLifecycle, SavesTheCurrentCalendar) {
  backend.newItem("calendar");
  backend.setCalendarProp("title", std::string("Club"));
  EXPECT_EQ(backend.saveItem("Calendar", std::nullopt), 0);
  EXPECT_EQ(store->m_calendars.size(), 4U);
}

TEST_F(LegacyLifecycle, SavingAnEventSavesTheCurrentCalendarInstead) {
  openEvent();
  event()->m_title = "Renamed";
  backend.m_calendar = framework->defaultCalendarStore()->calendarWithUID(workUid);
  backend.m_calendar->setTitle("Office");
  EXPECT_EQ(backend.saveItem("event", "this"), 0);
  EXPECT_EQ(store->m_calendars[0]->m_title, "Office");
  EXPECT_EQ(store->m_events[0]->m_title, "Review");
}

TEST_F(LegacyLifecycle, SavingAnEventOrATaskWithoutACalendarFails) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("event", "this"), -1); }), 9998);
  openTask();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("task", "this"), -1); }), 9998);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("reminder", "this"), -1); }), 9998);
}

TEST_F(LegacyLifecycle, UnknownTypesAndNoneSaveTheCalendarToo) {
  backend.m_calendar = framework->defaultCalendarStore()->calendarWithUID(workUid);
  EXPECT_EQ(backend.saveItem("alarm", std::nullopt), 0);
  EXPECT_EQ(backend.saveItem(std::nullopt, std::nullopt), 0);
}

TEST_F(LegacyLifecycle, SavingAReminderListSavesNothingAndGives9005) {
  backend.m_calendar = framework->defaultCalendarStore()->calendarWithUID(workUid);
  backend.m_calendar->setTitle("Office");
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("ReminderList", std::nullopt), -1); }), 9005);
  EXPECT_EQ(store->m_calendars[0]->m_title, "Work");
}

TEST_F(LegacyLifecycle, TheBranchOfTasksAndEventsSavesThem) {
  openEvent();
  event()->m_title = "Renamed";
  EXPECT_EQ(backend.saveTaskOrEvent("event", CalSpan::kThisEvent), 0);
  EXPECT_EQ(store->m_events[0]->m_title, "Renamed");
  openTask();
  task()->m_title = "Sweep";
  EXPECT_EQ(backend.saveTaskOrEvent("task", CalSpan::kThisEvent), 0);
  EXPECT_EQ(store->m_reminders[0]->m_title, "Sweep");
}

TEST_F(LegacyLifecycle, TheBranchOfTasksAndEventsNeedsACurrentOne) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveTaskOrEvent("event", CalSpan::kThisEvent), -1); }), 9000);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveTaskOrEvent("task", CalSpan::kThisEvent), -1); }), 9000);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveTaskOrEvent("calendar", CalSpan::kThisEvent), -1); }), 9005);
}

TEST_F(LegacyLifecycle, TheBranchOfTasksAndEventsPassesTheSpanOn) {
  struct Watching : fakes::ForwardingEventStore {
    using ForwardingEventStore::ForwardingEventStore;
    bool saveEvent(const std::shared_ptr<EKEvent>&, EKSpan span, bool, std::optional<Error>&) override {
      seen = span;
      return true;
    }
    std::optional<EKSpan> seen;
  };
  const auto watching = std::make_shared<Watching>(store);
  useStore(watching);
  openEvent();
  for (const auto& [span, passedOn] :
       {std::pair(CalSpan::kAllEvents, EKSpan::kAllEvents), std::pair(CalSpan::kFutureEvents, EKSpan::kFutureEvents),
        std::pair(CalSpan::kThisEvent, EKSpan::kThisEvent)}) {
    backend.saveTaskOrEvent("event", span);
    EXPECT_EQ(watching->seen, passedOn);
  }
}

TEST_F(LegacyLifecycle, EverySpanWordIsTakenAndOthersGive9006) {
  backend.m_calendar = framework->defaultCalendarStore()->calendarWithUID(workUid);
  for (const char* span : {"this", "future", "ALL"}) { EXPECT_EQ(backend.saveItem("calendar", span), 0) << span; }
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("calendar", "weekly"), -1); }), 9006);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("reminderlist", "weekly"), -1); }), 9006);
}

TEST_F(LegacyLifecycle, ARefusedSaveGives9998WithDescriptionAndReason) {
  store->m_calendars[0]->m_allowsContentModifications = false;
  backend.openCalendarWithTitle("Work");
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("calendar", std::nullopt), -1); }), 9998);
  EXPECT_EQ(backend.getLastErrorString(), "The fake store refused. The calendar allows no changes.");
}

TEST_F(LegacyLifecycle, AMissingReasonIsTheMainBundlesTextForTheEmptyKey) {
  struct Terse : fakes::ForwardingEventStore {
    using ForwardingEventStore::ForwardingEventStore;
    bool saveCalendar(const std::shared_ptr<EKCalendar>&, bool, std::optional<Error>& error) override {
      error = Error{"There is no calendar to save.", std::nullopt};
      return false;
    }
  };
  useStore(std::make_shared<Terse>(store));
  EXPECT_EQ(backend.saveItem("calendar", std::nullopt), -1);
  EXPECT_EQ(backend.getLastErrorString(), "There is no calendar to save. ");
  platform->m_bundleStrings->m_strings[{"Localizable", ""}] = u"Für sich";
  EXPECT_EQ(backend.saveItem("calendar", std::nullopt), -1);
  EXPECT_EQ(backend.getLastErrorString(), "There is no calendar to save. Für sich");
}

TEST_F(LegacyLifecycle, AnExceptionWhileSavingGives9999AndYetZero) {
  useStore(std::make_shared<StoreThatSavesNothing>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.saveItem("calendar", std::nullopt), 0); }), 9999);
  EXPECT_EQ(backend.getLastErrorString(), "The store is gone.");
}

// Remove

TEST_F(LegacyLifecycle, BothCalendarWordsRemoveACalendar) {
  EXPECT_EQ(backend.removeItem("calendar", workUid, std::nullopt, std::nullopt), 0);
  const auto club = *store->addCalendar("Club")->m_identifier;
  EXPECT_EQ(backend.removeItem("reminderlist", club, std::nullopt, std::nullopt), 0);
  EXPECT_EQ(store->m_calendars.size(), 2U);
  const auto garden = *store->addCalendar("Garden", EKEntityType::kReminder)->m_identifier;
  EXPECT_EQ(backend.removeItem("calendar", garden, std::nullopt, std::nullopt), 0);
  EXPECT_EQ(store->m_calendars.size(), 2U);
}

TEST_F(LegacyLifecycle, BothTaskWordsRemoveATask) {
  const auto first = addTask("Chores", "One");
  const auto second = addTask("Chores", "Two");
  EXPECT_EQ(backend.removeItem("Task", first, std::nullopt, std::nullopt), 0);
  EXPECT_EQ(backend.removeItem("reminder", second, std::nullopt, std::nullopt), 0);
  EXPECT_TRUE(store->m_reminders.empty());
}

TEST_F(LegacyLifecycle, RemovesAnEventWithASpan) {
  const auto uid = addEvent("Work", "Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_EQ(backend.removeItem("event", uid, std::nullopt, "this"), 0);
  EXPECT_TRUE(store->m_events.empty());
}

TEST_F(LegacyLifecycle, RemovesTheOccurrenceOfThatDate) {
  const auto uid = addEvent("Work", "Stand-up", at(11, 3, 9), at(11, 3, 10));
  store->m_events[0]->m_rules = {{behind<RecurrenceRuleFace>(framework->initDailyRecurrenceWithInterval(1, nullptr))}};
  EXPECT_EQ(backend.removeItem("event", uid, at(11, 4, 9), "this"), 0);
  EXPECT_THAT(store->m_events[0]->m_excluded, testing::ElementsAre(at(11, 4, 9)));
}

TEST_F(LegacyLifecycle, RemovingAnEventWithoutASpanGives9005) {
  const auto uid = addEvent("Work", "Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem("event", uid, std::nullopt, std::nullopt), -1); }), 9005);
  EXPECT_EQ(store->m_events.size(), 1U);
}

TEST_F(LegacyLifecycle, RemovingWhatIsNotThereGives9001) {
  for (const char* type : {"calendar", "reminderlist", "task", "reminder", "event"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem(type, "nowhere", std::nullopt, "this"), -1); }), 9001) << type;
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem(type, std::nullopt, std::nullopt, "this"), -1); }), 9001)
        << type;
  }
}

TEST_F(LegacyLifecycle, RemovingOtherTypesGives9005AndOtherSpans9006) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem("alarm", workUid, std::nullopt, "this"), -1); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem(std::nullopt, workUid, std::nullopt, "this"), -1); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem("calendar", workUid, std::nullopt, "weekly"), -1); }), 9006);
  EXPECT_EQ(store->m_calendars.size(), 3U);
}

TEST_F(LegacyLifecycle, RemovingReleasesWhatWasOpen) {
  openEvent();
  backend.removeItem("calendar", "nowhere", std::nullopt, std::nullopt);
  EXPECT_EQ(backend.m_event, nullptr);
}

TEST_F(LegacyLifecycle, ARefusedRemovalGives9998WithTheReason) {
  backend.removeItem("calendar", workUid, std::nullopt, std::nullopt);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem("calendar", homeUid, std::nullopt, std::nullopt), -1); }), 9998);
  EXPECT_EQ(backend.getLastErrorString(), "The fake store refused. It is the last of its kind.");
}

TEST_F(LegacyLifecycle, AnExceptionWhileRemovingGives9999AndYetZero) {
  const auto uid = addTask("Chores", "Tidy");
  useStore(std::make_shared<StoreThatSavesNothing>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeItem("task", uid, std::nullopt, std::nullopt), 0); }), 9999);
  EXPECT_EQ(backend.getLastErrorString(), "The store is gone.");
}

// Count

TEST_F(LegacyLifecycle, BothCalendarWordsCountAllCalendars) {
  EXPECT_EQ(backend.getObjectCount("calendar"), 3);
  EXPECT_EQ(backend.getObjectCount("ReminderList"), 3);
}

TEST_F(LegacyLifecycle, CountsTheEventsOfTheLastFetch) {
  addEvent("Work", "One", at(11, 3, 9), at(11, 3, 10));
  addEvent("Work", "Two", at(11, 4, 9), at(11, 4, 10));
  backend.fetchEventsWithStartDate(at(11, 1, 0), at(11, 30, 0), std::nullopt, std::nullopt);
  EXPECT_EQ(backend.getObjectCount("event"), 2);
}

TEST_F(LegacyLifecycle, CountsTheTasksOfTheLastFetch) {
  addTask("Chores", "One");
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(backend.getObjectCount("task"), 1);
  EXPECT_EQ(backend.getObjectCount("reminder"), 1);
}

TEST_F(LegacyLifecycle, CountingRunsTheQueryAgain) {
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(backend.getObjectCount("task"), 0);
  addTask("Chores", "Late");
  EXPECT_EQ(backend.getObjectCount("task"), 1);
}

TEST_F(LegacyLifecycle, CountingWithoutAFetchGives9000) {
  for (const char* type : {"event", "task", "reminder"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.getObjectCount(type), -1); }), 9000) << type;
  }
}

TEST_F(LegacyLifecycle, CountsTheAttendeesOfTheCurrentEvent) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.getObjectCount("attendee"), -1); }), 9000);
  openEvent();
  EXPECT_EQ(backend.getObjectCount("attendee"), 0);
  event()->m_attendees.emplace(2, std::make_shared<fakes::FakeParticipant>());
  EXPECT_EQ(backend.getObjectCount("attendee"), 2);
}

TEST_F(LegacyLifecycle, AlarmsAreNotCounted) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.getObjectCount("alarm"), -1); }), 9016);
}

TEST_F(LegacyLifecycle, AnUnknownTypeCountsMinusOneWithoutACode) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.getObjectCount("events"), -1); }), 0);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.getObjectCount(std::nullopt), -1); }), 0);
}

}  // namespace
}  // namespace orlocal
