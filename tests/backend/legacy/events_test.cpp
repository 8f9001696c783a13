#include "backend/legacy/legacy_fixture.h"

namespace orlocal {
namespace {

class LegacyEvents : public Legacy {
 protected:
  std::int32_t fetch(const OptionalText& names = std::nullopt, const OptionalText& uid = std::nullopt) {
    return backend.fetchEventsWithStartDate(at(11, 1, 0), at(11, 30, 0), uid, names);
  }
  std::shared_ptr<CalRecurrenceRule> daily() { return framework->initDailyRecurrenceWithInterval(1, nullptr); }
};

/// A store that throws whatever it is asked about events.
struct StoreThatFindsNothing : fakes::ForwardingEventStore {
  using ForwardingEventStore::ForwardingEventStore;
  std::shared_ptr<const EKPredicate> predicateForEvents(Date, Date, const EKCalendarArray&) override { throw broken(); }
  std::shared_ptr<const EKPredicate> predicateForOneEvent(Date, Date, const EKCalendarArray&,
                                                          std::string_view) override {
    throw broken();
  }
  std::shared_ptr<EKEvent> eventWithIdentifier(std::string_view) override { throw broken(); }
  std::shared_ptr<EKEvent> occurrenceOfEvent(std::string_view, Date) override { throw broken(); }
  std::shared_ptr<EKCalendar> calendarWithIdentifier(std::string_view) override { throw broken(); }
};

// Fetching

TEST_F(LegacyEvents, NoNamesFetchFromAllCalendarsEvenWhenOneIsOpen) {
  addEvent("Work", "One", at(11, 3, 9), at(11, 3, 10));
  addEvent("Home", "Two", at(11, 3, 9), at(11, 3, 10));
  backend.openCalendarWithTitle("Work");
  EXPECT_EQ(fetch(), 0);
  EXPECT_EQ(backend.getObjectCount("event"), 2);
}

TEST_F(LegacyEvents, NamesNarrowTheFetch) {
  addEvent("Work", "One", at(11, 3, 9), at(11, 3, 10));
  addEvent("Home", "Two", at(11, 3, 9), at(11, 3, 10));
  EXPECT_EQ(fetch("Home"), 0);
  EXPECT_EQ(backend.getObjectCount("event"), 1);
}

TEST_F(LegacyEvents, AUidNarrowsTheFetchToOneEvent) {
  addEvent("Work", "One", at(11, 3, 9), at(11, 3, 10));
  const auto uid = addEvent("Work", "Two", at(11, 3, 9), at(11, 3, 10));
  EXPECT_EQ(fetch(std::nullopt, uid), 0);
  EXPECT_EQ(backend.getObjectCount("event"), 1);
  backend.openEventAt(1);
  EXPECT_EQ(eventAttribute("title"), "Two");
}

TEST_F(LegacyEvents, AbsentDatesDoNotBoundTheFetch) {
  addEvent("Work", "Old", at(1, 3, 9), at(1, 3, 10));
  EXPECT_EQ(backend.fetchEventsWithStartDate(std::nullopt, std::nullopt, std::nullopt, std::nullopt), 0);
  EXPECT_EQ(backend.getObjectCount("event"), 1);
}

TEST_F(LegacyEvents, AFetchReleasesWhatWasOpen) {
  openTask();
  fetch();
  EXPECT_EQ(backend.m_task, nullptr);
}

TEST_F(LegacyEvents, AFetchDropsTheTasksFetchedBefore) {
  backend.fetchTasks(std::nullopt, std::nullopt, std::nullopt);
  fetch();
  EXPECT_EQ(backend.m_taskPredicate, nullptr);
}

TEST_F(LegacyEvents, AnUnknownNameStopsTheFetch) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(fetch("Work\rNowhere"), -1); }), 9013);
  EXPECT_EQ(backend.m_eventPredicate, nullptr);
}

TEST_F(LegacyEvents, AStoreWithoutCalendarsGives9004) {
  store->m_calendars.clear();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(fetch(), -1); }), 9004);
}

TEST_F(LegacyEvents, ARangeThatMakesNoPredicateGives9003) {
  EXPECT_EQ(codeOf([&] {
              EXPECT_EQ(backend.fetchEventsWithStartDate(at(11, 3, 0), at(11, 2, 0), std::nullopt, std::nullopt), -1);
            }),
            9003);
}

TEST_F(LegacyEvents, AnExceptionWhileFetchingGives9999) {
  useStore(std::make_shared<StoreThatFindsNothing>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(fetch(), -1); }), 9999);
  EXPECT_EQ(backend.getLastErrorString(), "The store is gone.");
}

// Opening

TEST_F(LegacyEvents, OpensAnEventByUid) {
  openEvent();
  EXPECT_EQ(eventAttribute("title"), "Review");
}

TEST_F(LegacyEvents, OpensTheOccurrenceOfADate) {
  const auto uid = addEvent("Work", "Stand-up", at(11, 3, 9), at(11, 3, 10));
  store->m_events[0]->m_rules = {{behind<RecurrenceRuleFace>(daily())}};
  EXPECT_EQ(backend.openEventWithUID(uid, at(11, 5, 9)), 0);
  EXPECT_EQ(eventAttribute("startdate"), "2026-11-05 10:00:00 +0100");
}

TEST_F(LegacyEvents, OpeningByUidReleasesEverythingAndUnknownUidsGive9001) {
  openEvent();
  fetch();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventWithUID("nowhere", std::nullopt), -1); }), 9001);
  EXPECT_EQ(backend.m_event, nullptr);
  EXPECT_EQ(backend.m_eventPredicate, nullptr);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventWithUID(std::nullopt, std::nullopt), -1); }), 9001);
}

TEST_F(LegacyEvents, AnExceptionWhileOpeningByUidGives9999) {
  useStore(std::make_shared<StoreThatFindsNothing>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventWithUID("x", std::nullopt), -1); }), 9999);
  EXPECT_EQ(backend.getLastErrorString(), "The store is gone.");
}

TEST_F(LegacyEvents, KeepsThePredicateSoThatTheNextIndexOpens) {
  addEvent("Work", "One", at(11, 3, 9), at(11, 3, 10));
  addEvent("Work", "Two", at(11, 4, 9), at(11, 4, 10));
  fetch();
  ASSERT_EQ(backend.openEventAt(1), 0);
  EXPECT_EQ(eventAttribute("title"), "One");
  ASSERT_EQ(backend.openEventAt(2), 0);
  EXPECT_EQ(eventAttribute("title"), "Two");
}

TEST_F(LegacyEvents, OpeningByIndexNeedsAFetch) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventAt(1), -1); }), 9000);
  EXPECT_NE(backend.m_event, nullptr);
}

TEST_F(LegacyEvents, IndexesOutsideTheFetchGive9002) {
  addEvent("Work", "One", at(11, 3, 9), at(11, 3, 10));
  fetch();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventAt(0), -1); }), 9002);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventAt(2), -1); }), 9002);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventAt(-1), -1); }), 9002);
}

TEST_F(LegacyEvents, AnEventThatHasGoneMeanwhileGives9001) {
  struct Gone : EKEventArray {
    std::size_t count() const override { return 1; }
    std::shared_ptr<EKEvent> objectAtIndex(std::size_t) const override { return nullptr; }
  };
  struct Forgetful : fakes::ForwardingEventStore {
    using ForwardingEventStore::ForwardingEventStore;
    std::shared_ptr<const EKEventArray> eventsMatchingPredicate(const std::shared_ptr<const EKPredicate>&) override {
      return std::make_shared<Gone>();
    }
  };
  fetch();
  useStore(std::make_shared<Forgetful>(store));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.openEventAt(1), -1); }), 9001);
}

TEST_F(LegacyEvents, OpeningByIndexReleasesAllButThePredicates) {
  addEvent("Work", "One", at(11, 3, 9), at(11, 3, 10));
  fetch();
  backend.m_calendar = framework->calendar();
  backend.m_task = framework->task();
  backend.m_alarm = framework->alarm();
  backend.m_attendee = somebody();
  backend.m_recurrencerule = daily();
  backend.m_recurrenceend = framework->recurrenceEndWithOccurrenceCount(1);
  backend.m_taskPredicate = framework->defaultCalendarStore()->taskPredicateWithCalendars({});
  ASSERT_EQ(backend.openEventAt(1), 0);
  EXPECT_EQ(backend.m_calendar, nullptr);
  EXPECT_EQ(backend.m_task, nullptr);
  EXPECT_EQ(backend.m_alarm, nullptr);
  EXPECT_EQ(backend.m_attendee, nullptr);
  EXPECT_EQ(backend.m_recurrencerule, nullptr);
  EXPECT_EQ(backend.m_recurrenceend, nullptr);
  EXPECT_NE(backend.m_taskPredicate, nullptr);
  EXPECT_NE(backend.m_eventPredicate, nullptr);
}

// Setting

TEST_F(LegacyEvents, SetsItsOwnProperties) {
  openEvent();
  EXPECT_EQ(backend.setEventProp("StartDate", at(11, 5, 9)), 0);
  EXPECT_EQ(backend.setEventProp("enddate", at(11, 5, 11)), 0);
  EXPECT_EQ(backend.setEventProp("isallday", std::string("TRUE")), 0);
  EXPECT_EQ(backend.setEventProp("location", std::string("Room 1")), 0);
  EXPECT_EQ(event()->m_startDate, at(11, 5, 9));
  EXPECT_EQ(event()->m_endDate, at(11, 5, 11));
  EXPECT_TRUE(event()->m_allDay);
  EXPECT_EQ(event()->m_location, "Room 1");
  EXPECT_EQ(backend.setEventProp("isallday", std::string("yes")), 0);
  EXPECT_FALSE(event()->m_allDay);
}

TEST_F(LegacyEvents, SetsThePropertiesThatAllItemsShare) {
  openEvent();
  EXPECT_EQ(backend.setEventProp("Title", std::string("Renamed")), 0);
  EXPECT_EQ(backend.setEventProp("notes", std::string("Bring it")), 0);
  EXPECT_EQ(backend.setEventProp("url", std::string("https://example.org/a")), 0);
  EXPECT_EQ(event()->m_title, "Renamed");
  EXPECT_EQ(event()->m_notes, "Bring it");
  EXPECT_EQ(event()->m_url, "https://example.org/a");
  EXPECT_EQ(backend.setEventProp("notes", {}), 0);
  EXPECT_EQ(event()->m_notes, std::nullopt);
}

TEST_F(LegacyEvents, MovesToACalendarByUidOrTitle) {
  openEvent();
  EXPECT_EQ(backend.setEventProp("calendaruid", homeUid), 0);
  EXPECT_EQ(eventAttribute("calendartitle"), "Home");
  EXPECT_EQ(backend.setEventProp("calendartitle", std::string("Work")), 0);
  EXPECT_EQ(eventAttribute("calendaruid"), workUid);
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(LegacyEvents, AnUnknownCalendarGives9013AndMinusOneOnlyBelow) {
  openEvent();
  for (const char* property : {"calendaruid", "calendartitle"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setEventProp(property, std::string("nowhere")), 0); }), 9013);
    EXPECT_EQ(codeOf([&] {
                EXPECT_EQ(backend.setCalendarItemProp(property, std::string("nowhere"), backend.m_event.get()), -1);
              }),
              9013);
  }
  EXPECT_EQ(eventAttribute("calendartitle"), "Work");
}

TEST_F(LegacyEvents, AnUnknownPropertyGives9006AndYetZero) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setEventProp("colour", std::string("x")), 0); }), 9006);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setEventProp("occurrence", at(11, 3, 9)), 0); }), 9006);
}

TEST_F(LegacyEvents, SettingWithoutAnEventGives9000AndWithoutAProperty9005) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setEventProp("title", std::string("x")), -1); }), 9000);
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.setEventProp(std::nullopt, std::string("x")), -1); }), 9005);
}

TEST_F(LegacyEvents, AnExceptionWhileSettingASharedPropertyGives9999) {
  openEvent();
  useStore(std::make_shared<StoreThatFindsNothing>(store));
  EXPECT_EQ(codeOf([&] {
              EXPECT_EQ(backend.setCalendarItemProp("calendaruid", std::string("x"), backend.m_event.get()), -1);
            }),
            9999);
  EXPECT_EQ(backend.getLastErrorString(), "The store is gone.");
}

// Reading

TEST_F(LegacyEvents, ReadsItsOwnProperties) {
  const auto uid = openEvent();
  event()->m_location = "Room 1";
  EXPECT_EQ(eventAttribute("startdate"), "2026-11-03 10:00:00 +0100");
  EXPECT_EQ(eventAttribute("EndDate"), "2026-11-03 11:00:00 +0100");
  EXPECT_EQ(eventAttribute("uid"), uid);
  EXPECT_EQ(eventAttribute("location"), "Room 1");
  EXPECT_EQ(eventAttribute("isallday"), "False");
  EXPECT_EQ(eventAttribute("isdetached"), "False");
  EXPECT_EQ(eventAttribute("isrecurring"), "False");
  EXPECT_EQ(eventAttribute("hasattendees"), "False");
  EXPECT_EQ(eventAttribute("attendeecount"), "0");
  EXPECT_EQ(g_llasterror, 0);
}

TEST_F(LegacyEvents, ReadsARepeatingAndDetachedAllDayEventWithGuests) {
  openEvent();
  event()->m_allDay = true;
  event()->m_detached = true;
  backend.m_event->setRecurrenceRule(daily());
  event()->m_attendees.emplace(3, std::make_shared<fakes::FakeParticipant>());
  EXPECT_EQ(eventAttribute("isallday"), "True");
  EXPECT_EQ(eventAttribute("isdetached"), "True");
  EXPECT_EQ(eventAttribute("isrecurring"), "True");
  EXPECT_EQ(eventAttribute("hasattendees"), "True");
  EXPECT_EQ(eventAttribute("attendeecount"), "3");
  EXPECT_EQ(eventAttribute("occurrence"), "2026-11-03 10:00:00 +0100");
}

TEST_F(LegacyEvents, AnEmptyAttendeeListIsAListAllTheSame) {
  openEvent();
  event()->m_attendees.emplace();
  EXPECT_EQ(eventAttribute("hasattendees"), "True");
  EXPECT_EQ(eventAttribute("attendeecount"), "0");
}

TEST_F(LegacyEvents, TheOccurrenceOfASingleEventIsNothingWithoutACode) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(eventAttribute("occurrence"), std::nullopt); }), 0);
}

TEST_F(LegacyEvents, ReadsThePropertiesThatAllItemsShare) {
  openEvent();
  event()->m_notes = "Bring it";
  event()->m_url = "https://example.org/a";
  event()->m_lastModifiedDate = at(11, 2, 8);
  EXPECT_EQ(eventAttribute("calendartitle"), "Work");
  EXPECT_EQ(eventAttribute("calendaruid"), workUid);
  EXPECT_EQ(eventAttribute("datestamp"), "2026-11-02 09:00:00 +0100");
  EXPECT_EQ(eventAttribute("notes"), "Bring it");
  EXPECT_EQ(eventAttribute("title"), "Review");
  EXPECT_EQ(eventAttribute("url"), "https://example.org/a");
  EXPECT_EQ(eventAttribute("hasalarm"), "False");
}

TEST_F(LegacyEvents, ReadsAreEmptyWhereTheEventIs) {
  backend.newItem("event");
  for (const char* name : {"startdate", "enddate", "calendartitle", "calendaruid", "datestamp", "notes", "title", "url",
                           "uid", "location"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(eventAttribute(name), std::nullopt) << name; }), 0);
  }
}

TEST_F(LegacyEvents, TheNextAlarmDateIsEmptyTextWithoutAlarms) {
  openEvent();
  EXPECT_EQ(eventAttribute("nextalarmdate"), "");
}

TEST_F(LegacyEvents, TheNextAlarmDateIsADateWhenAnAlarmIsStillToCome) {
  openEvent();
  addAlarmTo(*event())->m_relativeOffset = -600;
  EXPECT_EQ(eventAttribute("hasalarm"), "True");
  EXPECT_EQ(eventAttribute("nextalarmdate"), "2026-11-03 09:50:00 +0100");
  event()->m_startDate = at(1, 1, 0);
  EXPECT_EQ(eventAttribute("nextalarmdate"), "");
}

TEST_F(LegacyEvents, AnUnknownPropertyReadsAsNothingWith9006) {
  openEvent();
  for (const char* name : {"modifieddate", "externaluid", "timezone", "hasalarms", "duedate"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(eventAttribute(name), std::nullopt) << name; }), 9006);
  }
}

TEST_F(LegacyEvents, ReadingWithoutAnEventGives9000AndWithoutAProperty9005) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(eventAttribute("title"), std::nullopt); }), 9000);
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(eventAttribute(std::nullopt), std::nullopt); }), 9005);
}

}  // namespace
}  // namespace orlocal
