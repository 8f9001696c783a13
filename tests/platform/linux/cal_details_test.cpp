#include "platform/cal_framework.h"
#include "platform/linux/store_fixture.h"
#include "store/import.h"

namespace orlocal {
namespace {

/// What the older platform's face of the store adds to its contract.
class CalDetails : public StoreFixture {
 protected:
  CalFramework& framework() {
    kit();
    return system->calFramework();
  }
  std::shared_ptr<CalCalendarStore> cal() { return framework().defaultCalendarStore(); }

  /// A daily event of three occurrences from the 2nd of November 2026, 9:00 in Berlin.
  std::string addSeries() {
    auto item = eventAt("Stand-up", 2026, 11, 2, 9);
    store::RecurrenceRule rule;
    rule.count = 3;
    item.recurrence.rules.push_back(rule);
    return put(item).identifier;
  }
  std::vector<std::string> titlesOfYear() {
    return titlesBetween(moment("2026-01-01 00:00:00 +0100"), moment("2026-12-31 00:00:00 +0100"));
  }

  std::optional<Error> error;
};

using testing::ElementsAre;

TEST_F(CalDetails, ListsEventCalendarsBeforeReminderLists) {
  std::vector<std::string> titles;
  for (const auto& calendar : cal()->calendars()) { titles.push_back(*calendar->title()); }
  EXPECT_THAT(titles, ElementsAre("Calendar", "Reminders"));
}

TEST_F(CalDetails, ANewCalendarHoldsEvents) {
  auto calendar = framework().calendar();
  calendar->setTitle("Club");
  ASSERT_TRUE(cal()->saveCalendar(calendar, error)) << error->localizedDescription;
  EXPECT_EQ(calendar->type(), "Local");
  std::vector<std::string> titles;
  for (const auto& each : eventCalendars()) { titles.push_back(*each->title()); }
  EXPECT_THAT(titles, ElementsAre("Calendar", "Club"));
}

TEST_F(CalDetails, ASubscribedCalendarSaysSo) {
  store::ImportOptions with;
  with.subscription = true;
  with.calendarTitle = "Feed";
  ASSERT_TRUE(store::importCalendarText(
      *otherStore(), "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nDTSTART:20261102T090000Z\nEND:VEVENT\nEND:VCALENDAR\n",
      "feed.ics", with));
  const auto feed = cal()->calendars()[1];
  EXPECT_EQ(feed->title(), "Feed");
  EXPECT_EQ(feed->type(), "Subscription");
  EXPECT_FALSE(feed->isEditable());
}

TEST_F(CalDetails, SavingAllOccurrencesKeepsTheBytesOfAUrl) {
  auto item = eventAt("Stand-up", 2026, 11, 2, 9);
  item.url = "https://example.org/a b";
  item.recurrence.rules.push_back(weekly());
  const auto uid = put(item).identifier;
  const auto second = cal()->eventWithUID(uid, moment("2026-11-09 09:00:00 +0100"));
  EXPECT_EQ(second->url(), "https://example.org/a%20b");
  second->setTitle("Changed");
  ASSERT_TRUE(cal()->saveEvent(second, CalSpan::kAllEvents, error));
  EXPECT_EQ((*otherStore()->event(uid))->url, "https://example.org/a b");
}

TEST_F(CalDetails, KeepsTheNotesOfACalendar) {
  auto calendar = cal()->calendars().front();
  calendar->setNotes("Floor 2");
  ASSERT_TRUE(cal()->saveCalendar(calendar, error));
  const auto other = otherStore();
  EXPECT_EQ(other->calendars(store::CalendarKind::kEvents).value().front().notes, "Floor 2");
  EXPECT_EQ(cal()->calendars().front()->notes(), "Floor 2");
  calendar->setNotes(std::nullopt);
  ASSERT_TRUE(cal()->saveCalendar(calendar, error));
  EXPECT_EQ(cal()->calendars().front()->notes(), std::nullopt);
}

TEST_F(CalDetails, RefusesAnItemInACalendarOfTheOtherKind) {
  auto task = framework().task();
  task->setTitle("Tidy");
  task->setCalendar(cal()->calendars().front());
  EXPECT_FALSE(cal()->saveTask(task, error));
  ASSERT_TRUE(error);
  EXPECT_FALSE(error->localizedDescription.empty());
}

TEST_F(CalDetails, RefusesToRemoveTheLastCalendarOfAKind) {
  EXPECT_FALSE(cal()->removeCalendar(cal()->calendars().front(), error));
  EXPECT_FALSE(cal()->removeCalendar(cal()->calendars().back(), error));
}

TEST_F(CalDetails, FindsAChangedOccurrenceByItsOriginalDateWhereverItMoved) {
  const auto uid = addSeries();
  const auto second = cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100"));
  ASSERT_TRUE(second);
  second->setStartDate(moment("2026-12-24 15:00:00 +0100"));
  second->setEndDate(moment("2026-12-24 16:00:00 +0100"));
  ASSERT_TRUE(cal()->saveEvent(second, CalSpan::kThisEvent, error)) << error->localizedDescription;
  const auto moved = cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100"));
  ASSERT_TRUE(moved);
  EXPECT_EQ(moved->startDate(), moment("2026-12-24 15:00:00 +0100"));
  EXPECT_TRUE(moved->isDetached());
  EXPECT_EQ(cal()->eventWithUID(uid, moment("2026-12-24 15:00:00 +0100")), nullptr);
}

TEST_F(CalDetails, AUidFindsItsChangedOccurrencesToo) {
  const auto uid = addSeries();
  put(eventAt("Other", 2026, 11, 3, 12));
  const auto second = cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100"));
  second->setTitle("Stand-up, short");
  ASSERT_TRUE(cal()->saveEvent(second, CalSpan::kThisEvent, error));
  const auto found = cal()->eventsWithPredicate(cal()->eventPredicateWithStartDate(
      moment("2026-11-01 00:00:00 +0100"), moment("2026-12-01 00:00:00 +0100"), uid, cal()->calendars()));
  ASSERT_EQ(found->count(), 3U);
  EXPECT_EQ(found->objectAtIndex(1)->title(), "Stand-up, short");
}

/// A series that no whole calendar can be answered with.
TEST_F(CalDetails, LooksAtNoOtherEventForAUid) {
  const auto uid = addSeries();
  auto ticks = eventAt("Tick", 2010, 1, 1, 0);
  store::RecurrenceRule everyMinute;
  everyMinute.frequency = store::RecurrenceRule::Frequency::kMinutely;
  ticks.recurrence.rules.push_back(everyMinute);
  put(ticks);
  const auto second = cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100"));
  ASSERT_TRUE(second);
  second->setStartDate(moment("2026-12-24 15:00:00 +0100"));
  second->setEndDate(moment("2026-12-24 16:00:00 +0100"));
  ASSERT_TRUE(cal()->saveEvent(second, CalSpan::kThisEvent, error)) << error->localizedDescription;
  EXPECT_EQ(cal()->eventWithUID(uid, moment("2026-11-03 09:30:00 +0100")), nullptr);
  ASSERT_TRUE(cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100")));
  const auto all = cal()->eventPredicateWithStartDate(distantPast(), distantFuture(), uid, cal()->calendars());
  EXPECT_EQ(cal()->eventsWithPredicate(all)->count(), 3U);
}

TEST_F(CalDetails, AnAnswerNarrowedToAUidFollowsTheStore) {
  const auto uid = addSeries();
  const auto predicate = cal()->eventPredicateWithStartDate(
      moment("2026-11-01 00:00:00 +0100"), moment("2026-12-01 00:00:00 +0100"), uid, cal()->calendars());
  EXPECT_EQ(cal()->eventsWithPredicate(predicate)->count(), 3U);
  ASSERT_TRUE(
      cal()->removeEvent(cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100")), CalSpan::kThisEvent, error));
  EXPECT_EQ(cal()->eventsWithPredicate(predicate)->count(), 2U);
}

TEST_F(CalDetails, SavingThisOccurrenceChangesItAlone) {
  const auto uid = addSeries();
  const auto second = cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100"));
  second->setTitle("Changed");
  ASSERT_TRUE(cal()->saveEvent(second, CalSpan::kThisEvent, error));
  EXPECT_THAT(titlesOfYear(), ElementsAre("Stand-up", "Changed", "Stand-up"));
}

TEST_F(CalDetails, SavingFutureOccurrencesKeepsThePast) {
  const auto uid = addSeries();
  const auto second = cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100"));
  second->setTitle("Changed");
  ASSERT_TRUE(cal()->saveEvent(second, CalSpan::kFutureEvents, error));
  EXPECT_THAT(titlesOfYear(), ElementsAre("Stand-up", "Changed", "Changed"));
}

TEST_F(CalDetails, SavingAllOccurrencesFromOneOfThemChangesThePastToo) {
  const auto uid = addSeries();
  const auto second = cal()->eventWithUID(uid, moment("2026-11-03 09:00:00 +0100"));
  second->setTitle("Changed");
  second->setStartDate(moment("2026-11-03 10:30:00 +0100"));
  second->setEndDate(moment("2026-11-03 11:00:00 +0100"));
  ASSERT_TRUE(cal()->saveEvent(second, CalSpan::kAllEvents, error)) << error->localizedDescription;
  EXPECT_THAT(titlesOfYear(), ElementsAre("Changed", "Changed", "Changed"));
  const auto first = cal()->eventWithUID(uid, std::nullopt);
  EXPECT_EQ(first->startDate(), moment("2026-11-02 10:30:00 +0100"));
  EXPECT_EQ(first->endDate(), moment("2026-11-02 11:00:00 +0100"));
}

TEST_F(CalDetails, ReadsAttendeesWithAddressNameAndStatus) {
  auto item = eventAt("Review", 2026, 11, 3, 9);
  store::Attendee organizer;
  organizer.address = "mailto:boss@example.org";
  organizer.organizer = true;
  store::Attendee ann;
  ann.address = "mailto:ann@example.org";
  ann.name = "Ann";
  ann.status = store::Attendee::Status::kTentative;
  store::Attendee bob;
  bob.address = "mailto:bob@example.org";
  item.attendees = {organizer, ann, bob};
  const auto attendees = cal()->eventWithUID(put(item).identifier, std::nullopt)->attendees();
  ASSERT_TRUE(attendees);
  ASSERT_EQ(attendees->size(), 2U);
  EXPECT_EQ(attendees->at(0)->address(), "mailto:ann@example.org");
  EXPECT_EQ(attendees->at(0)->commonName(), "Ann");
  EXPECT_EQ(attendees->at(0)->status(), "TENTATIVE");
  EXPECT_EQ(attendees->at(1)->commonName(), std::nullopt);
  EXPECT_EQ(attendees->at(1)->status(), "NEEDS-ACTION");
}

TEST_F(CalDetails, AnAlarmKeepsTheActionThatWasNamed) {
  auto event = framework().event();
  const auto alarm = framework().alarm();
  alarm->setAction(std::string(CalAlarmActionDisplay));
  alarm->setEmailAddress("a@example.org");
  alarm->setSound("Basso");
  alarm->setUrl("file:///a");
  event->addAlarm(alarm);
  EXPECT_EQ(event->alarms().front()->action(), CalAlarmActionDisplay);
}

TEST_F(CalDetails, AnItemHandsOutTheSameAlarmAgain) {
  auto event = framework().event();
  const auto alarm = framework().alarm();
  event->addAlarm(alarm);
  EXPECT_EQ(event->alarms().front(), alarm);
  EXPECT_EQ(event->alarms().front()->action(), std::nullopt);
}

TEST_F(CalDetails, ADueDateIsAMomentInTheDefaultZone) {
  auto task = framework().task();
  task->setTitle("Tidy");
  task->setCalendar(cal()->calendars().back());
  task->setDueDate(moment("2026-11-05 17:00:00 +0100"));
  ASSERT_TRUE(cal()->saveTask(task, error)) << error->localizedDescription;
  const auto row = otherStore()->itemWithIdentifier(*task->uid()).value();
  ASSERT_TRUE(row && row->due);
  EXPECT_EQ(row->due->kind, store::CalendarTime::Kind::kZoned);
  EXPECT_EQ(row->due->zone, "Europe/Berlin");
}

}  // namespace
}  // namespace orlocal
