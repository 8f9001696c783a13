#include <thread>

#include "backend/legacy/legacy_fixture.h"

namespace orlocal {
namespace {

class LegacyState : public Legacy {
 protected:
  void fillEverySlot() {
    backend.m_calendar = framework->calendar();
    backend.m_event = framework->event();
    backend.m_task = framework->task();
    backend.m_alarm = framework->alarm();
    backend.m_attendee = somebody();
    backend.m_recurrencerule = framework->initDailyRecurrenceWithInterval(1, nullptr);
    backend.m_recurrenceend = framework->recurrenceEndWithOccurrenceCount(1);
    backend.m_taskPredicate = framework->defaultCalendarStore()->taskPredicateWithCalendars({});
    backend.m_eventPredicate =
        framework->defaultCalendarStore()->eventPredicateWithStartDate(at(11, 1, 0), at(11, 2, 0), {});
  }
};

TEST_F(LegacyState, ThereIsOneSharedInstanceAndNoSecondOne) {
  iCalFunctions* shared = iCalFunctions::sharedICalFunctions();
  ASSERT_NE(shared, nullptr);
  EXPECT_EQ(iCalFunctions::sharedICalFunctions(), shared);
  EXPECT_EQ(iCalFunctions::allocWithZone(), nullptr);
}

TEST_F(LegacyState, EveryThreadGetsTheSameInstance) {
  iCalFunctions* other = nullptr;
  std::thread([&] { other = iCalFunctions::sharedICalFunctions(); }).join();
  EXPECT_EQ(other, iCalFunctions::sharedICalFunctions());
}

TEST_F(LegacyState, InitEmptiesTheNineSlotsAndLeavesTheErrorString) {
  fillEverySlot();
  backend.lastErrorString = "kept";
  backend.init();
  EXPECT_EQ(backend.m_calendar, nullptr);
  EXPECT_EQ(backend.m_event, nullptr);
  EXPECT_EQ(backend.m_task, nullptr);
  EXPECT_EQ(backend.m_alarm, nullptr);
  EXPECT_EQ(backend.m_attendee, nullptr);
  EXPECT_EQ(backend.m_recurrencerule, nullptr);
  EXPECT_EQ(backend.m_recurrenceend, nullptr);
  EXPECT_EQ(backend.m_taskPredicate, nullptr);
  EXPECT_EQ(backend.m_eventPredicate, nullptr);
  EXPECT_EQ(backend.lastErrorString, "kept");
}

TEST_F(LegacyState, ReleasingItemsClearsAllButTheRecurrenceEnd) {
  fillEverySlot();
  backend.releaseItems();
  EXPECT_EQ(backend.m_calendar, nullptr);
  EXPECT_EQ(backend.m_event, nullptr);
  EXPECT_EQ(backend.m_task, nullptr);
  EXPECT_EQ(backend.m_alarm, nullptr);
  EXPECT_EQ(backend.m_attendee, nullptr);
  EXPECT_EQ(backend.m_recurrencerule, nullptr);
  EXPECT_EQ(backend.m_taskPredicate, nullptr);
  EXPECT_EQ(backend.m_eventPredicate, nullptr);
  EXPECT_NE(backend.m_recurrenceend, nullptr);
}

TEST_F(LegacyState, MakingTheBackEndAsksForNoStore) {
  platform->m_calFramework = nullptr;  // asking for it now would throw
  LegacyBackEnd other;
  EXPECT_NO_THROW(other.init());
}

TEST_F(LegacyState, EveryAccessAsksForTheStoreAnew) {
  EXPECT_EQ(backend.getObjectCount("calendar"), 3);
  auto other = std::make_shared<fakes::FakeEventStore>();
  other->m_calendars.clear();
  other->addCalendar("Only");
  useStore(other);
  EXPECT_EQ(backend.getObjectCount("calendar"), 1);
}

TEST_F(LegacyState, TheLastErrorStringStaysUntilItIsReset) {
  backend.lastErrorString = "a reason";
  EXPECT_EQ(backend.getLastErrorString(), "a reason");
  EXPECT_EQ(backend.resetLastErrorString(), 0);
  EXPECT_EQ(backend.getLastErrorString(), std::nullopt);
}

TEST_F(LegacyState, GetCalendarsGivesNothing) { EXPECT_EQ(backend.getCalendars(), std::nullopt); }

struct NamedColorRow {
  const char* name;
  Color color;
};

class LegacyColors : public testing::TestWithParam<NamedColorRow> {};

TEST_P(LegacyColors, AColorIsFoundByItsName) {
  EXPECT_EQ(iCalFunctions::colorFromString(GetParam().name), GetParam().color);
}

INSTANTIATE_TEST_SUITE_P(Table, LegacyColors,
                         testing::Values(NamedColorRow{"black", Color::calibratedWhite(0)},
                                         NamedColorRow{"blue", Color::calibratedRgb(0, 0, 1)},
                                         NamedColorRow{"brown", Color::calibratedRgb(0.6, 0.4, 0.2)},
                                         NamedColorRow{"clear", Color::calibratedWhite(0, 0)},
                                         NamedColorRow{"cyan", Color::calibratedRgb(0, 1, 1)},
                                         NamedColorRow{"darkgray", Color::calibratedWhite(1.0 / 3)},
                                         NamedColorRow{"DarkGray", Color::calibratedWhite(1.0 / 3)},
                                         NamedColorRow{"gray", Color::calibratedWhite(0.5)},
                                         NamedColorRow{"green", Color::calibratedRgb(0, 1, 0)},
                                         NamedColorRow{"lightgray", Color::calibratedWhite(2.0 / 3)},
                                         NamedColorRow{"magenta", Color::calibratedRgb(1, 0, 1)},
                                         NamedColorRow{"orange", Color::calibratedRgb(1, 0.5, 0)},
                                         NamedColorRow{"purple", Color::calibratedRgb(0.5, 0, 0.5)},
                                         NamedColorRow{"red", Color::calibratedRgb(1, 0, 0)},
                                         NamedColorRow{"white", Color::calibratedWhite(1)},
                                         NamedColorRow{"yellow", Color::calibratedRgb(1, 1, 0)}));

TEST_F(LegacyState, OtherColorNamesGiveNothing) {
  EXPECT_EQ(iCalFunctions::colorFromString("grey"), std::nullopt);
  EXPECT_EQ(iCalFunctions::colorFromString(std::nullopt), std::nullopt);
}

}  // namespace
}  // namespace orlocal
