#include "platform/linux/store_fixture.h"

namespace orlocal {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class EventKitEvents : public StoreFixture {
 protected:
  std::shared_ptr<EKEvent> opened(store::Item item, std::vector<store::Item> changed = {}) {
    return ek().eventWithIdentifier(put(std::move(item), std::move(changed)).identifier);
  }
  std::shared_ptr<EKEvent> newEvent() { return kit().eventWithEventStore(ekStore()); }
};

TEST_F(EventKitEvents, ReadWhatIsStored) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  item.notes = "bring the plan";
  item.location = "Room 4";
  item.url = "https://example.org/plan";
  item.uid = "review@example.org";
  const auto event = opened(std::move(item));
  EXPECT_EQ(event->title(), "Review");
  EXPECT_EQ(event->notes(), "bring the plan");
  EXPECT_EQ(event->location(), "Room 4");
  EXPECT_EQ(event->url(), "https://example.org/plan");
  EXPECT_EQ(event->calendarItemExternalIdentifier(), "review@example.org");
  EXPECT_EQ(event->startDate(), moment("2026-11-03 09:00:00 +0100"));
  EXPECT_EQ(event->endDate(), moment("2026-11-03 10:00:00 +0100"));
  EXPECT_EQ(event->calendar()->title(), "Calendar");
  EXPECT_FALSE(event->isAllDay());
  EXPECT_FALSE(event->isDetached());
  EXPECT_FALSE(event->hasAlarms());
  EXPECT_FALSE(event->hasAttendees());
}

TEST_F(EventKitEvents, HaveNoTextThatWasNeverSet) {
  const auto event = opened(eventAt("Review", 2026, 11, 3, 9));
  EXPECT_EQ(event->notes(), std::nullopt);
  EXPECT_EQ(event->location(), std::nullopt);
  EXPECT_EQ(event->url(), std::nullopt);
}

TEST_F(EventKitEvents, HaveNothingWhenTheyAreNew) {
  const auto event = newEvent();
  EXPECT_EQ(event->eventIdentifier(), std::nullopt);
  EXPECT_EQ(event->calendarItemIdentifier(), std::nullopt);
  EXPECT_EQ(event->calendarItemExternalIdentifier(), std::nullopt);
  EXPECT_EQ(event->title(), std::nullopt);
  EXPECT_EQ(event->startDate(), std::nullopt);
  EXPECT_EQ(event->endDate(), std::nullopt);
  EXPECT_EQ(event->calendar(), nullptr);
  EXPECT_EQ(event->recurrenceRules(), std::nullopt);
}

TEST_F(EventKitEvents, AreNotMadeWithoutAStore) {
  EXPECT_EQ(kit().eventWithEventStore(nullptr), nullptr);
  EXPECT_EQ(kit().reminderWithEventStore(nullptr), nullptr);
  EXPECT_EQ(kit().calendarForEntityType(EKEntityType::kEvent, nullptr), nullptr);
}

TEST_F(EventKitEvents, KeepChangesToThemselvesUntilTheyAreSaved) {
  const auto stored = put(eventAt("Review", 2026, 11, 3, 9));
  const auto event = ek().eventWithIdentifier(stored.identifier);
  event->setTitle("Preview");
  event->setNotes(std::nullopt);
  EXPECT_EQ(event->title(), "Preview");
  EXPECT_EQ(ek().eventWithIdentifier(stored.identifier)->title(), "Review");
}

TEST_F(EventKitEvents, OfWholeDaysEndAtTheLastSecondOfTheirLastDay) {
  const auto event = opened(wholeDays("Holiday", 2026, 11, 2, 4));
  EXPECT_TRUE(event->isAllDay());
  EXPECT_EQ(event->startDate(), moment("2026-11-02 00:00:00 +0100"));
  EXPECT_EQ(event->endDate(), moment("2026-11-04 23:59:59 +0100"));
  EXPECT_EQ(event->timeZone(), nullptr);
}

TEST_F(EventKitEvents, OfWholeDaysKeepTheirLengthAcrossAClockChange) {
  const auto event = opened(wholeDays("Weekend", 2026, 10, 24, 25));
  EXPECT_EQ(event->startDate(), moment("2026-10-24 00:00:00 +0200"));
  EXPECT_EQ(event->endDate(), moment("2026-10-25 23:59:59 +0100"));
}

TEST_F(EventKitEvents, BecomeWholeDaysByTheDatesOfTheirTimes) {
  const auto event = opened(eventAt("Review", 2026, 11, 3, 9));
  event->setAllDay(true);
  EXPECT_EQ(event->startDate(), moment("2026-11-03 00:00:00 +0100"));
  EXPECT_EQ(event->endDate(), moment("2026-11-03 23:59:59 +0100"));
}

TEST_F(EventKitEvents, GetTheirTimesBackWhenTheyAreNoWholeDaysAfterAll) {
  const auto event = opened(eventAt("Review", 2026, 11, 3, 9));
  event->setAllDay(true);
  event->setAllDay(false);
  EXPECT_EQ(event->startDate(), moment("2026-11-03 09:00:00 +0100"));
  EXPECT_EQ(event->endDate(), moment("2026-11-03 10:00:00 +0100"));
}

TEST_F(EventKitEvents, OfWholeDaysTakeTheDatesOfTheMomentsThatAreSet) {
  const auto event = opened(wholeDays("Holiday", 2026, 11, 2, 4));
  event->setStartDate(moment("2026-11-05 13:30:00 +0100"));
  event->setEndDate(moment("2026-11-06 00:00:00 +0100"));
  EXPECT_EQ(event->startDate(), moment("2026-11-05 00:00:00 +0100"));
  EXPECT_EQ(event->endDate(), moment("2026-11-06 23:59:59 +0100"));
}

TEST_F(EventKitEvents, ShowAnEndBeforeTheStartAsItWasSet) {
  const auto event = opened(eventAt("Review", 2026, 11, 3, 9));
  event->setEndDate(moment("2026-11-03 08:00:00 +0100"));
  EXPECT_LT(*event->endDate(), *event->startDate());
  const auto holiday = opened(wholeDays("Holiday", 2026, 11, 2, 2));
  holiday->setEndDate(moment("2026-11-01 12:00:00 +0100"));
  EXPECT_LT(*holiday->endDate(), *holiday->startDate());
}

TEST_F(EventKitEvents, HaveTheZoneThatTheyAreStoredIn) {
  store::Item item = eventAt("Call", 2026, 11, 3, 9);
  item.start->zone = item.end->zone = "America/New_York";
  const auto event = opened(std::move(item));
  ASSERT_NE(event->timeZone(), nullptr);
  EXPECT_EQ(event->timeZone()->name(), "America/New_York");
  EXPECT_EQ(event->startDate(), moment("2026-11-03 09:00:00 -0500"));
}

TEST_F(EventKitEvents, HaveNoZoneWhenTheirTimesFloat) {
  store::Item item = eventAt("Lunch", 2026, 11, 3, 12);
  for (auto* time : {&*item.start, &*item.end}) { *time = {store::CalendarTime::Kind::kFloating, time->local, {}}; }
  const auto event = opened(std::move(item));
  EXPECT_EQ(event->timeZone(), nullptr);
  EXPECT_EQ(event->startDate(), moment("2026-11-03 12:00:00 +0100"));
}

TEST_F(EventKitEvents, GetTheDefaultZoneWhenTheyAreNew) {
  const auto event = newEvent();
  event->setStartDate(moment("2026-11-03 09:00:00 +0100"));
  ASSERT_NE(event->timeZone(), nullptr);
  EXPECT_EQ(event->timeZone()->name(), "Europe/Berlin");
}

TEST_F(EventKitEvents, NameTheirCalendar) {
  const auto event = newEvent();
  event->setCalendar(eventCalendars()[0]);
  ASSERT_NE(event->calendar(), nullptr);
  EXPECT_EQ(event->calendar()->calendarIdentifier(), eventCalendars()[0]->calendarIdentifier());
}

TEST_F(EventKitEvents, SayWhereTheRulePutAChangedOccurrence) {
  store::Item series = eventAt("weekly", 2026, 11, 3, 9);
  series.recurrence.rules = {weekly()};
  store::Item changed = eventAt("moved", 2026, 11, 11, 15);
  changed.recurrenceId = zoned(store::LocalTime(2026, 11, 10, 9));
  put(std::move(series), {changed});
  const auto found = eventsBetween(moment("2026-11-09 00:00:00 +0100"), moment("2026-11-16 00:00:00 +0100"));
  ASSERT_EQ(found->count(), 1U);
  const auto event = found->objectAtIndex(0);
  EXPECT_TRUE(event->isDetached());
  EXPECT_EQ(event->startDate(), moment("2026-11-11 15:00:00 +0100"));
  EXPECT_EQ(event->occurrenceDate(), moment("2026-11-10 09:00:00 +0100"));
  EXPECT_THAT(event->recurrenceRules(), testing::Optional(SizeIs(1)));
}

TEST_F(EventKitEvents, HaveOccurrencesAtTheSameHourOnBothSidesOfAClockChange) {
  store::Item series = eventAt("weekly", 2026, 10, 20, 9);
  series.recurrence.rules = {weekly()};
  put(std::move(series));
  const auto found = eventsBetween(moment("2026-10-20 00:00:00 +0200"), moment("2026-10-28 00:00:00 +0100"));
  ASSERT_EQ(found->count(), 2U);
  EXPECT_EQ(found->objectAtIndex(0)->startDate(), moment("2026-10-20 09:00:00 +0200"));
  EXPECT_EQ(found->objectAtIndex(1)->startDate(), moment("2026-10-27 09:00:00 +0100"));
  EXPECT_EQ(found->objectAtIndex(1)->occurrenceDate(), moment("2026-10-27 09:00:00 +0100"));
}

TEST_F(EventKitEvents, ShowTheirAttendees) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  store::Attendee guest;
  guest.address = "MAILTO:guest@example.org";
  guest.name = "A Guest";
  guest.status = store::Attendee::Status::kTentative;
  guest.role = store::Attendee::Role::kOptional;
  guest.type = store::Attendee::Type::kPerson;
  item.attendees = {guest};
  const auto event = opened(std::move(item));
  EXPECT_TRUE(event->hasAttendees());
  const auto attendees = event->attendees();
  ASSERT_THAT(attendees, testing::Optional(SizeIs(1)));
  const auto& participant = *attendees->front();
  EXPECT_EQ(participant.name(), "A Guest");
  EXPECT_THAT(participant.emailAddresses(), testing::ElementsAre("guest@example.org"));
  EXPECT_EQ(participant.participantStatus(), 4);
  EXPECT_EQ(participant.participantRole(), 2);
  EXPECT_EQ(participant.participantType(), 1);
}

TEST_F(EventKitEvents, TellTheMailAddressWrittenForAddressBooksFirst) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  item.attendees.resize(4);
  item.attendees[0].address = "urn:uuid:1";
  item.attendees[0].extra = ";RSVP=TRUE;EMAIL=a@example.org";
  item.attendees[1].address = "mailto:shared@example.org";
  item.attendees[1].extra = ";email=\"b@example.org\"";
  item.attendees[2].address = "c@example.org";
  item.attendees[3].address = "urn:uuid:4";
  const auto attendees = *opened(std::move(item))->attendees();
  EXPECT_THAT(attendees[0]->emailAddresses(), testing::ElementsAre("a@example.org"));
  EXPECT_THAT(attendees[1]->emailAddresses(), testing::ElementsAre("b@example.org", "shared@example.org"));
  EXPECT_THAT(attendees[2]->emailAddresses(), testing::ElementsAre("c@example.org"));
  EXPECT_THAT(attendees[3]->emailAddresses(), testing::IsEmpty());
}

TEST_F(EventKitEvents, TellTheirStampWhereADateIsMissing) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  item.stamped = moment("2026-01-02 03:04:05 +0000");
  item.alarms.resize(1);
  auto event = opened(item);
  EXPECT_EQ(event->lastModifiedDate(), item.stamped);
  EXPECT_EQ(event->creationDate(), item.stamped);
  EXPECT_EQ(event->alarms().front()->creationDate(), item.stamped);
  item.created = moment("2025-01-01 00:00:00 +0000");
  item.modified = moment("2025-02-02 00:00:00 +0000");
  event = opened(item);
  EXPECT_EQ(event->lastModifiedDate(), item.modified);
  EXPECT_EQ(event->creationDate(), item.created);
  EXPECT_EQ(event->alarms().front()->creationDate(), item.created);
}

TEST_F(EventKitEvents, TellTheirUrlEncoded) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  item.url = "https://example.org/a b/ü";
  item.alarms.resize(1);
  item.alarms[0].url = "file:///a b";
  const auto event = opened(item);
  EXPECT_EQ(event->url(), "https://example.org/a%20b/%C3%BC");
  EXPECT_EQ(event->alarms().front()->url(), "file:///a%20b");
}

TEST_F(EventKitEvents, HaveNoAttendeesWhenNobodyWasInvited) {
  EXPECT_EQ(opened(eventAt("Review", 2026, 11, 3, 9))->attendees(), std::nullopt);
}

TEST_F(EventKitEvents, DoNotCountTheirOrganiserAsInvited) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  store::Attendee organiser;
  organiser.address = "mailto:boss@example.org";
  organiser.organizer = true;
  item.attendees = {organiser};
  const auto event = opened(std::move(item));
  EXPECT_FALSE(event->hasAttendees());
  EXPECT_EQ(event->attendees(), std::nullopt);
}

/// Dates must not move for viewers on either edge of the world.
class EventKitWholeDays : public StoreFixture, public testing::WithParamInterface<const char*> {
 protected:
  EventKitWholeDays() { ::setenv("TZ", GetParam(), 1); }
  ~EventKitWholeDays() override { ::setenv("TZ", "Europe/Berlin", 1); }
};

TEST_P(EventKitWholeDays, BeginAndEndOnTheirDatesInEveryZone) {
  const auto stored = put(wholeDays("Holiday", 2026, 11, 2, 2));
  const auto event = ek().eventWithIdentifier(stored.identifier);
  const TimeZone& zone = system->defaultTimeZone();
  const auto start = zone.components(*event->startDate());
  EXPECT_EQ(start.day, 2);
  EXPECT_EQ(start.hour, 0);
  const auto end = zone.components(*event->endDate());
  EXPECT_EQ(end.day, 2);
  EXPECT_EQ(end.hour, 23);
  EXPECT_EQ(end.minute, 59);
  EXPECT_EQ(end.second, 59);
}

INSTANTIATE_TEST_SUITE_P(Zones, EventKitWholeDays,
                         testing::Values("Pacific/Pago_Pago", "UTC", "Pacific/Kiritimati", "Asia/Kolkata"));

}  // namespace
}  // namespace orlocal
