#include <functional>

#include "platform/linux/store_fixture.h"
#include "store/icalendar/icalendar_writer.h"
#include "store/import.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

class EventKitDetails : public StoreFixture {
 protected:
  std::shared_ptr<EKEvent> opened(store::Item item) {
    return ek().eventWithIdentifier(put(std::move(item)).identifier);
  }
  std::shared_ptr<EKReminder> openedReminder(store::Item item) {
    return std::dynamic_pointer_cast<EKReminder>(ek().calendarItemWithIdentifier(put(std::move(item)).itemIdentifier));
  }
  static store::Item withAlarm(store::Item item, store::Alarm alarm) {
    item.alarms.push_back(std::move(alarm));
    return item;
  }
  std::shared_ptr<EKRecurrenceRule> ruleOf(store::RecurrenceRule rule) {
    store::Item item = eventAt("repeats", 2026, 11, 3, 9);
    item.recurrence.rules = {std::move(rule)};
    return opened(std::move(item))->recurrenceRules()->front();
  }
  std::string refusal(const EKRecurrenceRuleParts& parts) {
    const auto made = kit().recurrenceRule(parts);
    EXPECT_EQ(made.rule, nullptr);
    return made.refusal ? made.refusal->localizedDescription : "";
  }
};

// Alarms

TEST_F(EventKitDetails, NewAlarmsAreRelativeOrAbsolute) {
  const auto relative = kit().alarmWithRelativeOffset(-900);
  EXPECT_EQ(relative->absoluteDate(), std::nullopt);
  EXPECT_EQ(relative->relativeOffset(), -900);
  const auto absolute = kit().alarmWithAbsoluteDate(moment("2026-11-03 08:00:00 +0100"));
  EXPECT_EQ(absolute->absoluteDate(), moment("2026-11-03 08:00:00 +0100"));
  EXPECT_EQ(absolute->relativeOffset(), 0);
}

TEST_F(EventKitDetails, AnAlarmWithoutItsMomentIsRelativeAgain) {
  const auto alarm = kit().alarmWithAbsoluteDate(moment("2026-11-03 08:00:00 +0100"));
  alarm->setAbsoluteDate(std::nullopt);
  EXPECT_EQ(alarm->absoluteDate(), std::nullopt);
  EXPECT_EQ(alarm->relativeOffset(), 0);
  const auto relative = kit().alarmWithRelativeOffset(-900);
  relative->setAbsoluteDate(std::nullopt);
  EXPECT_EQ(relative->relativeOffset(), -900);
}

TEST_F(EventKitDetails, TheTypeOfAnAlarmFollowsFromWhatIsSet) {
  const auto alarm = kit().alarmWithRelativeOffset(-900);
  EXPECT_EQ(alarm->type(), 0);
  alarm->setUrl("file:///opt/report");
  EXPECT_EQ(alarm->type(), 2);
  alarm->setSoundName("Basso");
  EXPECT_EQ(alarm->type(), 1);
  alarm->setEmailAddress("a@example.org");
  EXPECT_EQ(alarm->type(), 3);
  alarm->setEmailAddress(std::nullopt);
  alarm->setSoundName(std::nullopt);
  alarm->setUrl(std::nullopt);
  EXPECT_EQ(alarm->type(), 0);
}

TEST_F(EventKitDetails, ASoundAlarmWithoutANameIsStillOne) {
  store::Alarm alarm;
  alarm.action = store::Alarm::Action::kAudio;
  const auto event = opened(withAlarm(eventAt("Review", 2026, 11, 3, 9), alarm));
  EXPECT_EQ(event->alarms().front()->type(), 1);
}

TEST_F(EventKitDetails, AnAlarmCountsFromTheStartEvenWhenItIsKeptFromTheEnd) {
  store::Alarm alarm;
  alarm.trigger = store::Alarm::Relative{std::chrono::minutes(-5), true};
  const auto event = opened(withAlarm(eventAt("Review", 2026, 11, 3, 9), alarm));
  EXPECT_EQ(event->alarms().front()->relativeOffset(), 55 * 60);
}

TEST_F(EventKitDetails, AnAlarmOfAReminderCountsFromTheDueMoment) {
  store::Item item = reminder("Report");
  item.start = zoned(store::LocalTime(2026, 11, 3, 8));
  item.due = zoned(store::LocalTime(2026, 11, 3, 9));
  store::Alarm atStart;
  atStart.trigger = store::Alarm::Relative{std::chrono::seconds(0), false};
  EXPECT_EQ(openedReminder(withAlarm(std::move(item), atStart))->alarms().front()->relativeOffset(), -3600);
}

TEST_F(EventKitDetails, AlarmsAreAddedAndRemovedByIdentity) {
  const auto event = opened(eventAt("Review", 2026, 11, 3, 9));
  const auto first = kit().alarmWithRelativeOffset(-900);
  const auto second = kit().alarmWithRelativeOffset(-900);
  event->addAlarm(first);
  event->addAlarm(second);
  EXPECT_THAT(event->alarms(), ElementsAre(first, second));
  event->removeAlarm(second);
  EXPECT_THAT(event->alarms(), ElementsAre(first));
  event->removeAlarm(second);
  EXPECT_THAT(event->alarms(), SizeIs(1));
  EXPECT_TRUE(event->hasAlarms());
  event->removeAlarm(first);
  EXPECT_FALSE(event->hasAlarms());
}

TEST_F(EventKitDetails, AnAlarmIsTheSameObjectAtEachLook) {
  const auto event = opened(withAlarm(eventAt("Review", 2026, 11, 3, 9), store::Alarm()));
  EXPECT_EQ(event->alarms(), event->alarms());
}

TEST_F(EventKitDetails, AnAlarmWasMadeWithItsItem) {
  store::Item item = withAlarm(eventAt("Review", 2026, 11, 3, 9), store::Alarm());
  item.created = moment("2026-01-01 00:00:00 +0000");
  EXPECT_EQ(opened(std::move(item))->alarms().front()->creationDate(), moment("2026-01-01 00:00:00 +0000"));
}

// Rules

TEST_F(EventKitDetails, AWeekdayOutsideTheWeekMakesNoDay) {
  EXPECT_EQ(kit().dayOfWeek(0, 0), nullptr);
  EXPECT_EQ(kit().dayOfWeek(8, 0), nullptr);
  ASSERT_NE(kit().dayOfWeek(1, 0), nullptr);
  EXPECT_EQ(kit().dayOfWeek(7, 0)->dayOfTheWeek(), 7);
  EXPECT_EQ(kit().dayOfWeek(7, 0)->weekNumber(), 0);
}

TEST_F(EventKitDetails, ARuleReadsBackWhatItWasMadeOf) {
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kYearly;
  parts.interval = 2;
  parts.daysOfTheWeek = {kit().dayOfWeek(2, 0), kit().dayOfWeek(6, 0)};
  parts.daysOfTheMonth = {1, -1};
  parts.monthsOfTheYear = {3, 12};
  parts.end = kit().recurrenceEndWithOccurrenceCount(10);
  const auto rule = kit().recurrenceRule(parts).rule;
  ASSERT_NE(rule, nullptr);
  EXPECT_EQ(rule->frequency(), 3);
  EXPECT_EQ(rule->interval(), 2);
  EXPECT_EQ(rule->firstDayOfTheWeek(), 0);
  ASSERT_THAT(rule->daysOfTheWeek(), SizeIs(2));
  EXPECT_EQ(rule->daysOfTheWeek()[0]->dayOfTheWeek(), 2);
  EXPECT_EQ(rule->daysOfTheWeek()[1]->dayOfTheWeek(), 6);
  EXPECT_THAT(rule->daysOfTheMonth(), ElementsAre(1, -1));
  EXPECT_THAT(rule->monthsOfTheYear(), ElementsAre(3, 12));
  ASSERT_NE(rule->recurrenceEnd(), nullptr);
  EXPECT_EQ(rule->recurrenceEnd()->occurrenceCount(), 10);
  EXPECT_EQ(rule->recurrenceEnd()->endDate(), std::nullopt);
}

TEST_F(EventKitDetails, ARuleEndsAtTheMomentItWasGiven) {
  EKRecurrenceRuleParts parts;
  parts.end = kit().recurrenceEndWithEndDate(moment("2026-12-31 23:00:00 +0100"));
  const auto rule = kit().recurrenceRule(parts).rule;
  EXPECT_EQ(rule->recurrenceEnd()->endDate(), moment("2026-12-31 23:00:00 +0100"));
  EXPECT_EQ(rule->recurrenceEnd()->occurrenceCount(), 0);
}

TEST_F(EventKitDetails, ARuleWithoutAnEndHasNone) {
  EXPECT_EQ(kit().recurrenceRule({}).rule->recurrenceEnd(), nullptr);
}

TEST_F(EventKitDetails, ACountBelowOneMakesNoEnd) {
  EXPECT_EQ(kit().recurrenceEndWithOccurrenceCount(0), nullptr);
  EXPECT_EQ(kit().recurrenceEndWithOccurrenceCount(-3), nullptr);
}

TEST_F(EventKitDetails, ARuleThatTheFormatForbidsIsRefusedWithAReason) {
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kMonthly;
  parts.daysOfTheMonth = {0};
  EXPECT_THAT(refusal(parts), HasSubstr("day of the month"));
  parts.daysOfTheMonth = {32};
  EXPECT_THAT(refusal(parts), HasSubstr("32"));
  parts.daysOfTheMonth = {-32};
  EXPECT_THAT(refusal(parts), HasSubstr("-32"));
  parts.daysOfTheMonth = {1};
  parts.frequency = EKRecurrenceFrequency::kWeekly;
  EXPECT_THAT(refusal(parts), HasSubstr("weekly"));

  EKRecurrenceRuleParts months;
  months.monthsOfTheYear = {13};
  EXPECT_THAT(refusal(months), HasSubstr("13"));
  months.monthsOfTheYear = {0};
  EXPECT_THAT(refusal(months), HasSubstr("month"));
  months.monthsOfTheYear = {-1};
  EXPECT_THAT(refusal(months), HasSubstr("month"));

  EKRecurrenceRuleParts interval;
  interval.interval = 0;
  EXPECT_THAT(refusal(interval), HasSubstr("interval"));

  EKRecurrenceRuleParts weeks;
  weeks.frequency = EKRecurrenceFrequency::kMonthly;
  weeks.weeksOfTheYear = {20};
  EXPECT_THAT(refusal(weeks), HasSubstr("monthly"));

  EKRecurrenceRuleParts positions;
  positions.setPositions = {1};
  EXPECT_THAT(refusal(positions), HasSubstr("set position"));
}

TEST_F(EventKitDetails, AnEmptyListDoesNotNarrowARule) {
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kWeekly;
  parts.daysOfTheWeek.emplace();
  parts.daysOfTheMonth.emplace();
  parts.monthsOfTheYear.emplace();
  const auto rule = kit().recurrenceRule(parts).rule;
  ASSERT_NE(rule, nullptr);
  EXPECT_THAT(rule->daysOfTheWeek(), IsEmpty());
}

TEST_F(EventKitDetails, TheNthWeekdayReadsWithItsNumber) {
  store::RecurrenceRule rule;
  rule.frequency = store::RecurrenceRule::Frequency::kMonthly;
  rule.byDay = {{2, 2}};
  rule.weekStart = 0;
  const auto read = ruleOf(std::move(rule));
  EXPECT_EQ(read->frequency(), 2);
  EXPECT_EQ(read->firstDayOfTheWeek(), 1);
  ASSERT_THAT(read->daysOfTheWeek(), SizeIs(1));
  EXPECT_EQ(read->daysOfTheWeek()[0]->weekNumber(), 2);
  EXPECT_EQ(read->daysOfTheWeek()[0]->dayOfTheWeek(), 3);
}

TEST_F(EventKitDetails, AnHourlyRuleHasAFrequencyWithoutAName) {
  store::RecurrenceRule rule;
  rule.frequency = store::RecurrenceRule::Frequency::kHourly;
  rule.count = 3;
  EXPECT_GT(ruleOf(std::move(rule))->frequency(), 3);
}

TEST_F(EventKitDetails, RulesAreAddedRemovedAndCleared) {
  const auto event = opened(eventAt("Review", 2026, 11, 3, 9));
  EXPECT_EQ(event->recurrenceRules(), std::nullopt);
  event->addRecurrenceRule(kit().recurrenceRule({}).rule);
  EXPECT_THAT(event->recurrenceRules(), Optional(SizeIs(1)));
  event->removeRecurrenceRule(event->recurrenceRules()->front());
  EXPECT_EQ(event->recurrenceRules(), std::nullopt);
  event->addRecurrenceRule(kit().recurrenceRule({}).rule);
  event->setRecurrenceRules(std::nullopt);
  EXPECT_EQ(event->recurrenceRules(), std::nullopt);
}

TEST_F(EventKitDetails, ClearingTheRulesClearsAddedDatesToo) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  item.recurrence.rules = {weekly()};
  item.recurrence.added = {zoned(store::LocalTime(2026, 11, 5, 9))};
  const auto event = opened(std::move(item));
  event->setRecurrenceRules(std::nullopt);
  EXPECT_EQ(event->recurrenceRules(), std::nullopt);
}

TEST_F(EventKitDetails, AnEventOfSingleDatesRepeatsWithoutARule) {
  store::Item item = eventAt("Review", 2026, 11, 3, 9);
  item.recurrence.added = {zoned(store::LocalTime(2026, 11, 5, 9))};
  EXPECT_THAT(opened(std::move(item))->recurrenceRules(), Optional(IsEmpty()));
}

// Reminders

TEST_F(EventKitDetails, AReminderWithoutADueDateHasNoParts) {
  EXPECT_EQ(openedReminder(reminder("some day"))->dueDateComponents(), std::nullopt);
}

TEST_F(EventKitDetails, ADueDateHasNoTime) {
  store::Item item = reminder("on the day");
  item.due = wholeDay(2026, 11, 3);
  const auto due = openedReminder(std::move(item))->dueDateComponents();
  ASSERT_TRUE(due);
  EXPECT_EQ(due->day, 3);
  EXPECT_EQ(due->hour, std::nullopt);
  EXPECT_EQ(due->timeZone, std::nullopt);
}

TEST_F(EventKitDetails, ADueMomentKeepsItsZone) {
  store::Item item = reminder("in New York");
  item.due = zoned(store::LocalTime(2026, 11, 3, 9, 30, 15), "America/New_York");
  const auto due = openedReminder(std::move(item))->dueDateComponents();
  ASSERT_TRUE(due);
  EXPECT_EQ(due->hour, 9);
  EXPECT_EQ(due->second, 15);
  EXPECT_EQ(due->timeZone, "America/New_York");
}

TEST_F(EventKitDetails, DuePartsComeBackAsTheyWereSet) {
  const auto task = kit().reminderWithEventStore(ekStore());
  for (const std::optional<std::string>& zone : {std::optional<std::string>(), {"Asia/Tokyo"}, {"UTC"}}) {
    DateComponents parts;
    parts.year = 2026;
    parts.month = 11;
    parts.day = 3;
    parts.hour = 9;
    parts.minute = 30;
    parts.second = 15;
    parts.timeZone = zone;
    task->setDueDateComponents(parts);
    EXPECT_EQ(task->dueDateComponents(), parts) << zone.value_or("no zone");
  }
  DateComponents dayOnly;
  dayOnly.year = 2026;
  dayOnly.month = 11;
  dayOnly.day = 3;
  task->setDueDateComponents(dayOnly);
  EXPECT_EQ(task->dueDateComponents(), dayOnly);
  task->setDueDateComponents(std::nullopt);
  EXPECT_EQ(task->dueDateComponents(), std::nullopt);
}

TEST_F(EventKitDetails, CompletingAReminderSetsItsMomentAndBack) {
  const auto task = openedReminder(reminder("Report"));
  EXPECT_FALSE(task->isCompleted());
  task->setCompleted(true);
  EXPECT_TRUE(task->isCompleted());
  EXPECT_EQ(task->completionDate(), moment("2026-11-02 08:00:00 +0000"));
  task->setCompleted(false);
  EXPECT_EQ(task->completionDate(), std::nullopt);
}

TEST_F(EventKitDetails, CompletingADoneReminderKeepsItsMoment) {
  const auto task = openedReminder(reminder("Report"));
  task->setCompletionDate(moment("2026-10-01 08:00:00 +0000"));
  EXPECT_TRUE(task->isCompleted());
  task->setCompleted(true);
  EXPECT_EQ(task->completionDate(), moment("2026-10-01 08:00:00 +0000"));
  task->setCompletionDate(std::nullopt);
  EXPECT_FALSE(task->isCompleted());
}

// Calendars

TEST_F(EventKitDetails, ACalendarShowsWhatIsStored) {
  const auto calendar = eventCalendars()[0];
  EXPECT_EQ(calendar->type(), 0);
  EXPECT_TRUE(calendar->allowsContentModifications());
  EXPECT_FALSE(calendar->isImmutable());
  EXPECT_FALSE(calendar->isSubscribed());
  ASSERT_NE(calendar->source(), nullptr);
  EXPECT_FALSE(calendar->source()->title().empty());
}

TEST_F(EventKitDetails, ASubscribedCalendarSaysSo) {
  store::ImportOptions with;
  with.subscription = true;
  with.calendarTitle = "Feed";
  ASSERT_TRUE(store::importCalendarText(
      *otherStore(), "BEGIN:VCALENDAR\nBEGIN:VEVENT\nUID:1\nDTSTART:20261102T090000Z\nEND:VEVENT\nEND:VCALENDAR\n",
      "feed.ics", with));
  const auto feed = eventCalendars().back();
  EXPECT_EQ(feed->type(), static_cast<int>(EKCalendarType::kSubscription));
  EXPECT_EQ(feed->source()->title(), "Feed");
  EXPECT_TRUE(feed->isSubscribed());
  EXPECT_TRUE(feed->isImmutable());
  std::optional<Error> error;
  feed->setTitle("Mine");
  EXPECT_FALSE(ek().saveCalendar(feed, true, error));
}

/// What is set on an alarm takes the place of what its line said, and never stands beside it.
class AlarmLines : public EventKitDetails {
 protected:
  /// The lines of the first alarm, once `change` was saved.
  std::string afterSaving(store::Alarm alarm, const std::function<void(EKAlarm&)>& change) {
    store::Item item = eventAt("Review", 2026, 11, 3, 9);
    item.alarms = {std::move(alarm)};
    const auto identifier = put(item).identifier;
    const auto event = ek().eventWithIdentifier(identifier);
    change(*event->alarms().front());
    std::optional<Error> error;
    EXPECT_TRUE(ek().saveEvent(event, EKSpan::kThisEvent, true, error));
    std::string text;
    store::writeItem(text, **otherStore()->event(identifier));
    std::erase(text, '\r');
    text.erase(0, text.find("BEGIN:VALARM"));
    return text.substr(0, text.find("END:VALARM"));
  }
  static store::Alarm made(store::Alarm::Action action, std::string extra) {
    store::Alarm alarm;
    alarm.action = action;
    alarm.extra = std::move(extra);
    return alarm;
  }
};

TEST_F(AlarmLines, ANewSoundDropsWhatWasSaidOfTheOldOne) {
  auto alarm = made(store::Alarm::Action::kAudio, "@ATTACH;FMTTYPE=audio/basic\nX-A:1\n");
  alarm.soundName = "Basso";
  EXPECT_EQ(afterSaving(alarm, [](EKAlarm& each) { each.setSoundName("Ping"); }),
            "BEGIN:VALARM\nACTION:AUDIO\nTRIGGER:PT0S\nATTACH;VALUE=URI:Ping\nX-A:1\n");
  EXPECT_EQ(afterSaving(alarm, [](EKAlarm& each) { each.setSoundName("Basso"); }),
            "BEGIN:VALARM\nACTION:AUDIO\nTRIGGER:PT0S\nATTACH;VALUE=URI;FMTTYPE=audio/basic:Basso\nX-A:1\n");
}

TEST_F(AlarmLines, ANewSoundTakesThePlaceOfOneOfBytes) {
  const auto alarm = made(store::Alarm::Action::kAudio, "ATTACH;ENCODING=BASE64;VALUE=BINARY:AAAA\nX-A:1\n");
  EXPECT_EQ(afterSaving(alarm, [](EKAlarm& each) { each.setSoundName("Ping"); }),
            "BEGIN:VALARM\nACTION:AUDIO\nTRIGGER:PT0S\nATTACH;VALUE=URI:Ping\nX-A:1\n");
}

TEST_F(AlarmLines, ANewAddressLeavesTheOthersAndTheAttachments) {
  auto alarm = made(store::Alarm::Action::kEmail,
                    "@ATTENDEE;CN=J\nATTENDEE:mailto:k@x\nATTACH:file:///x\nDESCRIPTION:d\nSUMMARY:s\n");
  alarm.emailAddress = "j@x";
  EXPECT_EQ(afterSaving(alarm, [](EKAlarm& each) { each.setEmailAddress("new@x"); }),
            "BEGIN:VALARM\nACTION:EMAIL\nTRIGGER:PT0S\nATTENDEE:mailto:new@x\nATTENDEE:mailto:k@x\nATTACH:file:///x\n"
            "DESCRIPTION:d\nSUMMARY:s\n");
}

TEST_F(EventKitDetails, APatternIsNoColor) {
  const auto calendar = eventCalendars()[0];
  calendar->setColor(Color::calibratedRgb(1, 0.5, 0));
  Color pattern;
  pattern.space = Color::Space::kPattern;
  calendar->setColor(pattern);
  EXPECT_EQ(calendar->color(), Color::calibratedRgb(1, 0.5, 0));
}

TEST_F(EventKitDetails, ANewCalendarIsSavedOnceItHasATitleAndASource) {
  const auto calendar = kit().calendarForEntityType(EKEntityType::kEvent, ekStore());
  std::optional<Error> error;
  EXPECT_FALSE(ek().saveCalendar(calendar, true, error));
  ASSERT_TRUE(error);
  EXPECT_THAT(error->localizedDescription, testing::Not(IsEmpty()));
  calendar->setTitle("Work");
  error.reset();
  EXPECT_FALSE(ek().saveCalendar(calendar, true, error)) << "without a source";
  calendar->setSource(ek().defaultCalendarForNewEvents()->source());
  error.reset();
  EXPECT_TRUE(ek().saveCalendar(calendar, true, error)) << error->localizedDescription;
  ASSERT_TRUE(calendar->calendarIdentifier());
  EXPECT_EQ(ek().calendarWithIdentifier(*calendar->calendarIdentifier())->title(), "Work");
}

TEST_F(EventKitDetails, SavingOrRemovingNothingIsRefused) {
  std::optional<Error> error;
  EXPECT_FALSE(ek().saveCalendar(nullptr, true, error));
  EXPECT_TRUE(error);
  error.reset();
  EXPECT_FALSE(ek().saveEvent(nullptr, EKSpan::kThisEvent, true, error));
  EXPECT_TRUE(error);
  error.reset();
  EXPECT_FALSE(ek().removeReminder(nullptr, true, error));
  EXPECT_TRUE(error);
}

}  // namespace
}  // namespace orlocal
