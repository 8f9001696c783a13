#include <gmock/gmock.h>

#include "store/edits/event_times.h"
#include "store/edits/item_writer.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Events : public StoreTest {
 protected:
  Item simple() { return event("review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")); }
  Item weekly(std::optional<std::int64_t> count = std::nullopt) {
    Item item = simple();
    item.recurrence.rules = {rule(Frequency::kWeekly, count)};
    return saved(item);
  }
  Failure refusal(Item item) {
    const auto status = saveEvent(*store, item, std::nullopt, Span::kThis);
    EXPECT_FALSE(status);
    return status ? Failure() : status.error();
  }
  std::vector<Occurrence> all() { return occurrences(at("2026-01-01 00:00"), at("2027-01-01 00:00")); }
  Item openedAt(const Occurrence& occurrence) {
    Item item = read(occurrence.item);
    if (item.series) { return item; }
    item.start->local = berlinZone().toLocal(occurrence.start);
    item.end->local = berlinZone().toLocal(occurrence.end);
    return item;
  }
  Calendar readOnlyCalendar() {
    Calendar calendar = madeCalendar("Fixed");
    calendar.readOnly = true;
    EXPECT_TRUE(store->saveCalendar(calendar));
    return calendar;
  }
  /// Puts an event with one attendee, as an import does.
  Item invitation() {
    auto writer = std::move(*store->startWriting());
    Item item = simple();
    item.uid = "invitation";
    item.attendees = {{"mailto:a@example.org", "A", Attendee::Status::kAccepted, Attendee::Role::kRequired,
                       Attendee::Type::kPerson, false, ""}};
    std::vector<Item> none;
    EXPECT_TRUE(writer->put(item.calendar, item, none));
    EXPECT_TRUE(writer->commit());
    return item;
  }
};

/// Saves, in a store that has a few events, so that what it writes goes into pages that are there.
class PagesOfASave : public Events {
 protected:
  void SetUp() override {
    Events::SetUp();
    for (int i = 0; i < 3; ++i) { known = saved(simple()); }
  }
  template <class Work>
  std::uintmax_t pagesOf(const Work& work) {
    const auto log = file.string() + "-wal";
    const auto before = std::filesystem::file_size(log);
    work();
    constexpr std::uintmax_t kFrame = 4096 + 24;
    return (std::filesystem::file_size(log) - before) / kFrame;
  }
  Item known;
};

TEST_F(PagesOfASave, AreTheRowItsIdentifierItsTimeAndTheLog) {
  EXPECT_EQ(pagesOf([&] { saved(simple()); }), 4u);
}

TEST_F(PagesOfASave, AreTheRowAndTheLogWhereNothingMoved) {
  known.title = "changed";
  EXPECT_EQ(pagesOf([&] { saved(known); }), 2u);
}

TEST_F(Events, AreSavedWithoutCharactersThatNoFileCarries) {
  Item item = simple();
  item.title = std::string("a\0b\x01\x1b\x7f", 6) + "\tc";
  item.notes = "one\r\ntwo\rthree\x02";
  const Item stored = read(saved(item).id);
  EXPECT_EQ(stored.title, "ab\tc");
  EXPECT_EQ(stored.notes, "one\r\ntwo\rthree");
}

TEST_F(Events, AreRefusedWhenNoImportWouldTakeThem) {
  Item item = simple();
  item.notes = std::string(std::size_t{17} << 20, 'x');
  const Failure error = refusal(item);
  EXPECT_EQ(error.code, ErrorCode::kTooLarge);
  EXPECT_THAT(error.message, HasSubstr("more than 16 MiB"));
  EXPECT_THAT(all(), IsEmpty());
}

TEST_F(Events, AreRefusedWhenTheTextsOfTheirAlarmsAreTooLong) {
  const std::string tooLong(std::size_t{17} << 20, 'x');
  for (auto text : {&Alarm::emailAddress, &Alarm::soundName, &Alarm::url}) {
    Item item = simple();
    item.alarms.emplace_back().*text = tooLong;
    EXPECT_EQ(refusal(item).code, ErrorCode::kTooLarge);
  }
}

TEST_F(Events, HaveAlarmsWithoutCharactersThatNoFileCarriesThere) {
  Item item = simple();
  const std::string text("a\0b\r\nc\x1b\x7f\td", 10);
  Alarm& alarm = item.alarms.emplace_back();
  alarm.emailAddress = alarm.soundName = alarm.url = text;
  const Item stored = read(saved(item).id);
  ASSERT_EQ(stored.alarms.size(), 1U);
  EXPECT_EQ(stored.alarms[0].emailAddress, "abc\td");
  EXPECT_EQ(stored.alarms[0].soundName, "abc\td");
  EXPECT_EQ(stored.alarms[0].url, "abc\td");
}

TEST_F(Events, MayHaveLongNotes) {
  Item item = simple();
  item.notes = std::string(std::size_t{10} << 20, 'x');
  EXPECT_EQ(read(saved(item).id).notes->size(), std::size_t{10} << 20);
}

TEST_F(Events, ComeBackAsTheyWereSaved) {
  Item item = simple();
  item.notes = "";
  item.location = "Room 5, “Süd”";
  item.url = "https://example.org/?a=b";
  item.priority = 5;
  item.extra = "X-THING;A=1:b\nCATEGORIES:One\n";
  item.alarms = {
      {Alarm::Action::kAudio, AlarmOffset{std::chrono::minutes(-15), true}, "a@b.org", "Glass", "x:y", "X-A:1\n"},
      {Alarm::Action::kEmail, at("2026-11-02 08:00"), std::nullopt, std::nullopt, std::nullopt, ""}};
  item.recurrence.rules = {rule(Frequency::kYearly)};
  item.recurrence.rules[0].byDay = {{-1, 4}, {2, 0}};
  item.recurrence.rules[0].bySetPosition = {-1, 366};
  item.recurrence.rules[0].weekStart = 0;
  item.recurrence.rules[0].until = utc("2040-11-02 08:00");
  item.recurrence.added = {berlin("2026-12-24 09:00"), floating("2026-12-25 09:00")};
  item.recurrence.excluded = {day("2026-12-26")};
  item = saved(item);
  store = opened();
  EXPECT_EQ(read(item.id), item);
}

TEST_F(Events, KeepEndsInAnotherZone) {
  Item item = simple();
  item.end = CalendarTime{CalendarTime::Kind::kZoned, local("2026-11-02 13:00"), "America/New_York"};
  item = saved(item);
  store = opened();
  EXPECT_EQ(read(item.id).end, item.end);
}

TEST_F(Events, GetIdentifiersThatNeverChange) {
  Item item = saved(simple());
  EXPECT_FALSE(item.identifier.empty());
  EXPECT_FALSE(item.uid.empty());
  const Item before = item;
  item.title = "renamed";
  item = saved(item);
  EXPECT_EQ(item.identifier, before.identifier);
  EXPECT_EQ(item.itemIdentifier, before.itemIdentifier);
  EXPECT_EQ(item.uid, before.uid);
  EXPECT_EQ((*store->event(before.identifier))->title, "renamed");
}

TEST_F(Events, NeverReuseAnIdentifierOrARow) {
  const Item gone = saved(simple());
  ASSERT_TRUE(store->removeEvent(gone, std::nullopt, Span::kThis));
  const Item next = saved(simple());
  EXPECT_GT(next.id, gone.id);
  EXPECT_GT(next.identifier, gone.identifier);
  EXPECT_EQ(*store->event(gone.identifier), nullptr);
}

TEST_F(Events, AreNotOpenedByAReminder) {
  const Item item = saved(reminder("milk"));
  EXPECT_EQ(*store->event(item.identifier), nullptr);
  EXPECT_NE(*store->itemWithIdentifier(item.itemIdentifier), nullptr);
}

TEST_F(Events, AreStamped) {
  const Item item = saved(simple());
  EXPECT_EQ(item.created, now());
  EXPECT_EQ(item.modified, now());
}

TEST_F(Events, NeedACalendar) {
  Item item = simple();
  item.calendar = 0;
  EXPECT_THAT(refusal(item).message, HasSubstr("calendar"));
}

TEST_F(Events, NeedAStart) {
  Item item = simple();
  item.start.reset();
  EXPECT_THAT(refusal(item).message, HasSubstr("start"));
}

TEST_F(Events, NeedAnEnd) {
  Item item = simple();
  item.end.reset();
  EXPECT_THAT(refusal(item).message, HasSubstr("end"));
}

TEST_F(Events, DoNotEndBeforeTheyStart) {
  Item item = simple();
  item.end = berlin("2026-11-02 08:59");
  EXPECT_EQ(refusal(item).code, ErrorCode::kInvalid);
}

TEST_F(Events, HaveStartAndEndOnOneKindOfClock) {
  const std::vector<CalendarTime> times = {berlin("2026-11-02 09:00"), floating("2026-11-03 09:00"), day("2026-11-04")};
  for (const CalendarTime& start : times) {
    for (const CalendarTime& end : times) {
      if (&start >= &end) { continue; }
      Item item = event("Talk", start, end);
      const auto status = saveEvent(*store, item, std::nullopt, Span::kThis);
      ASSERT_FALSE(status);
      EXPECT_EQ(status.error().code, ErrorCode::kInvalid);
    }
  }
  saved(event("Talk", berlin("2026-11-02 09:00"), utc("2026-11-02 09:00")));
}

TEST_F(Events, DoNotGoIntoAReminderList) {
  Item item = simple();
  item.calendar = defaultCalendar(CalendarKind::kReminders);
  EXPECT_EQ(refusal(item).code, ErrorCode::kInvalid);
}

TEST_F(Events, DoNotGoIntoACalendarThatAllowsNoChanges) {
  Item item = simple();
  item.calendar = readOnlyCalendar().id;
  EXPECT_EQ(refusal(item).code, ErrorCode::kReadOnly);
  EXPECT_THAT(all(), IsEmpty());
}

TEST_F(Events, OfACalendarThatAllowsNoChangesAreNotRemoved) {
  Calendar calendar = madeCalendar("Fixed");
  Item item = simple();
  item.calendar = calendar.id;
  item = saved(item);
  calendar.readOnly = true;
  ASSERT_TRUE(store->saveCalendar(calendar));
  const auto status = store->removeEvent(item, std::nullopt, Span::kThis);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kReadOnly);
  item.calendar = defaultCalendar();
  EXPECT_EQ(refusal(item).code, ErrorCode::kReadOnly);
}

TEST_F(Events, WithAttendeesAreNotSaved) {
  Item item = invitation();
  item.title = "changed";
  EXPECT_EQ(refusal(item).code, ErrorCode::kRefused);
  item.attendees.clear();
  EXPECT_EQ(refusal(item).code, ErrorCode::kRefused);
  EXPECT_EQ(read(item.id).title, "review");
}

TEST_F(Events, WithAttendeesCanBeRemoved) {
  EXPECT_TRUE(store->removeEvent(invitation(), std::nullopt, Span::kThis));
  EXPECT_THAT(all(), IsEmpty());
}

TEST_F(Events, ThatAreGoneAreNotSaved) {
  Item item = saved(simple());
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, Span::kThis));
  EXPECT_EQ(refusal(item).code, ErrorCode::kNotFound);
  EXPECT_EQ(store->removeEvent(item, std::nullopt, Span::kThis).error().code, ErrorCode::kNotFound);
}

TEST_F(Events, MoveBetweenCalendars) {
  const Calendar work = madeCalendar("Work");
  Item item = saved(simple());
  item.calendar = work.id;
  saved(item);
  auto query = range(std::nullopt, std::nullopt);
  query.calendars = {work.id};
  EXPECT_EQ(store->occurrences(query)->size(), 1u);
  EXPECT_EQ(all().size(), 1u);
}

TEST_F(Events, LeaveNothingBehindWhenTheyMoveInTime) {
  Item item = saved(simple());
  item.start = day("2019-01-01");
  item.end = day("2026-06-01");
  saved(item);
  EXPECT_THAT(occurrences(at("2026-11-01 00:00"), at("2026-12-01 00:00")), IsEmpty());
  EXPECT_EQ(occurrences(at("2020-01-01 00:00"), at("2020-01-02 00:00")).size(), 1u);
}

TEST_F(Events, BecomeASeriesWhenTheyGetARule) {
  Item item = saved(simple());
  item.recurrence.rules = {rule(Frequency::kDaily, 3)};
  saved(item);
  EXPECT_EQ(all().size(), 3u);
}

TEST_F(Events, BecomeSingleWhenTheyLoseTheirRule) {
  Item item = weekly(5);
  item.recurrence = Recurrence();
  ASSERT_TRUE(saveEvent(*store, item, all()[0], Span::kFuture));
  EXPECT_EQ(all().size(), 1u);
}

TEST_F(Events, DoNotChangeTheirRuleForOneDayAlone) {
  weekly();
  Item item = openedAt(all()[1]);
  item.recurrence.rules[0].interval = 2;
  const auto status = saveEvent(*store, item, all()[1], Span::kThis);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kInvalid);
}

TEST_F(Events, TakeANewRuleFromOneOccurrenceOn) {
  weekly(6);
  Item item = openedAt(all()[2]);
  item.recurrence.rules = {rule(Frequency::kDaily, 2)};
  ASSERT_TRUE(saveEvent(*store, item, all()[2], Span::kFuture));
  EXPECT_THAT(listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")),
              ElementsAre("2026-11-02 09:00 review", "2026-11-09 09:00 review", "2026-11-16 09:00 review",
                          "2026-11-17 09:00 review"));
}

TEST_F(Events, CountOnWhenASplitBeginsBesideTheRule) {
  Item item = simple();
  item.recurrence.rules = {rule(Frequency::kWeekly, 6)};
  item.recurrence.added = {berlin("2026-11-18 09:00")};
  saved(item);
  const auto before = all();
  ASSERT_EQ(before.size(), 7u);
  Item edited = openedAt(before[3]);
  ASSERT_EQ(shown(before[3].start), "2026-11-18 09:00");
  ASSERT_TRUE(saveEvent(*store, edited, before[3], Span::kFuture));
  const auto after = all();
  ASSERT_EQ(after.size(), 7u);
  for (std::size_t i = 0; i < 7; ++i) { EXPECT_EQ(after[i].start, before[i].start); }
}

TEST_F(Events, OpenAtTheirFirstOccurrence) {
  const Item item = weekly();
  ASSERT_TRUE(store->removeEvent(item, all()[0], Span::kThis));
  const auto first = *store->firstOccurrence(read(item.id));
  ASSERT_TRUE(first);
  EXPECT_EQ(shown(first->start), "2026-11-09 09:00");
}

TEST_F(Events, OpenAtAFirstOccurrenceThatWasChanged) {
  const Item item = weekly();
  Item edited = openedAt(all()[0]);
  edited.title = "kick-off";
  ASSERT_TRUE(saveEvent(*store, edited, all()[0], Span::kThis));
  const auto first = *store->firstOccurrence(read(item.id));
  ASSERT_TRUE(first);
  EXPECT_EQ(first->item, edited.id);
  EXPECT_EQ(first->event, item.id);
}

TEST_F(Events, GoWithTheirLastOccurrence) {
  const Item item = weekly(2);
  ASSERT_TRUE(store->removeEvent(item, all()[1], Span::kThis));
  ASSERT_TRUE(store->removeEvent(item, all()[0], Span::kThis));
  EXPECT_EQ(*store->item(item.id), nullptr);
}

TEST_F(Events, LeaveTheirSeriesWhenOneDayMovesToAnotherCalendar) {
  const Item item = weekly(3);
  const Calendar work = madeCalendar("Work");
  Item edited = openedAt(all()[1]);
  edited.calendar = work.id;
  ASSERT_TRUE(saveEvent(*store, edited, all()[1], Span::kThis));
  EXPECT_NE(edited.identifier, item.identifier);
  EXPECT_NE(edited.uid, item.uid);
  EXPECT_FALSE(edited.series);
  EXPECT_EQ(all().size(), 3u);
  EXPECT_EQ(read(item.id).recurrence.excluded.size(), 1u);
}

TEST_F(Events, TakeTheirChangedOccurrencesToAnotherCalendar) {
  weekly(3);
  Item changed = openedAt(all()[1]);
  changed.title = "changed";
  ASSERT_TRUE(saveEvent(*store, changed, all()[1], Span::kThis));
  const Calendar work = madeCalendar("Work");
  Item edited = openedAt(all()[0]);
  edited.calendar = work.id;
  ASSERT_TRUE(saveEvent(*store, edited, all()[0], Span::kFuture));
  auto query = range(std::nullopt, std::nullopt);
  query.calendars = {work.id};
  EXPECT_EQ(store->occurrences(query)->size(), 3u);
}

TEST_F(Events, ChangeAChangedOccurrenceAgain) {
  weekly(3);
  Item edited = openedAt(all()[1]);
  edited.title = "changed";
  ASSERT_TRUE(saveEvent(*store, edited, all()[1], Span::kThis));
  const Item first = edited;
  edited.title = "changed again";
  ASSERT_TRUE(saveEvent(*store, edited, all()[1], Span::kThis));
  EXPECT_EQ(edited.id, first.id);
  EXPECT_EQ(edited.itemIdentifier, first.itemIdentifier);
  EXPECT_EQ(read(first.id).title, "changed again");
  EXPECT_EQ(all().size(), 3u);
}

TEST_F(Events, CarryAChangeOfAChangedOccurrenceToTheLaterOnes) {
  weekly(4);
  Item moved = openedAt(all()[1]);
  moved.start = berlin("2026-11-09 15:00");
  moved.end = berlin("2026-11-09 16:00");
  ASSERT_TRUE(saveEvent(*store, moved, all()[1], Span::kThis));
  moved.title = "new title";
  ASSERT_TRUE(saveEvent(*store, moved, all()[1], Span::kFuture));
  EXPECT_THAT(listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")),
              ElementsAre("2026-11-02 09:00 review", "2026-11-09 15:00 new title", "2026-11-16 09:00 new title",
                          "2026-11-23 09:00 new title"));
}

TEST_F(Events, CarryAnotherZoneAndLengthOfAChangedOccurrenceToTheLaterOnes) {
  weekly(4);
  Item moved = openedAt(all()[1]);
  moved.title = "changed";
  ASSERT_TRUE(saveEvent(*store, moved, all()[1], Span::kThis));
  moved.start = utc("2026-11-09 16:00");
  moved.end = utc("2026-11-09 17:30");
  ASSERT_TRUE(saveEvent(*store, moved, all()[1], Span::kFuture));
  EXPECT_THAT(listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")),
              ElementsAre("2026-11-02 09:00 review", "2026-11-09 17:00 changed", "2026-11-16 17:00 review",
                          "2026-11-23 17:00 review"));
  EXPECT_EQ(read(all()[2].item).start->kind, CalendarTime::Kind::kUtc);
  EXPECT_EQ(all()[2].end - all()[2].start, std::chrono::minutes(90));
}

TEST_F(Events, FollowAMoveToAnotherWeekday) {
  Item item = simple();
  item.recurrence.rules = {rule(Frequency::kWeekly, 4)};
  item.recurrence.rules[0].byDay = {{0, 1}};
  saved(item);
  Item edited = openedAt(all()[2]);
  edited.start = berlin("2026-11-17 09:00");
  edited.end = berlin("2026-11-17 10:00");
  ASSERT_TRUE(saveEvent(*store, edited, all()[2], Span::kFuture));
  EXPECT_THAT(listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")),
              ElementsAre("2026-11-02 09:00 review", "2026-11-09 09:00 review", "2026-11-17 09:00 review",
                          "2026-11-24 09:00 review"));
}

TEST_F(Events, BecomeWholeDaysWithTheirExceptions) {
  weekly(4);
  ASSERT_TRUE(store->removeEvent(read(all()[2].item), all()[2], Span::kThis));
  Item edited = openedAt(all()[0]);
  edited.start = day("2026-11-02");
  edited.end = day("2026-11-03");
  ASSERT_TRUE(saveEvent(*store, edited, all()[0], Span::kFuture));
  EXPECT_THAT(listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")),
              ElementsAre("2026-11-02 00:00 review", "2026-11-09 00:00 review", "2026-11-23 00:00 review"));
}

TEST_F(Events, KeepTheirLastOccurrenceWhenAnEndedSeriesMovesLater) {
  Item item = simple();
  item.recurrence.rules = {rule(Frequency::kWeekly)};
  item.recurrence.rules[0].until = utc("2026-11-23 08:00");
  saved(item);
  ASSERT_EQ(all().size(), 4u);
  Item edited = openedAt(all()[0]);
  edited.start = berlin("2026-11-02 15:00");
  edited.end = berlin("2026-11-02 16:00");
  ASSERT_TRUE(saveEvent(*store, edited, all()[0], Span::kFuture));
  EXPECT_EQ(all().size(), 4u);
  EXPECT_EQ(shown(all().back().start), "2026-11-23 15:00");
}

TEST_F(Events, CanBeChangedAgainAfterASplit) {
  weekly(6);
  Item edited = openedAt(all()[3]);
  edited.title = "right";
  ASSERT_TRUE(saveEvent(*store, edited, all()[3], Span::kFuture));
  const auto first = *store->firstOccurrence(edited);
  ASSERT_TRUE(first);
  edited.title = "right again";
  ASSERT_TRUE(saveEvent(*store, edited, first, Span::kFuture));
  EXPECT_EQ(all().size(), 6u);
  EXPECT_EQ(read(all()[5].item).title, "right again");
  EXPECT_EQ(read(all()[0].item).title, "review");
}

TEST_F(Events, AreSplitAtAnAddedDateBehindTheRulesLastOne) {
  for (const bool counted : {true, false}) {
    Item item = simple();
    item.recurrence.rules = {counted ? rule(Frequency::kDaily, 3) : rule(Frequency::kDaily)};
    if (!counted) { item.recurrence.rules[0].until = utc("2026-11-04 08:00"); }
    item.recurrence.added = {berlin("2026-11-10 09:00"), berlin("2026-11-12 09:00")};
    const Item series = saved(item);
    ASSERT_EQ(all().size(), 5U);
    Item edited = openedAt(all()[3]);
    edited.title = "right";
    ASSERT_TRUE(saveEvent(*store, edited, all()[3], Span::kFuture));
    EXPECT_THAT(listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")),
                ElementsAre("2026-11-02 09:00 review", "2026-11-03 09:00 review", "2026-11-04 09:00 review",
                            "2026-11-10 09:00 right", "2026-11-12 09:00 right"));
    EXPECT_THAT(read(edited.id).recurrence.rules, IsEmpty());
    EXPECT_THAT(read(series.id).recurrence.added, IsEmpty());
    for (const ItemId id : {series.id, edited.id}) {
      ASSERT_TRUE(store->removeEvent(read(id), std::nullopt, Span::kAll));
    }
  }
}

TEST(ZonedTime, IsInUtcWhereTheViewersZoneHasNoNameThatOthersKnow) {
  const CalendarTime expected = utc("2026-11-02 08:00");
  EXPECT_EQ(zonedTime(at("2026-11-02 09:00"), Zone()), expected);
  EXPECT_EQ(zonedTime(at("2026-11-02 09:00"), *Zone::named("Etc/UTC")), expected);
  EXPECT_EQ(zonedTime(at("2026-11-02 09:00"), berlinZone()), berlin("2026-11-02 09:00"));
}

TEST_F(Events, WithoutATitleAreNamedSoWhenTheyAreGone) {
  Item item = simple();
  item.title.reset();
  item = saved(item);
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, Span::kThis));
  EXPECT_EQ(refusal(item).message, "The event without a title is no longer in the calendar store.");
}

TEST_F(Events, OfASeriesKeepTheirLengthWhenAllOfItMoves) {
  weekly(3);
  Item edited = openedAt(all()[1]);
  edited.start = berlin("2026-11-09 11:30");
  edited.end = berlin("2026-11-09 12:30");
  ASSERT_TRUE(saveEvent(*store, edited, all()[1], Span::kAll));
  std::vector<std::string> times;
  for (const Occurrence& each : all()) { times.push_back(shown(each.start) + " to " + shown(each.end)); }
  EXPECT_THAT(times, ElementsAre("2026-11-02 11:30 to 2026-11-02 12:30", "2026-11-09 11:30 to 2026-11-09 12:30",
                                 "2026-11-16 11:30 to 2026-11-16 12:30"));
}

TEST_F(Events, StayOnTheirHourWhenTheyAreSplitWhereTheClockSkipsIt) {
  Item item = event("early", berlin("2026-03-27 02:30"), berlin("2026-03-27 02:45"));
  item.recurrence.rules = {rule(Frequency::kDaily, 5)};
  saved(item);
  const Occurrence skipped = all()[2];
  ASSERT_EQ(shown(skipped.start), "2026-03-29 03:30");
  Item edited = openedAt(skipped);
  edited.title = "right";
  ASSERT_TRUE(saveEvent(*store, edited, skipped, Span::kFuture));
  EXPECT_THAT(listed(at("2026-01-01 00:00"), at("2027-01-01 00:00")),
              ElementsAre("2026-03-27 02:30 early", "2026-03-28 02:30 early", "2026-03-29 03:30 right",
                          "2026-03-30 02:30 right", "2026-03-31 02:30 right"));
}

TEST_F(Events, OfASeriesThatEndsAsOneStandWhereItBegan) {
  const Item series = weekly(4);
  Item changed = openedAt(all()[1]);
  changed.title = "changed";
  ASSERT_TRUE(saveEvent(*store, changed, all()[1], Span::kThis));
  Item edited = openedAt(all()[2]);
  edited.recurrence.rules.clear();
  ASSERT_TRUE(saveEvent(*store, edited, all()[2], Span::kAll));
  ASSERT_EQ(all().size(), 1U);
  EXPECT_EQ(shown(all()[0].start), "2026-11-02 09:00");
  EXPECT_EQ(shown(all()[0].end), "2026-11-02 10:00");
  EXPECT_THAT((*store->wholeItem(series.id))->changed, IsEmpty());
}

TEST(MovingToAnOccurrence, KeepsHowManyDaysItLasts) {
  Item series;
  series.start = day("2026-11-02");
  series.end = day("2026-11-05");
  series.recurrence.rules = {rule(Frequency::kWeekly)};
  const Moment start = at("2026-11-16 00:00");
  moveToOccurrence(series, {start, at("2026-11-19 00:00"), start}, berlinZone());
  EXPECT_EQ(series.start, day("2026-11-16"));
  EXPECT_EQ(series.end, day("2026-11-19"));
}

}  // namespace
}  // namespace orlocal::store
