#include "backend_fixture.h"

namespace orlocal {
namespace {

class Count : public BackendTest {
 protected:
  void expectCount(const OptionalText& type, std::int32_t count) {
    EXPECT_EQ(backend.getObjectCount(type), count);
    EXPECT_EQ(takeCode(), 0);
  }
  void expectNoCount(const OptionalText& type, std::int64_t code) { expectFailed(backend.getObjectCount(type), code); }
};

TEST_F(Count, CountsCalendarsAndLists) {
  store().addCalendar("Team");
  expectCount("Calendar", 2);
  expectCount("REMINDERLIST", 1);
}

TEST_F(Count, CountsTheEventsOfTheFetch) {
  expectNoCount("event", kNoEventsFetched);
  backend.fetchEventsWithStartDate(at(11, 1, 0), at(12, 1, 0), std::nullopt, std::nullopt);
  expectCount("event", 0);
  store().addEvent("Calendar", "Review", at(11, 3, 9), at(11, 3, 10));
  expectCount("Event", 1);
}

TEST_F(Count, CountsTheRemindersOfTheFetch) {
  for (const char* type : {"task", "reminder"}) { expectNoCount(type, kNoRemindersFetched); }
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  expectCount("task", 0);
  store().addReminder("Reminders", "Water the plants");
  expectCount("Task", 1);
  expectCount("reminder", 1);
}

TEST_F(Count, WaitsForTheReminders) {
  store().addReminder("Reminders", "Water the plants");
  store().m_runLoop = runLoop;
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  expectCount("reminder", 1);
  EXPECT_EQ(runLoop->m_runs, 1);
}

TEST_F(Count, CountsNoArrayAsZero) {
  class MuteStore : public fakes::ForwardingEventStore {
   public:
    using ForwardingEventStore::ForwardingEventStore;
    std::shared_ptr<const EKEventArray> eventsMatchingPredicate(const std::shared_ptr<const EKPredicate>&) override {
      return nullptr;
    }
    void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>&,
                                         ReminderCompletion completion) override {
      completion(nullptr);
    }
  };
  backend.m_ekEventPredicate = std::make_shared<EKPredicate>();
  backend.m_ekReminderPredicate = std::make_shared<EKPredicate>();
  backend.m_ekEventStore = std::make_shared<MuteStore>(kit->m_store);
  expectCount("event", 0);
  expectCount("reminder", 0);
}

TEST_F(Count, LosesTheFetchOfOneKindToThatOfTheOther) {
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  backend.fetchEventsWithStartDate(at(11, 1, 0), at(12, 1, 0), std::nullopt, std::nullopt);
  expectNoCount("reminder", kNoRemindersFetched);
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  expectNoCount("event", kNoEventsFetched);
}

TEST_F(Count, CountsTheAttendeesOfTheEvent) {
  expectNoCount("attendee", kNoEventToCount);
  const auto event = openNewEvent();
  expectCount("attendee", 0);
  event->m_attendees.emplace(2, std::make_shared<fakes::FakeParticipant>());
  expectCount("Attendee", 2);
}

TEST_F(Count, CountsTheAlarmsOfTheEventBeforeThoseOfTheReminder) {
  expectNoCount("alarm", kNoItemToCountAlarms);
  const auto reminder = openNewReminder();
  expectCount("alarm", 0);
  reminder->m_alarms = {std::make_shared<fakes::FakeAlarm>(), std::make_shared<fakes::FakeAlarm>()};
  expectCount("Alarm", 2);
  const auto event = openNewEvent();
  expectCount("alarm", 0);
  event->m_alarms = {std::make_shared<fakes::FakeAlarm>()};
  expectCount("alarm", 1);
}

TEST_F(Count, KnowsNoOtherType) {
  for (const OptionalText& type :
       {OptionalText("nonsense"), OptionalText(""), OptionalText("recurrencerule"), OptionalText()}) {
    expectNoCount(type, kInvalidType);
  }
}

TEST_F(Count, ChangesNoSlot) {
  backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt);
  const auto reminders = backend.m_ekReminderPredicate;
  backend.fetchEventsWithStartDate(at(11, 1, 0), at(12, 1, 0), std::nullopt, std::nullopt);
  const auto events = backend.m_ekEventPredicate;
  fillSlots();
  backend.m_ekReminderPredicate = reminders;
  backend.m_ekEventPredicate = events;
  released->clear();
  for (const char* type : {"calendar", "reminderlist", "event", "task", "attendee", "alarm", "nonsense"}) {
    backend.getObjectCount(type);
  }
  EXPECT_TRUE(released->empty());
  EXPECT_EQ(filledSlots().size(), 9u);
}

}  // namespace
}  // namespace orlocal
