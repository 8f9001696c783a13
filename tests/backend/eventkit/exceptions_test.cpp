#include "backend_fixture.h"

namespace orlocal {
namespace {

/// A back end whose store has gone after it was opened.
class Exceptions : public BackendTest {
 protected:
  Exceptions() { backend.m_ekEventStore = unusable; }

  void expectCaught() {
    EXPECT_EQ(takeCode(), kPlatformException);
    EXPECT_EQ(backend.getLastErrorString(), UnusableStore::kReason);
    backend.resetLastErrorString();
  }

  std::shared_ptr<UnusableStore> unusable = std::make_shared<UnusableStore>(kit->m_store);
};

TEST_F(Exceptions, AreCaughtBySaveItemWhichGivesZero) {
  openNewReminder();
  openNewCalendar();
  const auto event = openNewEvent();
  event->m_startDate = at(11, 3, 9);
  event->m_endDate = at(11, 3, 10);
  for (const char* type : {"calendar", "reminderlist", "task", "reminder", "event"}) {
    EXPECT_EQ(backend.saveItem(type, std::nullopt), 0) << type;
    expectCaught();
  }
}

TEST_F(Exceptions, AreCaughtByRemoveItemWhichGivesZero) {
  for (const char* type : {"calendar", "reminderlist", "task", "reminder", "event"}) {
    EXPECT_EQ(backend.removeItem(type, "x", std::nullopt, "this"), 0) << type;
    expectCaught();
  }
}

TEST_F(Exceptions, AreCaughtByOpenEventWithUid) {
  EXPECT_EQ(backend.openEventWithUID("x", std::nullopt), -1);
  expectCaught();
}

TEST_F(Exceptions, AreCaughtByFetchEvents) {
  EXPECT_EQ(backend.fetchEventsWithStartDate(at(11, 1, 0), at(12, 1, 0), std::nullopt, std::nullopt), -1);
  expectCaught();
}

TEST_F(Exceptions, AreCaughtBySetCalendarItemProp) {
  const auto event = openNewEvent();
  EXPECT_EQ(backend.setCalendarItemProp("calendaruid", std::string("x"), event.get()), -1);
  expectCaught();
  EXPECT_EQ(backend.setCalendarItemProp("calendartitle", std::string("x"), event.get()), -1);
  expectCaught();
}

TEST_F(Exceptions, LeaveZeroAndTheirCodeWhenAPropertyIsHandedOn) {
  openNewEvent();
  EXPECT_EQ(backend.setEventProp("calendaruid", std::string("x")), 0);
  expectCaught();
  openNewReminder();
  EXPECT_EQ(backend.setReminderProp("calendaruid", std::string("x")), 0);
  expectCaught();
}

TEST_F(Exceptions, AreCaughtByGetCalendarAttribute) {
  class UnreadableCalendar : public fakes::FakeCalendar {
   public:
    OptionalText title() const override { UnusableStore::raise(); }
  };
  backend.m_ekCalendar = std::make_shared<UnreadableCalendar>();
  EXPECT_EQ(backend.getCalendarAttribute("title", 1, std::nullopt), "!!ERROR!!");
  expectCaught();
}

TEST_F(Exceptions, ReplaceTheReasonOfTheLastOne) {
  backend.lastErrorString = "An older reason.";
  backend.openEventWithUID("x", std::nullopt);
  expectCaught();
}

TEST_F(Exceptions, KeepTheirReasonThroughLaterCalls) {
  backend.openEventWithUID("x", std::nullopt);
  backend.m_ekEventStore = kit->m_store;
  takeCode();
  expectDone(backend.openCalendarAt(1));
  EXPECT_EQ(backend.getLastErrorString(), UnusableStore::kReason);
}

TEST_F(Exceptions, LeaveEveryOtherMethod) {
  backend.m_ekEventPredicate = std::make_shared<EKPredicate>();
  backend.m_ekReminderPredicate = std::make_shared<EKPredicate>();
  EXPECT_THROW(backend.calendarArrayFromString("x", "calendar"), Exception);
  EXPECT_THROW(backend.openEventAt(1), Exception);
  EXPECT_THROW(backend.openReminderAt(1), Exception);
  EXPECT_THROW(backend.getObjectCount("calendar"), Exception);
  EXPECT_THROW(backend.getObjectCount("event"), Exception);
  EXPECT_THROW(backend.getObjectCount("reminder"), Exception);
  EXPECT_THROW(backend.getCalendarWithTitle("x"), Exception);
  EXPECT_THROW(backend.openCalendarAt(1), Exception);
  EXPECT_THROW(backend.openReminderListAt(1), Exception);
  EXPECT_THROW(backend.openCalendarWithUID("x"), Exception);
  EXPECT_THROW(backend.openCalendarWithTitle("x"), Exception);
  EXPECT_THROW(backend.openReminderWithUID("x"), Exception);
  EXPECT_THROW(backend.fetchReminders(std::nullopt, std::nullopt, std::nullopt), Exception);
  EXPECT_THROW(backend.fetchRemindersWithCalendars(std::nullopt), Exception);
  EXPECT_EQ(takeCode(), 0);
  EXPECT_EQ(backend.getLastErrorString(), std::nullopt);
}

}  // namespace
}  // namespace orlocal
