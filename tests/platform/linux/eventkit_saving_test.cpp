#include "platform/linux/store_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Optional;
using testing::SizeIs;

class EventKitSaving : public StoreFixture {
 protected:
  void save(const std::shared_ptr<EKEvent>& event, EKSpan span = EKSpan::kThisEvent) {
    std::optional<Error> error;
    EXPECT_TRUE(ek().saveEvent(event, span, true, error))
        << error.value_or(Error{"no reason", {}}).localizedDescription;
  }
  void save(const std::shared_ptr<EKReminder>& task) {
    std::optional<Error> error;
    EXPECT_TRUE(ek().saveReminder(task, true, error)) << error.value_or(Error{"no reason", {}}).localizedDescription;
  }
  std::string refusal(const std::shared_ptr<EKEvent>& event) {
    std::optional<Error> error;
    EXPECT_FALSE(ek().saveEvent(event, EKSpan::kThisEvent, true, error));
    return error ? error->localizedDescription : "";
  }
  std::shared_ptr<EKEvent> newEvent(const char* title, const char* start, const char* end) {
    const auto event = kit().eventWithEventStore(ekStore());
    event->setTitle(title);
    event->setStartDate(moment(start));
    event->setEndDate(moment(end));
    event->setCalendar(ek().defaultCalendarForNewEvents());
    return event;
  }
  /// A weekly event from Tuesday, 3 November 2026, 09:00 on.
  store::Item weeklySeries() {
    store::Item series = eventAt("weekly", 2026, 11, 3, 9);
    series.recurrence.rules = {weekly()};
    return put(std::move(series));
  }
  std::shared_ptr<EKEvent> occurrence(const char* dayStart, const char* dayEnd) {
    return eventsBetween(moment(dayStart), moment(dayEnd))->objectAtIndex(0);
  }
  std::shared_ptr<EKEvent> secondOccurrence() {
    return occurrence("2026-11-10 00:00:00 +0100", "2026-11-11 00:00:00 +0100");
  }
  std::vector<std::string> titlesOfNovember() {
    return titlesBetween(moment("2026-11-01 00:00:00 +0100"), moment("2026-12-01 00:00:00 +0100"));
  }
  /// The row as the file has it.
  store::Item stored(const std::shared_ptr<EKCalendarItem>& item) {
    return *otherStore()->itemWithIdentifier(*item->calendarItemIdentifier()).value();
  }
};

TEST_F(EventKitSaving, WritesANewEventInTheDefaultZone) {
  const auto event = newEvent("Review", "2026-11-03 09:00:00 +0100", "2026-11-03 10:00:00 +0100");
  save(event);
  ASSERT_TRUE(event->eventIdentifier());
  EXPECT_EQ(stored(event).start, zoned(store::LocalTime(2026, 11, 3, 9)));
  const auto again = ek().eventWithIdentifier(*event->eventIdentifier());
  EXPECT_EQ(again->title(), "Review");
  EXPECT_EQ(again->startDate(), moment("2026-11-03 09:00:00 +0100"));
}

TEST_F(EventKitSaving, KeepsTheSecondOfTwoEqualHours) {
  const auto event = newEvent("Night shift", "2026-10-25 02:30:00 +0100", "2026-10-25 03:30:00 +0100");
  save(event);
  EXPECT_EQ(event->startDate(), moment("2026-10-25 02:30:00 +0100"));
  EXPECT_EQ(ek().eventWithIdentifier(*event->eventIdentifier())->startDate(), moment("2026-10-25 02:30:00 +0100"));
}

TEST_F(EventKitSaving, WritesWholeDaysAsDates) {
  const auto event = newEvent("Holiday", "2026-11-03 09:00:00 +0100", "2026-11-04 10:00:00 +0100");
  event->setAllDay(true);
  save(event);
  EXPECT_EQ(stored(event).start, wholeDay(2026, 11, 3));
  EXPECT_EQ(stored(event).end, wholeDay(2026, 11, 5));
  EXPECT_EQ(event->endDate(), moment("2026-11-04 23:59:59 +0100"));
}

TEST_F(EventKitSaving, KeepsTheKindAndZoneOfTimesThatMove) {
  store::Item item = eventAt("Call", 2026, 11, 3, 9);
  item.start->zone = item.end->zone = "America/New_York";
  const auto event = ek().eventWithIdentifier(put(std::move(item)).identifier);
  event->setStartDate(moment("2026-11-03 14:30:00 +0100"));
  save(event);
  EXPECT_EQ(stored(event).start, zoned(store::LocalTime(2026, 11, 3, 8, 30), "America/New_York"));
  EXPECT_EQ(stored(event).end, zoned(store::LocalTime(2026, 11, 3, 10), "America/New_York"));
}

TEST_F(EventKitSaving, LeavesWholeDaysAloneWhenOnlyTheTitleChanges) {
  const auto event = ek().eventWithIdentifier(put(wholeDays("Holiday", 2026, 11, 2, 4)).identifier);
  event->setTitle("Autumn break");
  save(event);
  EXPECT_EQ(stored(event).start, wholeDay(2026, 11, 2));
  EXPECT_EQ(stored(event).end, wholeDay(2026, 11, 5));
}

TEST_F(EventKitSaving, ChangesOneOccurrenceAlone) {
  weeklySeries();
  const auto event = secondOccurrence();
  event->setTitle("moved");
  event->setStartDate(moment("2026-11-11 15:00:00 +0100"));
  event->setEndDate(moment("2026-11-11 16:00:00 +0100"));
  save(event);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("weekly", "moved", "weekly", "weekly"));
  EXPECT_TRUE(event->isDetached());
  EXPECT_EQ(event->occurrenceDate(), moment("2026-11-10 09:00:00 +0100"));
  EXPECT_EQ(event->startDate(), moment("2026-11-11 15:00:00 +0100"));
}

TEST_F(EventKitSaving, SavesAChangedOccurrenceAgainFromTheSameObject) {
  weeklySeries();
  const auto event = secondOccurrence();
  event->setTitle("once");
  save(event);
  event->setTitle("twice");
  save(event);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("weekly", "twice", "weekly", "weekly"));
}

TEST_F(EventKitSaving, ChangesAnOccurrenceAndTheLaterOnes) {
  weeklySeries();
  const auto event = secondOccurrence();
  event->setTitle("later");
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("weekly", "later", "later", "later"));
}

TEST_F(EventKitSaving, ChangesTheWholeSeriesFromItsFirstOccurrenceOn) {
  const auto series = weeklySeries();
  const auto event = ek().eventWithIdentifier(series.identifier);
  event->setTitle("all");
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("all", "all", "all", "all"));
  EXPECT_EQ(event->eventIdentifier(), series.identifier);
}

TEST_F(EventKitSaving, MakesASeriesOfAnEventThatGetsARule) {
  const auto event = newEvent("Review", "2026-11-03 09:00:00 +0100", "2026-11-03 10:00:00 +0100");
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kWeekly;
  parts.end = kit().recurrenceEndWithOccurrenceCount(3);
  event->addRecurrenceRule(kit().recurrenceRule(parts).rule);
  save(event);
  EXPECT_THAT(titlesOfNovember(), SizeIs(3));
  event->setTitle("again");
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("again", "again", "again"));
}

TEST_F(EventKitSaving, EndsASeriesOfWholeDaysWithADate) {
  const auto event = newEvent("Holiday", "2026-11-03 09:00:00 +0100", "2026-11-03 10:00:00 +0100");
  event->setAllDay(true);
  EKRecurrenceRuleParts parts;
  parts.end = kit().recurrenceEndWithEndDate(moment("2026-11-05 18:00:00 +0100"));
  event->addRecurrenceRule(kit().recurrenceRule(parts).rule);
  save(event);
  EXPECT_EQ(stored(event).recurrence.rules.front().until, wholeDay(2026, 11, 5));
  EXPECT_THAT(titlesOfNovember(), SizeIs(3));
}

TEST_F(EventKitSaving, LeavesOneEventOfASeriesWhoseRuleIsRemoved) {
  const auto event = ek().eventWithIdentifier(weeklySeries().identifier);
  event->setRecurrenceRules(std::nullopt);
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("weekly"));
}

TEST_F(EventKitSaving, LeavesOneEventOfASeriesWhoseRuleIsRemovedAtAChangedFirstOccurrence) {
  const auto series = weeklySeries();
  const auto changed = ek().eventWithIdentifier(series.identifier);
  changed->setTitle("kick-off");
  changed->setStartDate(moment("2026-11-03 10:00:00 +0100"));
  changed->setEndDate(moment("2026-11-03 11:00:00 +0100"));
  save(changed);
  const auto event = ek().eventWithIdentifier(series.identifier);
  ASSERT_TRUE(event->isDetached());
  event->setRecurrenceRules(std::nullopt);
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("kick-off"));
  EXPECT_EQ(event->eventIdentifier(), series.identifier);
  EXPECT_EQ(event->startDate(), moment("2026-11-03 10:00:00 +0100"));
  EXPECT_FALSE(event->recurrenceRules());
  EXPECT_FALSE(event->isDetached());
}

TEST_F(EventKitSaving, EndsASeriesWithAChangedOccurrenceWhoseRuleIsRemoved) {
  weeklySeries();
  const auto changed = secondOccurrence();
  changed->setTitle("changed");
  save(changed);
  const auto event = secondOccurrence();
  event->setRecurrenceRules(std::nullopt);
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("weekly", "changed"));
  EXPECT_FALSE(event->recurrenceRules());
}

TEST_F(EventKitSaving, LeavesOneEventWhereTheFirstOccurrencesWereTakenOut) {
  const auto series = weeklySeries();
  std::optional<Error> error;
  ASSERT_TRUE(ek().removeEvent(ek().eventWithIdentifier(series.identifier), EKSpan::kThisEvent, true, error));
  const auto event = ek().eventWithIdentifier(series.identifier);
  event->setRecurrenceRules(std::nullopt);
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("weekly"));
  EXPECT_EQ(event->startDate(), moment("2026-11-10 09:00:00 +0100"));
}

TEST_F(EventKitSaving, LeavesOneEventOfASeriesOfAddedDates) {
  store::Item item = eventAt("dates", 2026, 11, 3, 9);
  item.recurrence.added = {zoned(store::LocalTime(2026, 11, 12, 9)), zoned(store::LocalTime(2026, 11, 20, 9))};
  const auto event = ek().eventWithIdentifier(put(std::move(item)).identifier);
  ASSERT_THAT(titlesOfNovember(), SizeIs(3));
  event->setRecurrenceRules(std::nullopt);
  save(event, EKSpan::kFutureEvents);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("dates"));
}

TEST_F(EventKitSaving, DropsAKeptRuleOnceTheRulesAreSet) {
  store::Item item = eventAt("odd", 2026, 11, 3, 9);
  item.extra = "X-KEPT:1\nRRULE:FREQ=WEEKLY;X-ODD=1\n";
  const auto event = ek().eventWithIdentifier(put(std::move(item)).identifier);
  event->setTitle("titled");
  save(event);
  EXPECT_EQ(stored(event).extra, "X-KEPT:1\nRRULE:FREQ=WEEKLY;X-ODD=1\n");
  event->setRecurrenceRules(std::nullopt);
  save(event);
  EXPECT_EQ(stored(event).extra, "X-KEPT:1\n");
}

TEST_F(EventKitSaving, RefusesToRemoveTheRuleOfOneOccurrenceAlone) {
  weeklySeries();
  const auto changed = secondOccurrence();
  changed->setTitle("changed");
  save(changed);
  for (const auto& event : {secondOccurrence(), occurrence("2026-11-17 00:00:00 +0100", "2026-11-18 00:00:00 +0100")}) {
    event->setRecurrenceRules(std::nullopt);
    EXPECT_THAT(refusal(event), HasSubstr("for one of its days alone"));
  }
  store::Item dates = eventAt("dates", 2026, 11, 4, 9);
  dates.recurrence.added = {zoned(store::LocalTime(2026, 11, 12, 9))};
  const auto event = ek().eventWithIdentifier(put(std::move(dates)).identifier);
  event->setRecurrenceRules(std::nullopt);
  EXPECT_THAT(refusal(event), HasSubstr("for one of its days alone"));
}

TEST_F(EventKitSaving, RefusesToRewriteASeriesWithAttendeesThroughAChangedOccurrenceWithout) {
  store::Item series = eventAt("meeting", 2026, 11, 3, 9);
  series.recurrence.rules = {weekly()};
  series.attendees = {{"mailto:a@example.org", "A", store::Attendee::Status::kAccepted,
                       store::Attendee::Role::kRequired, store::Attendee::Type::kPerson, false, ""}};
  store::Item changed = eventAt("alone", 2026, 11, 17, 9);
  changed.recurrenceId = changed.start;
  const std::string uid = put(std::move(series), {changed}).uid;
  const auto day = std::pair("2026-11-17 00:00:00 +0100", "2026-11-18 00:00:00 +0100");
  const auto event = occurrence(day.first, day.second);
  ASSERT_FALSE(event->hasAttendees());
  event->setTitle("rewritten");
  std::optional<Error> error;
  EXPECT_FALSE(ek().saveEvent(event, EKSpan::kFutureEvents, true, error));
  EXPECT_THAT(error.value().localizedDescription, HasSubstr("attendees"));
  EXPECT_THAT(titlesOfNovember(), ElementsAre("meeting", "meeting", "alone", "meeting"));
  // Alone it is nobody else's.
  save(event);
  EXPECT_THAT(titlesOfNovember(), ElementsAre("meeting", "meeting", "rewritten", "meeting"));
  EXPECT_EQ(event->calendarItemExternalIdentifier(), uid);
}

TEST_F(EventKitSaving, WritesAlarmsThatWereChangedInPlace) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  store::Alarm alarm;
  alarm.trigger = store::Alarm::Relative{std::chrono::minutes(-5), true};
  item.alarms = {alarm, alarm};
  const auto event = ek().eventWithIdentifier(put(std::move(item)).identifier);
  event->alarms()[0]->setRelativeOffset(-900);
  event->alarms()[0]->setSoundName("Basso");
  save(event);
  const auto alarms = stored(event).alarms;
  ASSERT_THAT(alarms, SizeIs(2));
  EXPECT_EQ(std::get<store::Alarm::Relative>(alarms[0].trigger),
            (store::Alarm::Relative{std::chrono::minutes(-15), false}));
  EXPECT_EQ(alarms[0].soundName, "Basso");
  EXPECT_EQ(alarms[0].action, store::Alarm::Action::kAudio);
  EXPECT_EQ(alarms[1], alarm) << "untouched alarms keep their reference";
}

TEST_F(EventKitSaving, WritesNewAlarmsOfRemindersFromTheDueMoment) {
  store::Item item = reminder("Report");
  item.end = zoned(store::LocalTime(2026, 11, 3, 9));
  const auto task =
      std::dynamic_pointer_cast<EKReminder>(ek().calendarItemWithIdentifier(put(std::move(item)).itemIdentifier));
  task->addAlarm(kit().alarmWithRelativeOffset(-600));
  save(task);
  const auto alarms = stored(task).alarms;
  ASSERT_THAT(alarms, SizeIs(1));
  EXPECT_EQ(std::get<store::Alarm::Relative>(alarms[0].trigger),
            (store::Alarm::Relative{std::chrono::minutes(-10), true}));
}

TEST_F(EventKitSaving, RefusesAnEventWithoutACalendarAStartOrAnEnd) {
  const auto event = kit().eventWithEventStore(ekStore());
  EXPECT_THAT(refusal(event), HasSubstr("calendar"));
  event->setCalendar(ek().defaultCalendarForNewEvents());
  EXPECT_THAT(refusal(event), HasSubstr("start"));
  event->setStartDate(moment("2026-11-03 09:00:00 +0100"));
  EXPECT_THAT(refusal(event), HasSubstr("end"));
}

TEST_F(EventKitSaving, RefusesAnEventWithAttendees) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  store::Attendee guest;
  guest.address = "mailto:guest@example.org";
  item.attendees = {guest};
  const auto event = ek().eventWithIdentifier(put(std::move(item)).identifier);
  event->setTitle("Preview");
  EXPECT_THAT(refusal(event), HasSubstr("attendees"));
  EXPECT_THAT(titlesOfNovember(), ElementsAre("Review"));
}

TEST_F(EventKitSaving, KeepsTheEditsOfARefusedEvent) {
  const auto event = kit().eventWithEventStore(ekStore());
  event->setTitle("Draft");
  refusal(event);
  EXPECT_EQ(event->title(), "Draft");
}

TEST_F(EventKitSaving, RemovesOneOccurrenceOrAllFromItOn) {
  weeklySeries();
  std::optional<Error> error;
  EXPECT_TRUE(ek().removeEvent(secondOccurrence(), EKSpan::kThisEvent, true, error));
  EXPECT_THAT(titlesOfNovember(), SizeIs(3));
  const auto third = occurrence("2026-11-17 00:00:00 +0100", "2026-11-18 00:00:00 +0100");
  EXPECT_TRUE(ek().removeEvent(third, EKSpan::kFutureEvents, true, error));
  EXPECT_THAT(titlesOfNovember(), SizeIs(1));
}

TEST_F(EventKitSaving, RemovesASingleEvent) {
  const auto event = ek().eventWithIdentifier(put(eventAt("Review", 2026, 11, 3, 9)).identifier);
  std::optional<Error> error;
  EXPECT_TRUE(ek().removeEvent(event, EKSpan::kThisEvent, true, error));
  EXPECT_THAT(titlesOfNovember(), IsEmpty());
  EXPECT_FALSE(ek().removeEvent(event, EKSpan::kThisEvent, true, error));
  EXPECT_THAT(error, Optional(testing::Field(&Error::localizedDescription, Not(IsEmpty()))));
}

TEST_F(EventKitSaving, ShowsItsOwnChangesInTheNextAnswer) {
  const auto predicate = ek().predicateForEvents(moment("2026-11-01 00:00:00 +0100"),
                                                 moment("2026-12-01 00:00:00 +0100"), eventCalendars());
  EXPECT_EQ(ek().eventsMatchingPredicate(predicate)->count(), 0U);
  save(newEvent("Review", "2026-11-03 09:00:00 +0100", "2026-11-03 10:00:00 +0100"));
  EXPECT_EQ(ek().eventsMatchingPredicate(predicate)->count(), 1U);
}

TEST_F(EventKitSaving, WritesAndRemovesReminders) {
  const auto task = kit().reminderWithEventStore(ekStore());
  task->setTitle("Report");
  task->setCalendar(ek().defaultCalendarForNewReminders());
  task->setPriority(1);
  save(task);
  const auto found = ek().calendarItemWithIdentifier(*task->calendarItemIdentifier());
  EXPECT_EQ(found->title(), "Report");
  EXPECT_EQ(std::dynamic_pointer_cast<EKReminder>(found)->priority(), 1);
  std::optional<Error> error;
  EXPECT_TRUE(ek().removeReminder(task, true, error));
  EXPECT_EQ(ek().calendarItemWithIdentifier(*task->calendarItemIdentifier()), nullptr);
}

TEST_F(EventKitSaving, RemovesACalendarButNotTheLastOne) {
  std::optional<Error> error;
  EXPECT_FALSE(ek().removeCalendar(eventCalendars()[0], true, error));
  EXPECT_TRUE(error);
}

}  // namespace
}  // namespace orlocal
