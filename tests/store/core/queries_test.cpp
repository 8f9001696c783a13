#include "store/core/queries.h"

#include <algorithm>
#include <random>
#include <tuple>

#include <gmock/gmock.h>

#include "store/edits/item_writer.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;
using testing::ElementsAre;
using testing::IsEmpty;

class RangeQuery : public StoreTest {};

TEST_F(RangeQuery, FindsWhatOverlapsTheHalfOpenRange) {
  saved(event("before", berlin("2026-11-02 08:00"), berlin("2026-11-02 09:00")));
  saved(event("reaches in", berlin("2026-11-02 08:30"), berlin("2026-11-02 09:30")));
  saved(event("inside", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  saved(event("after", berlin("2026-11-02 10:00"), berlin("2026-11-02 11:00")));
  EXPECT_THAT(listed(at("2026-11-02 09:00"), at("2026-11-02 10:00")),
              ElementsAre("2026-11-02 08:30 reaches in", "2026-11-02 09:00 inside"));
}

TEST_F(RangeQuery, TakesAnEventWithoutLengthWhereItStands) {
  saved(event("point", berlin("2026-11-02 09:00"), berlin("2026-11-02 09:00")));
  EXPECT_EQ(occurrences(at("2026-11-02 09:00"), at("2026-11-02 10:00")).size(), 1u);
  EXPECT_THAT(occurrences(at("2026-11-02 08:00"), at("2026-11-02 09:00")), IsEmpty());
}

TEST_F(RangeQuery, FindsAnEventThatBeganYearsBefore) {
  saved(event("sabbatical", berlin("2019-01-01 00:00"), berlin("2031-01-01 00:00")));
  EXPECT_EQ(occurrences(at("2026-11-02 09:00"), at("2026-11-02 10:00")).size(), 1u);
}

TEST_F(RangeQuery, OrdersByStartThenEndThenIdentifier) {
  const Item late = saved(event("b", berlin("2026-11-02 10:00"), berlin("2026-11-02 11:00")));
  saved(event("c", berlin("2026-11-02 09:00"), berlin("2026-11-02 11:00")));
  saved(event("d", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  const Item twin = saved(event("e", berlin("2026-11-02 10:00"), berlin("2026-11-02 11:00")));
  EXPECT_LT(late.identifier, twin.identifier);
  EXPECT_THAT(listed(at("2026-11-02 00:00"), at("2026-11-03 00:00")),
              ElementsAre("2026-11-02 09:00 d", "2026-11-02 09:00 c", "2026-11-02 10:00 b", "2026-11-02 10:00 e"));
}

TEST_F(RangeQuery, AsksOnlyTheCalendarsNamed) {
  const Calendar work = madeCalendar("Work");
  Item item = event("review", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  item.calendar = work.id;
  saved(item);
  saved(event("dentist", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  auto query = range(at("2026-11-01 00:00"), at("2026-11-08 00:00"));
  query.calendars = {work.id};
  EXPECT_EQ(store->occurrences(query)->size(), 1u);
  query.calendars = {};
  EXPECT_THAT(*store->occurrences(query), IsEmpty());
}

TEST_F(RangeQuery, ReadsWholeDaysOnTheViewersClock) {
  saved(event("holiday", day("2026-11-02"), day("2026-11-03")));
  const auto found = occurrences(at("2026-11-02 23:59"), at("2026-11-03 00:00"));
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].start, at("2026-11-02 00:00"));
  EXPECT_EQ(found[0].end, at("2026-11-03 00:00"));
  EXPECT_THAT(occurrences(at("2026-11-01 00:00"), at("2026-11-02 00:00")), IsEmpty());
  EXPECT_THAT(occurrences(at("2026-11-03 00:00"), at("2026-11-04 00:00")), IsEmpty());
}

TEST_F(RangeQuery, ReadsWholeDaysFarFromGreenwich) {
  saved(event("holiday", day("2026-11-02"), day("2026-11-03")));
  for (const char* name : {"Pacific/Kiritimati", "Pacific/Pago_Pago", "Etc/GMT+12"}) {
    StoreOptions elsewhere = options();
    elsewhere.viewer = *Zone::named(name);
    store = std::move(*CalendarStore::open(elsewhere));
    const Moment midnight = elsewhere.viewer.toMoment(local("2026-11-02"));
    EXPECT_EQ(occurrences(midnight, midnight + std::chrono::seconds(1)).size(), 1u) << name;
    EXPECT_THAT(occurrences(midnight - std::chrono::hours(1), midnight), IsEmpty()) << name;
  }
}

TEST_F(RangeQuery, ReadsFloatingTimesOnTheViewersClock) {
  saved(event("tea", floating("2026-11-02 16:00"), floating("2026-11-02 17:00")));
  EXPECT_THAT(listed(at("2026-11-02 16:00"), at("2026-11-02 16:01")), ElementsAre("2026-11-02 16:00 tea"));
}

TEST_F(RangeQuery, ExpandsASeriesAcrossTheClockChange) {
  Item item = event("stand-up", berlin("2026-10-22 09:00"), berlin("2026-10-22 09:15"));
  item.recurrence.rules = {rule(Frequency::kWeekly)};
  saved(item);
  EXPECT_THAT(listed(at("2026-10-20 00:00"), at("2026-11-01 00:00")),
              ElementsAre("2026-10-22 09:00 stand-up", "2026-10-29 09:00 stand-up"));
}

TEST_F(RangeQuery, GoesOnForFourYearsWhenTheRangeIsOpen) {
  Item item = event("birthday", day("2020-03-01"), day("2020-03-02"));
  item.recurrence.rules = {rule(Frequency::kYearly)};
  saved(item);
  // The clock stands at 2026-11-02; four years from there include the one of 2030.
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt).size(), 11u);
  EXPECT_EQ(occurrences(at("2035-01-01 00:00"), std::nullopt).size(), 4u);
  EXPECT_EQ(occurrences(at("2020-01-01 00:00"), at("2120-01-01 00:00")).size(), 100u);
}

TEST_F(RangeQuery, AnswersAFiniteSeriesInFullWhenTheRangeIsOpen) {
  Item item = event("course", day("2020-03-01"), day("2020-03-02"));
  item.recurrence.rules = {rule(Frequency::kYearly, 30)};
  saved(item);
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt).size(), 30u);
}

TEST_F(RangeQuery, FailsLoudlyPastItsBudget) {
  Item item = event("tick", berlin("2026-01-01 00:00"), berlin("2026-01-01 00:01"));
  item.recurrence.rules = {rule(Frequency::kHourly)};
  saved(item);
  StoreOptions few = options();
  few.occurrenceBudget = 100;
  auto small = CalendarStore::open(few);
  const auto refused = (*small)->occurrences(range(at("2026-01-01 00:00"), at("2026-02-01 00:00")));
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kBudget);
}

TEST_F(RangeQuery, FindsAYearlySeriesInItsMonthOnly) {
  Item item = event("anniversary", berlin("2001-06-15 10:00"), berlin("2001-06-15 11:00"));
  item.recurrence.rules = {rule(Frequency::kYearly)};
  saved(item);
  EXPECT_THAT(listed(at("2026-06-01 00:00"), at("2026-07-01 00:00")), ElementsAre("2026-06-15 10:00 anniversary"));
  EXPECT_THAT(listed(at("2026-07-01 00:00"), at("2027-06-01 00:00")), IsEmpty());
}

class OneEvent : public RangeQuery {
 protected:
  /// Nine to ten in Berlin, from the 2nd of November 2026 on.
  Item daily(const std::string& title, std::optional<std::int64_t> count) {
    Item item = event(title, berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
    item.recurrence.rules = {rule(Frequency::kDaily, count)};
    return saved(item);
  }
  Occurrence occurrenceOf(const Item& event, Moment originalStart) {
    const auto found = store->occurrenceAt(event, originalStart);
    EXPECT_TRUE(found && *found);
    return found && *found ? **found : Occurrence();
  }
  bool hasNone(const Item& event, Moment originalStart) {
    const auto found = store->occurrenceAt(event, originalStart);
    return found && !*found;
  }
  /// Changes the occurrence with that original start.
  void move(const Item& series, Moment from, const CalendarTime& start, const CalendarTime& end) {
    Item edited = read(series.id);
    edited.start = start;
    edited.end = end;
    ASSERT_TRUE(saveEvent(*store, edited, occurrenceOf(series, from), Span::kThis));
  }
};

TEST_F(OneEvent, IsFoundByWhereItsRulePutIt) {
  const Item series = daily("stand-up", 3);
  const Occurrence second = occurrenceOf(series, at("2026-11-03 09:00"));
  EXPECT_EQ(second.end, at("2026-11-03 10:00"));
  EXPECT_EQ(second.event, series.id);
  EXPECT_TRUE(hasNone(series, at("2026-11-03 09:30")));
  EXPECT_TRUE(hasNone(series, at("2026-11-05 09:00")));
}

TEST_F(OneEvent, IsFoundWhereItStandsWhenItDoesNotRepeat) {
  const Item single = saved(event("dentist", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  EXPECT_EQ(occurrenceOf(single, at("2026-11-02 09:00")).start, at("2026-11-02 09:00"));
  EXPECT_TRUE(hasNone(single, at("2026-11-02 09:01")));
}

TEST_F(OneEvent, IsFoundByItsOriginalStartAfterItMoved) {
  const Item series = daily("stand-up", 3);
  move(series, at("2026-11-03 09:00"), berlin("2026-12-24 15:00"), berlin("2026-12-24 16:00"));
  const Occurrence moved = occurrenceOf(series, at("2026-11-03 09:00"));
  EXPECT_EQ(moved.start, at("2026-12-24 15:00"));
  EXPECT_EQ(moved.event, series.id);
  EXPECT_NE(moved.item, series.id);
  EXPECT_TRUE(hasNone(series, at("2026-12-24 15:00")));
}

TEST_F(OneEvent, IsFoundByItsOriginalDayAfterItMoved) {
  Item item = event("holiday", day("2026-11-02"), day("2026-11-03"));
  item.recurrence.rules = {rule(Frequency::kDaily, 3)};
  const Item series = saved(item);
  move(series, at("2026-11-03 00:00"), day("2026-12-24"), day("2026-12-25"));
  EXPECT_EQ(occurrenceOf(series, at("2026-11-03 00:00")).start, at("2026-12-24 00:00"));
}

TEST_F(OneEvent, IsFoundByTheTimeThatASkippedOneBecame) {
  Item item = event("night watch", berlin("2026-03-28 02:30"), berlin("2026-03-28 02:45"));
  item.recurrence.rules = {rule(Frequency::kDaily, 3)};
  const Item series = saved(item);
  move(series, at("2026-03-29 03:30"), berlin("2026-04-10 15:00"), berlin("2026-04-10 16:00"));
  EXPECT_EQ(occurrenceOf(series, at("2026-03-29 03:30")).start, at("2026-04-10 15:00"));
}

TEST_F(OneEvent, IsFoundByItsOriginalStartWithoutItsSeries) {
  Item stray = event("moved", berlin("2026-12-24 15:00"), berlin("2026-12-24 16:00"));
  stray.uid = "stray";
  stray.recurrenceId = berlin("2026-11-03 09:00");
  auto writer = std::move(*store->startWriting());
  std::vector<Item> none;
  ASSERT_TRUE(writer->put(stray.calendar, stray, none));
  ASSERT_TRUE(writer->commit());
  writer.reset();
  EXPECT_EQ(occurrenceOf(stray, at("2026-11-03 09:00")).start, at("2026-12-24 15:00"));
  EXPECT_TRUE(hasNone(stray, at("2026-12-24 15:00")));
}

TEST_F(OneEvent, AnExceptionLeavesNone) {
  const Item series = daily("stand-up", 3);
  ASSERT_TRUE(store->removeEvent(series, occurrenceOf(series, at("2026-11-03 09:00")), Span::kThis));
  EXPECT_TRUE(hasNone(series, at("2026-11-03 09:00")));
}

TEST_F(OneEvent, AnswersWhatTheWholeRangeHasOfIt) {
  const Item series = daily("stand-up", std::nullopt);
  const Item single = saved(event("dentist", berlin("2026-11-04 09:00"), berlin("2026-11-04 11:00")));
  const Item twin = daily("lunch", 5);
  move(series, at("2026-11-03 09:00"), berlin("2026-11-04 08:00"), berlin("2026-11-04 08:30"));
  move(series, at("2026-11-05 09:00"), berlin("2026-12-24 08:00"), berlin("2026-12-24 08:30"));
  const std::optional<Moment> bounds[] = {std::nullopt, at("2026-11-04 09:30"), at("2026-11-20 00:00")};
  for (const auto& from : bounds) {
    for (const auto& to : bounds) {
      for (const Item& item : {series, single, twin}) {
        std::vector<Occurrence> expected = occurrences(from, to);
        std::erase_if(expected, [&](const Occurrence& each) { return each.event != item.id; });
        auto query = range(from, to);
        query.event = item.id;
        EXPECT_EQ(*store->occurrences(query), expected) << *item.title;
      }
    }
  }
}

TEST_F(OneEvent, IsLookedForInTheCalendarsNamedOnly) {
  auto query = range(std::nullopt, std::nullopt);
  query.event = daily("stand-up", 3).id;
  query.calendars = {madeCalendar("Work").id};
  EXPECT_THAT(*store->occurrences(query), IsEmpty());
}

TEST_F(OneEvent, CostsNothingOfWhatElseTheCalendarHolds) {
  const Item series = daily("stand-up", 3);
  Item tick = event("tick", berlin("2026-01-01 00:00"), berlin("2026-01-01 00:01"));
  tick.recurrence.rules = {rule(Frequency::kHourly)};
  saved(tick);
  StoreOptions few = options();
  few.occurrenceBudget = 10;
  store = std::move(*CalendarStore::open(few));
  ASSERT_FALSE(store->occurrences(range(std::nullopt, std::nullopt)));
  EXPECT_EQ(occurrenceOf(series, at("2026-11-03 09:00")).start, at("2026-11-03 09:00"));
  EXPECT_TRUE(hasNone(series, at("2026-11-03 09:01")));
  auto query = range(std::nullopt, std::nullopt);
  query.event = series.id;
  EXPECT_EQ(store->occurrences(query)->size(), 3u);
}

/// Random events of every kind, each range held against expanding everything.
TEST_F(RangeQuery, AgreesWithLookingAtEverything) {
  std::mt19937 random(42);
  const auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  auto writer = std::move(*store->startWriting());
  const CalendarId calendar = (*writer->defaultCalendar(CalendarKind::kEvents))->id;
  constexpr int kLengths[] = {0, 900, 3600, 7200, 90'000, 200'000, 3'000'000, 90'000'000};
  constexpr struct {
    CalendarTime::Kind kind;
    const char* zone;
  } kClocks[] = {{CalendarTime::Kind::kDate, ""},
                 {CalendarTime::Kind::kFloating, ""},
                 {CalendarTime::Kind::kZoned, "America/New_York"},
                 {CalendarTime::Kind::kUtc, ""}};
  std::vector<Item> items;
  for (int i = 0; i < 600; ++i) {
    Item item;
    item.uid = "random-" + std::to_string(i);
    const LocalTime start = LocalTime(pick(2010, 2030), pick(1, 12), pick(1, 28), pick(0, 23), pick(0, 59), 0);
    const int length = kLengths[pick(0, 7)];
    const auto& clock = kClocks[pick(0, 3)];
    setTimes(item, clock.kind, clock.zone, start, length);
    if (pick(0, 2) == 0 && length < 4'000'000) {
      RecurrenceRule repeated = rule(static_cast<Frequency>(pick(3, 6)));
      repeated.interval = pick(1, 3);
      if (pick(0, 1) == 0) { repeated.count = pick(1, 60); }
      if (pick(0, 3) == 0) { repeated.byMonth = {pick(1, 12)}; }
      item.recurrence.rules = {repeated};
    }
    std::vector<Item> none;
    const auto put = writer->put(calendar, item, none);
    ASSERT_TRUE(put) << put.error().message;
    items.push_back(item);
  }
  ASSERT_TRUE(writer->commit());
  writer.reset();

  for (int round = 0; round < 60; ++round) {
    const Moment from = at("2009-01-01 00:00") + std::chrono::hours(pick(0, 200'000));
    constexpr int kHours[] = {1, 24, 720, 9000};
    const Moment to = from + std::chrono::hours(kHours[pick(0, 3)]);
    std::vector<Occurrence> expected;
    ExpansionBudget budget(200'000'000);
    for (const Item& item : items) {
      const auto series = Series::compile(item, berlinZone());
      ASSERT_TRUE(series->expand(from, to, budget, [&](const Series::Instance& instance) {
        expected.push_back({instance.start, instance.end, instance.start, item.id, item.id});
        return true;
      }));
    }
    std::sort(expected.begin(), expected.end(), [](const Occurrence& a, const Occurrence& b) {
      return std::tie(a.start, a.end, a.item) < std::tie(b.start, b.end, b.item);
    });
    EXPECT_EQ(occurrences(from, to), expected) << shown(from) << " to " << shown(to);
  }
}

class ReminderQueries : public StoreTest {
 protected:
  std::vector<std::string> titles(ReminderQuery::Status status, std::optional<Moment> from, std::optional<Moment> to) {
    ReminderQuery query{status, from, to, {defaultCalendar(CalendarKind::kReminders)}};
    std::vector<std::string> found;
    const auto ids = *store->reminders(query);
    for (const ItemId id : ids) { found.push_back(read(id).title.value_or("-")); }
    return found;
  }
  void fill() {
    saved(reminder("some day"));
    saved(reminder("late", berlin("2026-11-05 09:00")));
    saved(reminder("early", day("2026-11-03")));
    Item done = reminder("done", berlin("2026-11-01 09:00"));
    done.completed = at("2026-11-02 07:30");
    saved(done);
  }
};

TEST_F(ReminderQueries, ComeInTheOrderOfTheirDueMoments) {
  fill();
  EXPECT_THAT(titles(ReminderQuery::Status::kAny, std::nullopt, std::nullopt),
              ElementsAre("done", "early", "late", "some day"));
}

TEST_F(ReminderQueries, LeaveOutTheCompletedOnes) {
  fill();
  EXPECT_THAT(titles(ReminderQuery::Status::kOpen, std::nullopt, std::nullopt),
              ElementsAre("early", "late", "some day"));
}

TEST_F(ReminderQueries, LeaveOutThoseWithoutADueMomentWhenItIsBounded) {
  fill();
  EXPECT_THAT(titles(ReminderQuery::Status::kOpen, std::nullopt, at("2026-11-05 09:00")), ElementsAre("early"));
  EXPECT_THAT(titles(ReminderQuery::Status::kOpen, at("2026-11-03 00:00"), at("2026-11-05 09:01")),
              ElementsAre("early", "late"));
}

TEST_F(ReminderQueries, BoundCompletedOnesByTheirCompletion) {
  fill();
  EXPECT_THAT(titles(ReminderQuery::Status::kCompleted, at("2026-11-02 07:30"), std::nullopt), ElementsAre("done"));
  EXPECT_THAT(titles(ReminderQuery::Status::kCompleted, at("2026-11-02 07:31"), std::nullopt), IsEmpty());
}

}  // namespace
}  // namespace orlocal::store
