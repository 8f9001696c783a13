#include "store/core/long_events.h"

#include <random>
#include <vector>

#include <gmock/gmock.h>

#include "store/edits/item_writer.h"
#include "store/file/sqlite.h"
#include "store/rows/packing.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;
using testing::ElementsAre;
using testing::IsEmpty;

/// The same file open three times: with series kept by their days, without, and by somebody else who writes.
class LongEventsTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    StoreOptions plain = options();
    plain.keepsLongEvents = false;
    m_without = std::move(*CalendarStore::open(plain));
    m_other = opened();
  }
  void TearDown() override {
    m_without.reset();
    m_other.reset();
    StoreTest::TearDown();
  }

  int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
  CalendarStore& either() { return pick(0, 1) == 0 ? *store : *m_other; }

  Item weekly(const std::string& title, const char* start, const char* end) {
    Item item = event(title, berlin(start), berlin(end));
    item.recurrence.rules = {rule(Frequency::kWeekly)};
    return item;
  }
  RecurrenceRule randomRule();
  Item randomItem();
  /// One change by one of the two; refused ones change nothing.
  void changeSomething();
  void expectTheSame();

  std::unique_ptr<CalendarStore> m_without, m_other;
  std::mt19937 m_random{20261123};
  int m_saved = 0;
};

RecurrenceRule LongEventsTest::randomRule() {
  RecurrenceRule made = rule(static_cast<Frequency>(pick(3, 6)));
  made.interval = pick(0, 2) == 0 ? pick(2, 4) : 1;
  if (pick(0, 2) == 0) { made.count = pick(1, 40); }
  if (!made.count && pick(0, 2) == 0) { made.until = utc("2026-12-" + std::to_string(pick(10, 28)) + " 09:00"); }
  switch (pick(0, 5)) {
    case 0:
      made.byDay = {{0, pick(0, 6)}, {0, pick(0, 6)}};
      break;
    case 1:
      made.byMonthDay = {pick(1, 31), -pick(1, 3)};
      if (made.frequency == Frequency::kWeekly) { made.frequency = Frequency::kMonthly; }
      break;
    case 2:
      made.byHour = {pick(0, 11), pick(12, 23)};
      break;
    case 3:
      made.byMonth = {pick(1, 12), 11};
      break;
    default:
      break;
  }
  return made;
}

Item LongEventsTest::randomItem() {
  constexpr int kLengths[] = {0, 900, 5400, 86'400, 180'000, 700'000};
  const LocalTime start(2026, pick(8, 12), pick(1, 28), pick(0, 23), pick(0, 3) * 15, 0);
  const int length = kLengths[pick(0, 5)];
  Item item = event("item " + std::to_string(m_saved++), berlin("2026-11-02"), berlin("2026-11-02"));
  constexpr struct {
    CalendarTime::Kind kind;
    const char* zone;
  } kClocks[] = {{CalendarTime::Kind::kDate, ""},
                 {CalendarTime::Kind::kFloating, ""},
                 {CalendarTime::Kind::kZoned, "America/New_York"},
                 {CalendarTime::Kind::kZoned, "Pacific/Apia"},
                 {CalendarTime::Kind::kUtc, ""}};
  const auto& clock = kClocks[pick(0, 4)];
  setTimes(item, clock.kind, clock.zone, start, length);
  if (pick(0, 3) != 0) { item.recurrence.rules = {randomRule()}; }
  return item;
}

void LongEventsTest::changeSomething() {
  CalendarStore& by = either();
  const int what = pick(0, 9);
  if (what <= 3) {
    Item made = randomItem();
    (void)saveEvent(by, made, std::nullopt, Span::kThis);
    return;
  }
  if (what == 4) {
    // Of what a writer did that did not commit nothing is left.
    auto writer = std::move(*by.startWriting());
    Item lost = randomItem();
    std::vector<Item> none;
    lost.uid = "lost";
    (void)writer->put(defaultCalendar(), lost, none);
    if (pick(0, 1) == 0) { (void)writer->commit(); }
    return;
  }
  const auto known = by.occurrences(range(at("2026-10-01 00:00"), at("2027-01-15 00:00")));
  if (!known || known->empty()) { return; }
  const Occurrence occurrence = (*known)[static_cast<std::size_t>(pick(0, static_cast<int>(known->size()) - 1))];
  const auto item = by.item(occurrence.item);
  if (!item || *item == nullptr) { return; }
  const Span span = static_cast<Span>(pick(0, 2));
  if (what <= 6) {
    (void)by.removeEvent(**item, occurrence, span);
    return;
  }
  Item edited = *openedNow(by, **item, occurrence, berlinZone());
  if (what == 7) { edited.recurrence.rules = {randomRule()}; }
  const int by_ = pick(-3, 3) * 1800;
  edited.start->local += edited.start->kind == CalendarTime::Kind::kDate ? by_ / 1800 * 86'400 : by_;
  edited.end->local += edited.end->kind == CalendarTime::Kind::kDate ? by_ / 1800 * 86'400 : by_;
  (void)saveEvent(by, edited, occurrence, span);
}

void LongEventsTest::expectTheSame() {
  constexpr int kHours[] = {1, 24, 24 * 7, 24 * 40};
  for (const int hours : kHours) {
    const Moment from = at("2026-09-01 00:00") + std::chrono::hours(pick(0, 24 * 150));
    const auto asked = range(from, from + std::chrono::hours(hours));
    const auto with = store->occurrences(asked), without = m_without->occurrences(asked);
    ASSERT_TRUE(with && without);
    ASSERT_EQ(*with, *without) << shown(from) << " for " << hours << " hours";
  }
}

TEST_F(LongEventsTest, AnswerLikeTheTimelineWhateverChanges) {
  for (int round = 0; round < 400; ++round) {
    changeSomething();
    expectTheSame();
    if (HasFatalFailure()) { FAIL() << "in round " << round; }
  }
  EXPECT_GT(occurrences(at("2026-11-01 00:00"), at("2026-12-01 00:00")).size(), 50u);
}

TEST_F(LongEventsTest, FollowTheClockAcrossItsChange) {
  saved(weekly("stand-up", "2026-10-18 02:30", "2026-10-18 03:00"));
  saved(weekly("spring", "2026-03-22 02:30", "2026-03-22 03:00"));
  EXPECT_THAT(listed(at("2026-10-25 00:00"), at("2026-10-26 00:00")),
              ElementsAre("2026-10-25 02:30 stand-up", "2026-10-25 02:30 spring"));
  EXPECT_THAT(listed(at("2026-03-29 03:29"), at("2026-03-29 03:31")), ElementsAre("2026-03-29 03:30 spring"));
}

TEST_F(LongEventsTest, ComeOnTheirStartThoughTheRuleDoesNotMakeIt) {
  Item course = weekly("course", "2026-11-03 09:00", "2026-11-03 10:00");
  course.recurrence.rules.front().byDay = {{0, 1}};
  saved(course);
  EXPECT_THAT(listed(at("2026-11-01 00:00"), at("2026-11-12 00:00")),
              ElementsAre("2026-11-03 09:00 course", "2026-11-09 09:00 course"));
}

TEST_F(LongEventsTest, AreReadAgainWhenAnotherProcessChangesThem) {
  const Item series = saved(weekly("stand-up", "2026-11-02 09:00", "2026-11-02 09:15"));
  EXPECT_EQ(occurrences(at("2026-11-02 00:00"), at("2026-11-16 00:00")).size(), 2u);
  ASSERT_TRUE(m_other->removeEvent(series, std::nullopt, Span::kAll));
  EXPECT_THAT(occurrences(at("2026-11-02 00:00"), at("2026-11-16 00:00")), IsEmpty());
}

TEST_F(LongEventsTest, OfAChangeThatDidNotComeAboutNothingIsKept) {
  const Item series = saved(weekly("stand-up", "2026-11-02 09:00", "2026-11-02 09:15"));
  {
    auto writer = std::move(*store->startWriting());
    Item changed = series;
    changed.start = berlin("2026-11-03 09:00");
    changed.end = berlin("2026-11-03 09:15");
    std::vector<Item> none;
    ASSERT_TRUE(writer->put(series.calendar, changed, none));
  }
  EXPECT_THAT(listed(at("2026-11-02 00:00"), at("2026-11-05 00:00")), ElementsAre("2026-11-02 09:00 stand-up"));
}

/// Nothing of this build writes a series that cannot be followed; another one, with other calendars at hand, may have.
TEST_F(LongEventsTest, LeaveAloneWhatCannotBeFollowedAndIsNotAskedFor) {
  const Calendar work = madeCalendar("Work");
  Recurrence unknown;
  unknown.rules = {rule(Frequency::kYearly)};
  unknown.rules.front().scale = "MARTIAN";
  PackedBytes packed;
  packRecurrence(unknown, packed);
  auto database = std::move(*Database::open(file, std::chrono::seconds(1)));
  auto write = std::move(*database.prepare("UPDATE items SET recurrence = ? WHERE id = ?"));
  for (int i = 0; i < 3; ++i) {
    Item item = weekly("broken", "2026-11-02 09:00", "2026-11-02 09:15");
    item.calendar = work.id;
    ASSERT_TRUE(write.bindBlob(1, packed).bind(2, saved(item).id).run());
  }
  saved(weekly("stand-up", "2026-11-02 09:00", "2026-11-02 09:15"));
  store = opened();
  auto query = range(at("2026-11-02 00:00"), at("2026-11-16 00:00"));
  query.calendars = {defaultCalendar()};
  for (int i = 0; i < 5; ++i) { EXPECT_EQ(store->occurrences(query)->size(), 2u) << i; }
  query.calendars = {work.id};
  const auto found = store->occurrences(query);
  ASSERT_FALSE(found);
  EXPECT_THAT(found.error().message, testing::HasSubstr("\"broken\""));
}

TEST_F(LongEventsTest, TellWhichOneIsTooMuch) {
  Item tick = event("tick", berlin("2026-01-01 00:00"), berlin("2026-01-01 00:01"));
  tick.recurrence.rules = {rule(Frequency::kDaily)};
  saved(tick);
  StoreOptions few = options();
  few.occurrenceBudget = 10;
  store = std::move(*CalendarStore::open(few));
  const auto found = store->occurrences(range(at("2026-11-01 00:00"), at("2026-12-01 00:00")));
  ASSERT_FALSE(found);
  EXPECT_THAT(found.error().message, testing::HasSubstr("\"tick\""));
  EXPECT_EQ(store->occurrences(range(at("2026-11-01 00:00"), at("2026-11-11 00:00")))->size(), 10u);
}

}  // namespace
}  // namespace orlocal::store
