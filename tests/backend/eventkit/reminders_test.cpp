#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

/// Notes what each reminder predicate is made of.
class ReminderNotingStore : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;

  std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray& calendars) override {
    note("all", std::nullopt, std::nullopt, calendars);
    return m_next->predicateForRemindersInCalendars(calendars);
  }
  std::shared_ptr<const EKPredicate> predicateForIncompleteReminders(std::optional<Date> start, std::optional<Date> end,
                                                                     const EKCalendarArray& calendars) override {
    note("incomplete", start, end, calendars);
    return m_next->predicateForIncompleteReminders(start, end, calendars);
  }
  std::shared_ptr<const EKPredicate> predicateForCompletedReminders(std::optional<Date> start, std::optional<Date> end,
                                                                    const EKCalendarArray& calendars) override {
    note("completed", start, end, calendars);
    return m_next->predicateForCompletedReminders(start, end, calendars);
  }

  std::string m_kind;
  std::optional<Date> m_start, m_end;
  std::vector<std::string> m_titles;

 private:
  void note(const char* kind, std::optional<Date> start, std::optional<Date> end, const EKCalendarArray& calendars) {
    m_kind = kind;
    m_start = start;
    m_end = end;
    m_titles.clear();
    for (const auto& calendar : calendars) { m_titles.push_back(calendar->title().value_or("")); }
  }
};

/// Makes no predicates.
class UnwillingStore : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;
  std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray&) override {
    return nullptr;
  }
  std::shared_ptr<const EKPredicate> predicateForIncompleteReminders(std::optional<Date>, std::optional<Date>,
                                                                     const EKCalendarArray&) override {
    return nullptr;
  }
  std::shared_ptr<const EKPredicate> predicateForCompletedReminders(std::optional<Date>, std::optional<Date>,
                                                                    const EKCalendarArray&) override {
    return nullptr;
  }
};

/// Delivers a list whose objects have gone.
class StoreWithoutItsReminder : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;
  void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>&,
                                       ReminderCompletion completion) override {
    struct Gone : EKReminderArray {
      std::size_t count() const override { return 1; }
      std::shared_ptr<EKReminder> objectAtIndex(std::size_t) const override { return nullptr; }
    };
    completion(std::make_shared<Gone>());
  }
};

class Reminders : public BackendTest {
 protected:
  Reminders() { backend.m_ekEventStore = noting; }

  OptionalText get(const OptionalText& property) { return backend.getReminderAttribute(property, 1, std::nullopt); }

  void expectAsked(const char* kind, std::optional<Date> start, std::optional<Date> end) {
    EXPECT_EQ(noting->m_kind, kind);
    EXPECT_EQ(noting->m_start, start);
    EXPECT_EQ(noting->m_end, end);
    EXPECT_EQ(filledSlots(), std::set<std::string>{"reminder predicate"});
  }

  std::shared_ptr<ReminderNotingStore> noting = std::make_shared<ReminderNotingStore>(kit->m_store);
  const Date noon = at(11, 5, 11);
};

// Fetching by status

TEST_F(Reminders, AreAllFetchedWithoutAStatus) {
  expectDone(backend.fetchReminders(std::nullopt, std::nullopt, noon));
  expectAsked("all", std::nullopt, std::nullopt);
}

TEST_F(Reminders, AreFetchedOpenUpToADueDate) {
  for (const char* status : {"incomplete", "Incompleted", "INCOMPLETE"}) {
    expectDone(backend.fetchReminders(std::nullopt, status, noon));
    expectAsked("incomplete", std::nullopt, noon);
    expectDone(backend.fetchReminders(std::nullopt, status, std::nullopt));
    expectAsked("incomplete", std::nullopt, std::nullopt);
  }
}

TEST_F(Reminders, AreFetchedCompletedSinceADate) {
  for (const char* status : {"complete", "completed", "Completed"}) {
    expectDone(backend.fetchReminders(std::nullopt, status, noon));
    expectAsked("completed", noon, std::nullopt);
  }
}

TEST_F(Reminders, AreNotFetchedCompletedWithoutADate) {
  for (const char* status : {"complete", "COMPLETED"}) {
    expectFailed(backend.fetchReminders(std::nullopt, status, std::nullopt), kInvalidParameterValue);
    EXPECT_THAT(filledSlots(), IsEmpty());
  }
}

TEST_F(Reminders, AreNotFetchedByAnUnknownStatus) {
  for (const char* status : {"done", "", "complete "}) {
    expectFailed(backend.fetchReminders(std::nullopt, status, noon), kInvalidParameterValue);
  }
}

TEST_F(Reminders, AreFetchedFromAllListsOrTheNamedOnes) {
  store().addCalendar("Chores", EKEntityType::kReminder);
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  EXPECT_THAT(noting->m_titles, ElementsAre("Reminders", "Chores"));
  backend.fetchReminders("Chores", "incomplete", std::nullopt);
  EXPECT_THAT(noting->m_titles, ElementsAre("Chores"));
}

TEST_F(Reminders, AreNotFetchedFromAnUnknownList) {
  fillSlots();
  expectFailed(backend.fetchReminders("Nowhere", std::nullopt, std::nullopt), kCalendarUidNotFound);
  EXPECT_THAT(filledSlots(), IsEmpty());
}

TEST_F(Reminders, AreNotFetchedFromNoLists) {
  store().m_calendars.clear();
  expectFailed(backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt), kCalendarArrayNotCreated);
}

TEST_F(Reminders, ReportListsBeforeTheStatus) {
  expectFailed(backend.fetchReminders("Nowhere", "done", std::nullopt), kCalendarUidNotFound);
}

// The four single-purpose fetches

TEST_F(Reminders, AreFetchedForOnePurpose) {
  expectDone(backend.fetchRemindersWithCalendars(std::nullopt));
  expectAsked("all", std::nullopt, std::nullopt);
  expectDone(backend.fetchRemindersUncompleted(std::nullopt));
  expectAsked("incomplete", std::nullopt, std::nullopt);
  expectDone(backend.fetchRemindersUncompleted(noon, std::nullopt));
  expectAsked("incomplete", std::nullopt, noon);
  expectDone(backend.fetchRemindersCompletedSince(noon, std::nullopt));
  expectAsked("completed", noon, std::nullopt);
}

TEST_F(Reminders, ReportAnUnknownListAsAnEmptyArrayWhenFetchedForOnePurpose) {
  expectFailed(backend.fetchRemindersWithCalendars("Nowhere"), kCalendarArrayNotCreated);
  expectFailed(backend.fetchRemindersUncompleted("Nowhere"), kCalendarArrayNotCreated);
  expectFailed(backend.fetchRemindersUncompleted(noon, "Nowhere"), kCalendarArrayNotCreated);
  expectFailed(backend.fetchRemindersCompletedSince(noon, "Nowhere"), kCalendarArrayNotCreated);
}

TEST_F(Reminders, ReportAPredicateThatIsNotMade) {
  backend.m_ekEventStore = std::make_shared<UnwillingStore>(kit->m_store);
  expectFailed(backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt), kReminderPredicateNotCreated);
  expectFailed(backend.fetchReminders(std::nullopt, "incomplete", std::nullopt), kReminderPredicateNotCreated);
  expectFailed(backend.fetchReminders(std::nullopt, "complete", noon), kReminderPredicateNotCreated);
  expectFailed(backend.fetchRemindersWithCalendars(std::nullopt), kReminderPredicateNotCreated);
  expectFailed(backend.fetchRemindersUncompleted(std::nullopt), kReminderPredicateNotCreated);
  expectFailed(backend.fetchRemindersUncompleted(noon, std::nullopt), kReminderPredicateNotCreated);
  expectFailed(backend.fetchRemindersCompletedSince(noon, std::nullopt), kReminderPredicateNotCreated);
}

TEST_F(Reminders, AreFetchedAfterAllItemsWereReleasedInOrder) {
  const std::vector<std::function<void()>> fetches = {
      [&] { backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt); },
      [&] { backend.fetchRemindersWithCalendars(std::nullopt); },
      [&] { backend.fetchRemindersUncompleted(std::nullopt); },
      [&] { backend.fetchRemindersUncompleted(noon, std::nullopt); },
      [&] { backend.fetchRemindersCompletedSince(noon, std::nullopt); },
  };
  for (const auto& fetch : fetches) {
    released->clear();
    fillSlots();
    fetch();
    EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder));
    EXPECT_EQ(filledSlots(), std::set<std::string>{"reminder predicate"});
  }
}

// Opening

TEST_F(Reminders, OpenByIdentifier) {
  const auto reminder = store().addReminder("Reminders", "Water the plants");
  fillSlots();
  expectDone(backend.openReminderWithUID(reminder->m_itemIdentifier));
  EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder));
  EXPECT_EQ(filledSlots(), std::set<std::string>{"reminder"});
  EXPECT_EQ(backend.m_ekReminder->title(), "Water the plants");
}

TEST_F(Reminders, ReportAnUnknownIdentifier) {
  fillSlots();
  expectFailed(backend.openReminderWithUID("item-99"), kReminderUidNotFound);
  EXPECT_THAT(filledSlots(), IsEmpty());
  expectFailed(backend.openReminderWithUID(std::nullopt), kReminderUidNotFound);
}

TEST_F(Reminders, AreNotFoundByTheIdentifierOfAnEvent) {
  const auto event = store().addEvent("Calendar", "Review", at(11, 3, 9), at(11, 3, 10));
  expectFailed(backend.openReminderWithUID(event->m_itemIdentifier), kReminderUidNotFound);
}

TEST_F(Reminders, OpenByIndexOneAfterTheOther) {
  store().addReminder("Reminders", "first");
  store().addReminder("Reminders", "second");
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  expectDone(backend.openReminderAt(2));
  EXPECT_EQ(backend.m_ekReminder->title(), "second");
  expectDone(backend.openReminderAt(1));
  EXPECT_EQ(backend.m_ekReminder->title(), "first");
}

TEST_F(Reminders, DoNotOpenOutsideTheFetch) {
  store().addReminder("Reminders", "first");
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  for (const std::int32_t index : {0, 2, -1}) {
    expectFailed(backend.openReminderAt(index), kIndexOutOfBounds);
    EXPECT_EQ(backend.m_ekReminder, nullptr);
  }
}

TEST_F(Reminders, AreOutOfRangeWhenNoneWereFetched) {
  store().addReminder("Reminders", "first");
  expectFailed(backend.openReminderAt(1), kIndexOutOfBounds);
}

TEST_F(Reminders, ReleaseWhatIsOpenInOrderAndKeepCalendarAndPredicatesWhenOneOpensByIndex) {
  fillSlots();
  backend.m_ekEventStore = std::make_shared<StoreWithoutItsReminder>(kit->m_store);
  expectFailed(backend.openReminderAt(1), kReminderNotOpenedAtIndex);
  EXPECT_THAT(*released, ElementsAre("alarm", "participant", "recurrence end", "recurrence rule", "reminder", "event"));
  EXPECT_EQ(filledSlots(), (std::set<std::string>{"calendar", "event predicate", "reminder predicate"}));
}

TEST_F(Reminders, AreWaitedForOnTheRunLoopInShortSteps) {
  store().addReminder("Reminders", "first");
  store().m_runLoop = runLoop;
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  // Something else is served first, and does not end the wait.
  bool served = false;
  runLoop->perform([&] { served = true; });
  expectDone(backend.openReminderAt(1));
  EXPECT_TRUE(served);
  EXPECT_GE(runLoop->m_runs, 1);
  EXPECT_EQ(runLoop->m_lastTime, std::chrono::milliseconds(10));
}

TEST_F(Reminders, AreWaitedForAsLongAsTheStoreTakes) {
  store().addReminder("Reminders", "first");
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  class SlowStore : public fakes::ForwardingEventStore {
   public:
    SlowStore(std::shared_ptr<EKEventStore> next, fakes::FakeRunLoop& loop)
        : ForwardingEventStore(std::move(next)), m_loop(loop) {}
    void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>& predicate,
                                         ReminderCompletion completion) override {
      later(500, [this, predicate, completion] { m_next->fetchRemindersMatchingPredicate(predicate, completion); });
    }

   private:
    void later(int turns, std::function<void()> work) {
      if (turns == 0) { return work(); }
      m_loop.perform([this, turns, work = std::move(work)] { later(turns - 1, work); });
    }
    fakes::FakeRunLoop& m_loop;
  };
  backend.m_ekEventStore = std::make_shared<SlowStore>(kit->m_store, *runLoop);
  expectDone(backend.openReminderAt(1));
  EXPECT_EQ(runLoop->m_runs, 500);
}

TEST_F(Reminders, AreNotWaitedForWhenTheStoreAnswersAtOnce) {
  store().addReminder("Reminders", "first");
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  expectDone(backend.openReminderAt(1));
  EXPECT_EQ(runLoop->m_runs, 0);
}

// Setting

TEST_F(Reminders, AreNotSetWhenNoneIsOpen) {
  expectFailed(backend.setReminderProp("title", std::string("x")), kNoReminderToSetProperty);
}

TEST_F(Reminders, WantAPropertyToSet) {
  openNewReminder();
  expectFailed(backend.setReminderProp(std::nullopt, std::string("x")), kPropertyRequired);
}

TEST_F(Reminders, TakeACompletionDate) {
  const auto reminder = openNewReminder();
  expectDone(backend.setReminderProp("CompletedDate", noon));
  EXPECT_EQ(reminder->m_completionDate, noon);
}

TEST_F(Reminders, TakeADueDateInPartsOfTheDefaultZone) {
  const auto reminder = openNewReminder();
  expectDone(backend.setReminderProp("duedate", at(7, 5, 7, 30, 15)));
  ASSERT_TRUE(reminder->m_due.has_value());
  DateComponents expected;
  expected.year = 2026;
  expected.month = 7;
  expected.day = 5;
  expected.hour = 9;
  expected.minute = 30;
  expected.second = 15;
  EXPECT_EQ(*reminder->m_due, expected);
}

TEST_F(Reminders, LoseTheirDueDateToNone) {
  const auto reminder = openNewReminder();
  reminder->m_due.emplace();
  expectDone(backend.setReminderProp("duedate", std::monostate()));
  EXPECT_EQ(reminder->m_due, std::nullopt);
}

TEST_F(Reminders, AreCompletedExactlyWhenTheTextIsTrue) {
  const auto reminder = openNewReminder();
  expectDone(backend.setReminderProp("IsCompleted", std::string("TRUE")));
  EXPECT_TRUE(reminder->isCompleted());
  expectDone(backend.setReminderProp("iscompleted", std::string("yes")));
  EXPECT_FALSE(reminder->isCompleted());
}

TEST_F(Reminders, TakeAPriorityByItsWord) {
  const auto reminder = openNewReminder();
  const std::pair<PropertyValue, int> cases[] = {{std::string("High"), 1}, {std::string("medium"), 5},
                                                 {std::string("LOW"), 9},  {std::string("none"), 0},
                                                 {std::string("low"), 9},  {std::monostate(), 0}};
  for (const auto& [value, priority] : cases) {
    expectDone(backend.setReminderProp("priority", value));
    EXPECT_EQ(reminder->m_priority, priority);
  }
}

TEST_F(Reminders, GiveZeroAndACodeForAnUnknownPriority) {
  const auto reminder = openNewReminder();
  reminder->m_priority = 5;
  EXPECT_EQ(backend.setReminderProp("priority", std::string("urgent")), 0);
  EXPECT_EQ(takeCode(), kMissingArgument);
  EXPECT_EQ(reminder->m_priority, 5);
}

TEST_F(Reminders, HandOtherPropertiesOnAndGiveZero) {
  const auto reminder = openNewReminder();
  expectDone(backend.setReminderProp("Title", std::string("Water the plants")));
  EXPECT_EQ(reminder->m_title, "Water the plants");
  EXPECT_EQ(backend.setReminderProp("nonsense", std::string("x")), 0);
  EXPECT_EQ(takeCode(), kInvalidArgument);
  EXPECT_EQ(backend.setReminderProp("calendartitle", std::string("Nowhere")), 0);
  EXPECT_EQ(takeCode(), kCalendarUidNotFound);
}

// Reading

TEST_F(Reminders, AreNotReadWhenNoneIsOpen) { expectNone(get("title"), kNoReminderToGetProperty); }

TEST_F(Reminders, WantAPropertyToRead) {
  openNewReminder();
  expectNone(get(std::nullopt), kPropertyRequired);
}

TEST_F(Reminders, ReadTheirDueDateWithSecondsAndOffset) {
  openNewReminder();
  expectNone(get("duedate"));
  backend.setReminderProp("duedate", at(7, 5, 7, 30, 15));
  expectText(get("DueDate"), "2026-07-05 09:30:15 +0200");
  backend.setReminderProp("duedate", at(11, 5, 8, 30, 15));
  expectText(get("duedate"), "2026-11-05 09:30:15 +0100");
}

TEST_F(Reminders, ReadADueDateWithoutATimeAsMidnight) {
  const auto reminder = openNewReminder();
  reminder->m_due.emplace();
  expectNone(get("duedate"));
  reminder->m_due->year = 2026;
  reminder->m_due->month = 11;
  reminder->m_due->day = 5;
  expectText(get("duedate"), "2026-11-05 00:00:00 +0100");
}

TEST_F(Reminders, ReadTheirCompletion) {
  const auto reminder = openNewReminder();
  expectNone(get("completeddate"));
  expectText(get("iscompleted"), "False");
  reminder->m_completionDate = noon;
  expectText(get("completeddate"), "2026-11-05 12:00:00 +0100");
  expectText(get("iscompleted"), "True");
}

TEST_F(Reminders, ReadTheirPriorityAsACapitalisedWord) {
  const auto reminder = openNewReminder();
  const char* const words[] = {"None", "High", "High", "High", "High", "Medium", "Low", "Low", "Low", "Low"};
  for (int priority = 0; priority < 10; ++priority) {
    reminder->m_priority = priority;
    expectText(get("priority"), words[priority]);
  }
  for (const int priority : {10, -1}) {
    reminder->m_priority = priority;
    expectNone(get("priority"));
  }
}

TEST_F(Reminders, ReadTheirTexts) {
  const auto reminder = openNewReminder();
  reminder->m_notes = "All of them";
  reminder->m_title = "Water the plants";
  reminder->m_externalIdentifier = "7@example.org";
  reminder->m_itemIdentifier = "item-7";
  expectText(get("notes"), "All of them");
  expectText(get("title"), "Water the plants");
  expectText(get("externaluid"), "7@example.org");
  expectText(get("uid"), "item-7");
}

TEST_F(Reminders, SayWhetherTheyHaveAlarms) {
  const auto reminder = openNewReminder();
  expectText(get("hasalarms"), "False");
  expectText(get("hasalarm"), "False");
  reminder->m_alarms.push_back(std::make_shared<fakes::FakeAlarm>());
  expectText(get("hasalarms"), "True");
  expectText(get("hasalarm"), "True");
}

TEST_F(Reminders, HandOtherPropertiesOnToTheSharedGetter) {
  openNewReminder()->m_calendar = store().m_calendars.back();
  expectText(get("calendartitle"), "Reminders");
  expectNone(get("startdate"), kInvalidProperty);
}

}  // namespace
}  // namespace orlocal
