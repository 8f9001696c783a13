#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

class Events : public BackendTest {
 protected:
  std::int32_t fetch(const OptionalText& calendars = std::nullopt, const OptionalText& uid = std::nullopt) {
    return backend.fetchEventsWithStartDate(at(11, 1, 0), at(12, 1, 0), uid, calendars);
  }
  OptionalText get(const OptionalText& property) { return backend.getEventAttribute(property, 1, std::nullopt); }
};

/// Answers queries with a list whose objects have gone.
class StoreWithoutItsEvent : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;
  std::shared_ptr<const EKEventArray> eventsMatchingPredicate(const std::shared_ptr<const EKPredicate>&) override {
    struct Gone : EKEventArray {
      std::size_t count() const override { return 1; }
      std::shared_ptr<EKEvent> objectAtIndex(std::size_t) const override { return nullptr; }
    };
    return std::make_shared<Gone>();
  }
};

/// Has no answer to a query.
class MuteStore : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;
  std::shared_ptr<const EKEventArray> eventsMatchingPredicate(const std::shared_ptr<const EKPredicate>&) override {
    return nullptr;
  }
};

/// Notes what a predicate is made of.
class PredicateNotingStore : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;
  std::shared_ptr<const EKPredicate> predicateForEvents(Date start, Date end,
                                                        const EKCalendarArray& calendars) override {
    m_start = start;
    m_end = end;
    for (const auto& calendar : calendars) { m_titles.push_back(calendar->title().value_or("")); }
    return m_next->predicateForEvents(start, end, calendars);
  }

  Date m_start, m_end;
  std::vector<std::string> m_titles;
};

// Fetching

TEST_F(Events, AreFetchedByAPredicateThatIsKept) {
  expectDone(fetch());
  EXPECT_EQ(filledSlots(), std::set<std::string>{"event predicate"});
}

TEST_F(Events, AreFetchedAfterAllItemsWereReleasedInOrder) {
  fillSlots();
  expectDone(fetch());
  EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder));
  EXPECT_EQ(filledSlots(), std::set<std::string>{"event predicate"});
}

TEST_F(Events, AreFetchedFromAllEventCalendarsOrTheNamedOnes) {
  store().addCalendar("Work");
  const auto noting = std::make_shared<PredicateNotingStore>(kit->m_store);
  backend.m_ekEventStore = noting;
  fetch();
  EXPECT_THAT(noting->m_titles, ElementsAre("Calendar", "Work"));
  EXPECT_EQ(noting->m_start, at(11, 1, 0));
  EXPECT_EQ(noting->m_end, at(12, 1, 0));
  noting->m_titles.clear();
  fetch("Work");
  EXPECT_THAT(noting->m_titles, ElementsAre("Work"));
}

TEST_F(Events, AreFetchedFromAllCalendarsEvenWhenOneWasOpen) {
  store().addCalendar("Work");
  backend.openCalendarWithTitle("Work");
  const auto noting = std::make_shared<PredicateNotingStore>(kit->m_store);
  backend.m_ekEventStore = noting;
  fetch();
  EXPECT_THAT(noting->m_titles, ElementsAre("Calendar", "Work"));
}

TEST_F(Events, AreNotNarrowedByAnIdentifier) {
  store().addEvent("Calendar", "first", at(11, 3, 9), at(11, 3, 10));
  store().addEvent("Calendar", "second", at(11, 4, 9), at(11, 4, 10));
  expectDone(fetch(std::nullopt, *store().m_events.front()->m_eventIdentifier));
  EXPECT_EQ(backend.getObjectCount("event"), 2);
}

TEST_F(Events, AreFetchedWithoutBoundsWhenNoneAreGiven) {
  const auto noting = std::make_shared<PredicateNotingStore>(kit->m_store);
  backend.m_ekEventStore = noting;
  expectDone(backend.fetchEventsWithStartDate(std::nullopt, std::nullopt, std::nullopt, std::nullopt));
  EXPECT_EQ(noting->m_start, distantPast());
  EXPECT_EQ(noting->m_end, distantFuture());
}

TEST_F(Events, AreNotFetchedFromAnUnknownCalendar) {
  fillSlots();
  expectFailed(fetch("Calendar\rNowhere"), kCalendarUidNotFound);
  EXPECT_THAT(filledSlots(), IsEmpty());
}

TEST_F(Events, AreNotFetchedFromNoCalendars) {
  store().m_calendars.clear();
  expectFailed(fetch(), kCalendarArrayNotCreated);
  EXPECT_THAT(filledSlots(), IsEmpty());
}

TEST_F(Events, AreNotFetchedWhenTheStoreMakesNoPredicate) {
  expectFailed(backend.fetchEventsWithStartDate(at(12, 1, 0), at(11, 1, 0), std::nullopt, std::nullopt),
               kEventPredicateNotCreated);
}

TEST_F(Events, AreNotFetchedWhileAnOlderCodeStands) {
  g_llasterror = kItemNotFound;
  expectFailed(fetch(), kItemNotFound);
}

// Opening

TEST_F(Events, OpenByIdentifier) {
  const auto event = store().addEvent("Calendar", "Review", at(11, 3, 9), at(11, 3, 10));
  fillSlots();
  expectDone(backend.openEventWithUID(event->m_eventIdentifier, at(11, 9, 9)));
  EXPECT_THAT(*released, ElementsAreArray(kReleaseOrder));
  EXPECT_EQ(filledSlots(), std::set<std::string>{"event"});
  EXPECT_EQ(backend.m_ekEvent->title(), "Review");
}

TEST_F(Events, ReportAnUnknownIdentifier) {
  fillSlots();
  expectFailed(backend.openEventWithUID("event-99", std::nullopt), kItemNotFound);
  EXPECT_THAT(filledSlots(), IsEmpty());
  expectFailed(backend.openEventWithUID(std::nullopt, std::nullopt), kItemNotFound);
}

TEST_F(Events, OpenByIndexOneAfterTheOther) {
  store().addEvent("Calendar", "second", at(11, 4, 9), at(11, 4, 10));
  store().addEvent("Calendar", "first", at(11, 3, 9), at(11, 3, 10));
  fetch();
  expectDone(backend.openEventAt(1));
  EXPECT_EQ(backend.m_ekEvent->title(), "first");
  expectDone(backend.openEventAt(2));
  EXPECT_EQ(backend.m_ekEvent->title(), "second");
  expectDone(backend.openEventAt(1));
  EXPECT_EQ(backend.m_ekEvent->title(), "first");
}

TEST_F(Events, DoNotOpenByIndexWithoutAFetch) {
  backend.m_ekCalendar = std::make_shared<fakes::FakeCalendar>();
  expectFailed(backend.openEventAt(1), kNoEventPredicate);
  EXPECT_EQ(filledSlots(), std::set<std::string>{"calendar"});
}

TEST_F(Events, DoNotOpenOutsideTheFetch) {
  store().addEvent("Calendar", "Review", at(11, 3, 9), at(11, 3, 10));
  fetch();
  for (const std::int32_t index : {0, 2, -1}) {
    expectFailed(backend.openEventAt(index), kIndexOutOfBounds);
    EXPECT_EQ(filledSlots(), std::set<std::string>{"event predicate"});
  }
}

TEST_F(Events, ReleaseWhatIsOpenInOrderAndKeepBothPredicatesWhenOneOpensByIndex) {
  fillSlots();
  backend.m_ekEventStore = std::make_shared<StoreWithoutItsEvent>(kit->m_store);
  backend.openEventAt(1);
  EXPECT_THAT(*released, ElementsAre("calendar", "alarm", "participant", "recurrence end", "recurrence rule",
                                     "reminder", "event"));
  EXPECT_EQ(filledSlots(), (std::set<std::string>{"event predicate", "reminder predicate"}));
}

TEST_F(Events, ReportTheOneThatHasGone) {
  fetch();
  backend.m_ekEventStore = std::make_shared<StoreWithoutItsEvent>(kit->m_store);
  expectFailed(backend.openEventAt(1), kItemNotFound);
}

TEST_F(Events, AreOutOfRangeWhenTheStoreHasNoAnswer) {
  fetch();
  backend.m_ekEventStore = std::make_shared<MuteStore>(kit->m_store);
  expectFailed(backend.openEventAt(1), kIndexOutOfBounds);
}

// Setting

TEST_F(Events, AreNotSetWhenNoneIsOpen) {
  expectFailed(backend.setEventProp("title", std::string("x")), kNoEventToSetProperty);
}

TEST_F(Events, WantAPropertyToSet) {
  openNewEvent();
  expectFailed(backend.setEventProp(std::nullopt, std::string("x")), kPropertyRequired);
}

TEST_F(Events, TakeDates) {
  const auto event = openNewEvent();
  expectDone(backend.setEventProp("StartDate", at(11, 3, 9)));
  expectDone(backend.setEventProp("enddate", at(11, 3, 10)));
  EXPECT_EQ(event->m_startDate, at(11, 3, 9));
  EXPECT_EQ(event->m_endDate, at(11, 3, 10));
  expectDone(backend.setEventProp("enddate", std::monostate()));
  EXPECT_EQ(event->m_endDate, std::nullopt);
}

TEST_F(Events, LastAllDayExactlyWhenTheTextIsTrue) {
  const auto event = openNewEvent();
  expectDone(backend.setEventProp("isallday", std::string("TRUE")));
  EXPECT_TRUE(event->m_allDay);
  for (const char* value : {"False", "1", "yes", "true ", ""}) {
    event->m_allDay = true;
    expectDone(backend.setEventProp("isallday", std::string(value)));
    EXPECT_FALSE(event->m_allDay) << value;
  }
}

TEST_F(Events, TakeALocation) {
  const auto event = openNewEvent();
  expectDone(backend.setEventProp("LOCATION", std::string("Room 4")));
  EXPECT_EQ(event->m_location, "Room 4");
}

TEST_F(Events, HandOtherPropertiesOnInLowerCase) {
  const auto event = openNewEvent();
  expectDone(backend.setEventProp("Title", std::string("Review")));
  EXPECT_EQ(event->m_title, "Review");
}

TEST_F(Events, GiveZeroWhateverTheSharedSetterReports) {
  openNewEvent();
  EXPECT_EQ(backend.setEventProp("nonsense", std::string("x")), 0);
  EXPECT_EQ(takeCode(), kInvalidArgument);
  EXPECT_EQ(backend.setEventProp("calendaruid", std::string("calendar-99")), 0);
  EXPECT_EQ(takeCode(), kCalendarUidNotFound);
}

// Reading

TEST_F(Events, AreNotReadWhenNoneIsOpen) { expectNone(get("title"), kNoEventToGetProperty); }

TEST_F(Events, WantAPropertyToRead) {
  openNewEvent();
  expectNone(get(std::nullopt), kPropertyRequired);
}

TEST_F(Events, ReadTheirDatesInTheDefaultZone) {
  const auto event = openNewEvent();
  event->m_startDate = at(11, 3, 9, 30, 15);
  event->m_endDate = at(7, 3, 9);
  event->m_lastModifiedDate = at(11, 2, 8);
  expectText(get("startdate"), "2026-11-03 10:30:15 +0100");
  expectText(get("EndDate"), "2026-07-03 11:00:00 +0200");
  expectText(get("modifieddate"), "2026-11-02 09:00:00 +0100");
}

TEST_F(Events, ReadDatesThatTheyLackAsNothing) {
  openNewEvent();
  for (const char* property : {"startdate", "enddate", "modifieddate"}) { expectNone(get(property)); }
}

TEST_F(Events, ReadTheirOccurrenceOnlyWhenTheyRepeat) {
  const auto event = openNewEvent();
  event->m_startDate = at(11, 3, 9);
  event->m_occurrenceDate = at(11, 2, 9);
  expectNone(get("occurrence"));
  event->m_rules.emplace();
  expectNone(get("occurrence"));
  event->m_rules->push_back(std::make_shared<fakes::FakeRecurrenceRule>());
  expectText(get("occurrence"), "2026-11-02 10:00:00 +0100");
}

TEST_F(Events, ReadTheAbbreviationOfTheirZone) {
  const auto event = openNewEvent();
  expectNone(get("timezone"));
  event->m_timeZone = std::make_shared<fakes::FakeTimeZone>(fakes::FakeTimeZone::berlin(at(7, 1, 0)));
  expectText(get("timezone"), "CEST");
}

TEST_F(Events, ReadTheirTexts) {
  const auto event = openNewEvent();
  event->m_eventIdentifier = "event-7";
  event->m_itemIdentifier = "item-7";
  event->m_externalIdentifier = "7@example.org";
  event->m_location = "Room 4";
  event->m_notes = "Bring cake";
  event->m_title = "Review";
  event->m_url = "https://example.org/7";
  expectText(get("uid"), "event-7");
  expectText(get("externaluid"), "7@example.org");
  expectText(get("location"), "Room 4");
  expectText(get("notes"), "Bring cake");
  expectText(get("title"), "Review");
  expectText(get("url"), "https://example.org/7");
}

TEST_F(Events, ReadTextsThatTheyLackAsNothing) {
  openNewEvent();
  for (const char* property : {"uid", "externaluid", "location", "notes", "title", "url"}) {
    expectNone(get(property));
  }
}

TEST_F(Events, SayWhatTheyAre) {
  const auto event = openNewEvent();
  for (const char* property : {"isallday", "isdetached", "isrecurring", "hasattendees", "hasalarms", "hasalarm"}) {
    expectText(get(property), "False");
  }
  event->m_allDay = true;
  event->m_detached = true;
  event->m_rules.emplace();
  event->m_attendees.emplace();
  event->m_alarms.push_back(std::make_shared<fakes::FakeAlarm>());
  for (const char* property : {"isallday", "isdetached", "isrecurring", "hasattendees", "hasalarms", "hasalarm"}) {
    expectText(get(property), "True");
  }
}

TEST_F(Events, CountTheirAttendees) {
  const auto event = openNewEvent();
  expectText(get("attendeecount"), "0");
  event->m_attendees.emplace(3, std::make_shared<fakes::FakeParticipant>());
  expectText(get("attendeecount"), "3");
}

TEST_F(Events, HandOtherPropertiesOnToTheSharedGetter) {
  const auto event = openNewEvent();
  event->m_calendar = store().m_calendars.front();
  expectText(get("calendartitle"), "Calendar");
  expectText(get("nextalarmdate"), "");
  expectNone(get("nonsense"), kInvalidProperty);
}

}  // namespace
}  // namespace orlocal
