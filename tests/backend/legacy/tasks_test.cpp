#include "backend/legacy/legacy_fixture.h"

namespace orlocal {
namespace {

class LegacyTasks : public Legacy {
 protected:
  LegacyTasks() {
    gardenUid = *store->addCalendar("Garden", EKEntityType::kReminder)->m_identifier;
    addTask("Chores", "Whenever");
    addTask("Chores", "Soon", at(11, 3, 12));
    addTask("Garden", "Later", at(11, 10, 12));
    addTask("Garden", "Done", std::nullopt, at(10, 20, 12));
  }

  std::vector<std::string> fetched() {
    std::vector<std::string> titles;
    const int count = backend.getObjectCount("task");
    for (int i = 1; i <= count; ++i) {
      EXPECT_EQ(backend.openTaskAt(i), 0);
      titles.push_back(taskAttribute("title").value_or(""));
    }
    return titles;
  }

  std::string gardenUid;
};

using testing::ElementsAre;

// Fetching by status

TEST_F(LegacyTasks, NoStatusFetchesAllTasks) {
  EXPECT_EQ(backend.fetchTasks(std::nullopt, std::nullopt, at(11, 4, 0)), 0);
  EXPECT_THAT(fetched(), ElementsAre("Whenever", "Soon", "Later", "Done"));
}

TEST_F(LegacyTasks, NamesNarrowTheFetch) {
  EXPECT_EQ(backend.fetchTasks("Garden", std::nullopt, std::nullopt), 0);
  EXPECT_THAT(fetched(), ElementsAre("Later", "Done"));
}

TEST_F(LegacyTasks, IncompleteWithoutADateFetchesEveryOpenTask) {
  for (const char* status : {"incomplete", "InCompleted"}) {
    EXPECT_EQ(backend.fetchTasks(std::nullopt, status, std::nullopt), 0);
    EXPECT_THAT(fetched(), ElementsAre("Whenever", "Soon", "Later")) << status;
  }
}

TEST_F(LegacyTasks, IncompleteWithADateFetchesWhatIsDueBeforeIt) {
  EXPECT_EQ(backend.fetchTasks(std::nullopt, "incompleted", at(11, 10, 12)), 0);
  EXPECT_THAT(fetched(), ElementsAre("Soon"));
}

TEST_F(LegacyTasks, CompleteFetchesWhatWasDoneSinceTheDate) {
  for (const char* status : {"complete", "COMPLETED"}) {
    EXPECT_EQ(backend.fetchTasks(std::nullopt, status, at(10, 1, 0)), 0);
    EXPECT_THAT(fetched(), ElementsAre("Done")) << status;
  }
}

TEST_F(LegacyTasks, CompleteWithoutADateGivesMinus4) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasks(std::nullopt, "complete", std::nullopt), -1); }), -4);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasks(std::nullopt, "completed", std::nullopt), -1); }), -4);
}

TEST_F(LegacyTasks, AnyOtherStatusGivesMinus4) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasks(std::nullopt, "open", at(11, 1, 0)), -1); }), -4);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasks(std::nullopt, "", std::nullopt), -1); }), -4);
}

TEST_F(LegacyTasks, AnUnknownNameComesBeforeTheStatus) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasks("Nowhere", "open", std::nullopt), -1); }), 9013);
}

TEST_F(LegacyTasks, AStoreWithoutCalendarsGives9004) {
  store->m_calendars.clear();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt), -1); }), 9004);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksWithCalendars(std::nullopt), -1); }), 9004);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksUncompleted(std::nullopt), -1); }), 9004);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksUncompleted(at(11, 1, 0), std::nullopt), -1); }), 9004);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksCompletedSince(at(11, 1, 0), std::nullopt), -1); }), 9004);
}

TEST_F(LegacyTasks, AFetchReleasesWhatWasOpen) {
  openTask();
  backend.m_event = framework->event();
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(backend.m_task, nullptr);
  EXPECT_EQ(backend.m_event, nullptr);
}

// Single-purpose fetches

TEST_F(LegacyTasks, EachSinglePurposeFetchFetchesItsCase) {
  EXPECT_EQ(backend.fetchTasksWithCalendars("Garden"), 0);
  EXPECT_THAT(fetched(), ElementsAre("Later", "Done"));
  EXPECT_EQ(backend.fetchTasksUncompleted("Chores"), 0);
  EXPECT_THAT(fetched(), ElementsAre("Whenever", "Soon"));
  EXPECT_EQ(backend.fetchTasksUncompleted(at(11, 10, 12), std::nullopt), 0);
  EXPECT_THAT(fetched(), ElementsAre("Soon"));
  EXPECT_EQ(backend.fetchTasksCompletedSince(at(10, 1, 0), std::nullopt), 0);
  EXPECT_THAT(fetched(), ElementsAre("Done"));
}

TEST_F(LegacyTasks, APredicateOutlivesTheFetchThatMadeIt) {
  std::weak_ptr<const CalPredicate> kept;
  backend.fetchTasksUncompleted(std::nullopt);
  kept = backend.m_taskPredicate;
  EXPECT_FALSE(kept.expired());
  EXPECT_EQ(backend.getObjectCount("task"), 3);
  backend.fetchTasksWithCalendars(std::nullopt);
  EXPECT_TRUE(kept.expired());
  EXPECT_EQ(backend.getObjectCount("task"), 4);
}

TEST_F(LegacyTasks, AnUnknownNameStopsASinglePurposeFetch) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksWithCalendars("Nowhere"), -1); }), 9013);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksUncompleted("Nowhere"), -1); }), 9013);
}

TEST_F(LegacyTasks, APredicateThatIsNotMadeGives9007) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksUncompleted(std::optional<Date>(), std::nullopt), -1); }), 9007);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasksCompletedSince(std::nullopt, std::nullopt), -1); }), 9007);
  struct Barren : fakes::ForwardingEventStore {
    using ForwardingEventStore::ForwardingEventStore;
    std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray&) override {
      return nullptr;
    }
  };
  useStore(std::make_shared<Barren>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt), -1); }), 9007);
}

// Opening

TEST_F(LegacyTasks, OpensATaskByUid) {
  openTask();
  EXPECT_EQ(taskAttribute("title"), "Tidy");
}

TEST_F(LegacyTasks, OpeningByUidReleasesEverythingAndUnknownUidsGive9001) {
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openTaskWithUID("nowhere"), -1); }), 9001);
  EXPECT_EQ(backend.m_taskPredicate, nullptr);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openTaskWithUID(std::nullopt), -1); }), 9001);
}

TEST_F(LegacyTasks, IndexesOutsideTheFetchGive9002) {
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openTaskAt(0), -1); }), 9002);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openTaskAt(5), -1); }), 9002);
}

TEST_F(LegacyTasks, WithoutAFetchEveryIndexIsOutOfBounds) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openTaskAt(1), -1); }), 9002);
}

TEST_F(LegacyTasks, ATaskThatHasGoneMeanwhileGives9001) {
  struct Gone : EKReminderArray {
    std::size_t count() const override { return 1; }
    std::shared_ptr<EKReminder> objectAtIndex(std::size_t) const override { return nullptr; }
  };
  struct Forgetful : fakes::ForwardingEventStore {
    using ForwardingEventStore::ForwardingEventStore;
    void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>&,
                                         ReminderCompletion completion) override {
      completion(std::make_shared<Gone>());
    }
  };
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  useStore(std::make_shared<Forgetful>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openTaskAt(1), -1); }), 9001);
}

TEST_F(LegacyTasks, OpeningByIndexKeepsTheCalendarAndThePredicates) {
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  backend.m_calendar = framework->calendar();
  backend.m_event = framework->event();
  backend.m_alarm = framework->alarm();
  backend.m_attendee = somebody();
  backend.m_recurrencerule = framework->initDailyRecurrenceWithInterval(1, nullptr);
  backend.m_recurrenceend = framework->recurrenceEndWithOccurrenceCount(1);
  ASSERT_EQ(backend.openTaskAt(1), 0);
  EXPECT_NE(backend.m_calendar, nullptr);
  EXPECT_NE(backend.m_taskPredicate, nullptr);
  EXPECT_EQ(backend.m_event, nullptr);
  EXPECT_EQ(backend.m_alarm, nullptr);
  EXPECT_EQ(backend.m_attendee, nullptr);
  EXPECT_EQ(backend.m_recurrencerule, nullptr);
  EXPECT_EQ(backend.m_recurrenceend, nullptr);
}

// Setting

TEST_F(LegacyTasks, SetsItsOwnProperties) {
  openTask();
  EXPECT_EQ(backend.setTaskProp("DueDate", at(11, 7, 12)), 0);
  EXPECT_EQ(backend.m_task->dueDate(), at(11, 7, 12));
  EXPECT_EQ(backend.setTaskProp("completeddate", at(11, 1, 12)), 0);
  EXPECT_EQ(task()->m_completionDate, at(11, 1, 12));
  EXPECT_EQ(backend.setTaskProp("iscompleted", std::string("false")), 0);
  EXPECT_FALSE(task()->isCompleted());
  EXPECT_EQ(backend.setTaskProp("iscompleted", std::string("True")), 0);
  EXPECT_TRUE(task()->isCompleted());
}

TEST_F(LegacyTasks, EveryPriorityWordGoesBothWays) {
  openTask();
  const std::pair<const char*, int> words[] = {{"high", 1}, {"medium", 5}, {"low", 9}, {"none", 0}};
  for (const auto& [word, number] : words) {
    EXPECT_EQ(backend.setTaskProp("priority", std::string(word)), 0);
    EXPECT_EQ(task()->m_priority, number);
    EXPECT_EQ(taskAttribute("priority"), word);
  }
  backend.setTaskProp("priority", std::string("HIGH"));
  EXPECT_EQ(task()->m_priority, 1);
  EXPECT_EQ(backend.setTaskProp("priority", {}), 0);
  EXPECT_EQ(task()->m_priority, 0);
}

TEST_F(LegacyTasks, AnotherPriorityWordGives9005AndYetZero) {
  openTask();
  task()->m_priority = 5;
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setTaskProp("priority", std::string("urgent")), 0); }), 9005);
  EXPECT_EQ(task()->m_priority, 5);
}

TEST_F(LegacyTasks, AnotherStoredPriorityReadsAsNothing) {
  openTask();
  task()->m_priority = 3;
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(taskAttribute("priority"), std::nullopt); }), 0);
}

TEST_F(LegacyTasks, SharedPropertiesAreSetOnTheTask) {
  openTask();
  EXPECT_EQ(backend.setTaskProp("title", std::string("Sweep")), 0);
  EXPECT_EQ(backend.setTaskProp("calendartitle", std::string("Garden")), 0);
  EXPECT_EQ(taskAttribute("title"), "Sweep");
  EXPECT_EQ(taskAttribute("calendaruid"), gardenUid);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setTaskProp("startdate", at(11, 3, 9)), 0); }), 9006);
}

TEST_F(LegacyTasks, SettingWithoutATaskGives9000AndWithoutAProperty9005) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setTaskProp("title", std::string("x")), -1); }), 9000);
  openTask();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setTaskProp(std::nullopt, std::string("x")), -1); }), 9005);
}

// Reading

TEST_F(LegacyTasks, ReadsItsOwnProperties) {
  openTask();
  backend.m_task->setDueDate(at(11, 7, 12));
  task()->setCompletionDate(at(11, 1, 12));
  EXPECT_EQ(taskAttribute("DueDate"), "2026-11-07 13:00:00 +0100");
  EXPECT_EQ(taskAttribute("completeddate"), "2026-11-01 13:00:00 +0100");
  EXPECT_EQ(taskAttribute("iscompleted"), "True");
  EXPECT_EQ(taskAttribute("nextalarmdate"), "");
}

TEST_F(LegacyTasks, AnOpenTaskWithoutDatesReadsAsNothing) {
  openTask();
  EXPECT_EQ(taskAttribute("duedate"), std::nullopt);
  EXPECT_EQ(taskAttribute("completeddate"), std::nullopt);
  EXPECT_EQ(taskAttribute("iscompleted"), "False");
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(LegacyTasks, ReadingWithoutATaskGives9000WithoutAProperty9005AndAnUnknownOne9006) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(taskAttribute("title"), std::nullopt); }), 9000);
  openTask();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(taskAttribute(std::nullopt), std::nullopt); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(taskAttribute("startdate"), std::nullopt); }), 9006);
}

}  // namespace
}  // namespace orlocal
