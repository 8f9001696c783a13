#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class State : public BackendTest {
 protected:
  static std::vector<std::string> titles(const std::optional<EKCalendarArray>& calendars) {
    std::vector<std::string> found;
    for (const auto& calendar : calendars.value_or(EKCalendarArray())) {
      found.push_back(calendar->title().value_or(""));
    }
    return found;
  }
};

TEST_F(State, IsSharedByTheWholeProcess) {
  auto* const shared = iCalEKFunctions::sharedICalFunctions();
  ASSERT_NE(shared, nullptr);
  EXPECT_EQ(iCalEKFunctions::sharedICalFunctions(), shared);
}

TEST_F(State, IsNeverAllocatedTwice) {
  iCalEKFunctions::sharedICalFunctions();
  EXPECT_EQ(iCalEKFunctions::allocWithZone(), nullptr);
}

TEST_F(State, IsInitialisedWhenItIsFirstShared) {
  EXPECT_EQ(iCalEKFunctions::sharedICalFunctions()->getObjectCount("calendar"), 1);
}

TEST_F(State, StartsWithAStoreForEventsAndRemindersAndNothingElse) {
  EXPECT_EQ(kit->m_mask, 3u);
  EXPECT_EQ(backend.m_ekEventStore, kit->m_store);
  EXPECT_EQ(backend.m_AddressBook, addressBook.get());
  EXPECT_THAT(filledSlots(), IsEmpty());
  EXPECT_EQ(backend.getLastErrorString(), std::nullopt);
}

TEST_F(State, IsEmptiedByInit) {
  fillSlots();
  backend.init();
  EXPECT_THAT(filledSlots(), IsEmpty());
}

TEST_F(State, AnswersWhenTheStoreCannotBeOpened) {
  store().m_answers = false;
  backend.init();
  EXPECT_EQ(backend.getObjectCount("calendar"), 0);
  EXPECT_EQ(takeCode(), 0);
  expectFailed(backend.openCalendarAt(1), kIndexOutOfBounds);
  expectFailed(backend.openCalendarWithUID("x"), kCalendarUidNotFound);
  expectFailed(backend.openEventWithUID("x", std::nullopt), kItemNotFound);
  expectFailed(backend.openReminderWithUID("x"), kReminderUidNotFound);
  expectFailed(backend.openReminderAt(1), kIndexOutOfBounds);
  expectFailed(backend.fetchEventsWithStartDate(at(1, 1, 0), at(2, 1, 0), std::nullopt, std::nullopt),
               kCalendarArrayNotCreated);
  expectFailed(backend.saveItem("event", std::nullopt), kEventNotSaved);
  expectFailed(backend.saveItem("reminder", std::nullopt), kReminderNotSaved);
  expectFailed(backend.saveItem("reminderlist", std::nullopt), kCalendarNotSaved);
}

TEST_F(State, ReleasesItsItemsInOrder) {
  fillSlots();
  backend.releaseItems();
  EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder));
  EXPECT_THAT(filledSlots(), IsEmpty());
}

TEST_F(State, KeepsStoreAndAddressBookWhenItReleasesItsItems) {
  backend.releaseItems();
  EXPECT_EQ(backend.m_ekEventStore, kit->m_store);
  EXPECT_EQ(backend.m_AddressBook, addressBook.get());
}

TEST_F(State, KeepsTheLastErrorStringUntilItIsReset) {
  backend.lastErrorString = "The store has gone.";
  backend.releaseItems();
  EXPECT_EQ(backend.getLastErrorString(), "The store has gone.");
  EXPECT_EQ(backend.resetLastErrorString(), 0);
  EXPECT_EQ(backend.getLastErrorString(), std::nullopt);
}

TEST_F(State, HasNoListOfCalendars) { expectNone(backend.getCalendars()); }

TEST_F(State, FindsTheCalendarsThatAreNamed) {
  store().addCalendar("Work");
  EXPECT_THAT(titles(backend.calendarArrayFromString("Work\rCalendar", "calendar")), ElementsAre("Work", "Calendar"));
  EXPECT_EQ(takeCode(), 0);
}

TEST_F(State, TakesEveryNewlineForASeparatorOfNames) {
  store().addCalendar("Work");
  for (const char* names : {"Work\nCalendar", "Work\vCalendar",
                            "Work\xE2\x80\xA9"
                            "Calendar"}) {
    EXPECT_THAT(titles(backend.calendarArrayFromString(names, "calendar")), ElementsAre("Work", "Calendar")) << names;
  }
}

TEST_F(State, FindsNamedListsWhateverTheTypeAskedFor) {
  EXPECT_THAT(titles(backend.calendarArrayFromString("Reminders", "calendar")), ElementsAre("Reminders"));
}

TEST_F(State, GivesNoCalendarsWhenOneNameIsUnknown) {
  EXPECT_EQ(backend.calendarArrayFromString("Calendar\rNowhere", "calendar"), std::nullopt);
  EXPECT_EQ(takeCode(), kCalendarUidNotFound);
}

TEST_F(State, ComparesNamesWithCase) {
  EXPECT_EQ(backend.calendarArrayFromString("calendar", "calendar"), std::nullopt);
  EXPECT_EQ(takeCode(), kCalendarUidNotFound);
}

TEST_F(State, TakesTheOpenCalendarWhenNoneIsNamed) {
  const auto calendar = openNewCalendar();
  for (const char* type : {"calendar", "reminderlist", "event"}) {
    EXPECT_THAT(backend.calendarArrayFromString(std::nullopt, type).value_or(EKCalendarArray()), ElementsAre(calendar));
  }
}

TEST_F(State, PrefersNamesToTheOpenCalendar) {
  openNewCalendar();
  EXPECT_THAT(titles(backend.calendarArrayFromString("Calendar", "calendar")), ElementsAre("Calendar"));
}

TEST_F(State, TakesAllOfAKindWhenNoneIsNamedOrOpen) {
  store().addCalendar("Work");
  EXPECT_THAT(titles(backend.calendarArrayFromString(std::nullopt, "Calendar")), ElementsAre("Calendar", "Work"));
  EXPECT_THAT(titles(backend.calendarArrayFromString(std::nullopt, "REMINDERLIST")), ElementsAre("Reminders"));
}

TEST_F(State, GivesNoCalendarsOfAnotherKindAndNoCode) {
  EXPECT_EQ(backend.calendarArrayFromString(std::nullopt, "event"), std::nullopt);
  EXPECT_EQ(backend.calendarArrayFromString(std::nullopt, std::nullopt), std::nullopt);
  EXPECT_EQ(takeCode(), 0);
}

TEST_F(State, KnowsColorsByName) {
  EXPECT_EQ(iCalEKFunctions::colorFromString("DarkGray"), Color::calibratedWhite(1.0 / 3));
  EXPECT_EQ(iCalEKFunctions::colorFromString("grey"), std::nullopt);
}

}  // namespace
}  // namespace orlocal
