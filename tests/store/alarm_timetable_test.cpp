#include "store/alarm_timetable.h"

#include <gmock/gmock.h>

#include "store/edits/item_writer.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using std::chrono::minutes;
using testing::ElementsAre;
using testing::IsEmpty;

class AlarmTimetableTest : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    reader = opened();
    timetable.emplace(*reader, berlinZone());
  }
  void TearDown() override {
    timetable.reset();
    reader.reset();
    StoreTest::TearDown();
  }

  static Alarm before(std::chrono::seconds offset) {
    Alarm alarm;
    alarm.trigger = AlarmOffset{-offset, false};
    return alarm;
  }
  Item meeting(const std::string& title, const std::string& start, std::vector<Alarm> alarms) {
    Item item = event(title, berlin(start), berlin(start));
    item.end->local += 3600;
    item.alarms = std::move(alarms);
    return item;
  }
  /// "2026-11-02 08:45 Title (2026-11-02 09:00)" of each ring.
  std::vector<std::string> rings(const std::string& from, const std::string& to) {
    std::vector<std::string> lines;
    const auto found = timetable->between(at(from), at(to));
    EXPECT_TRUE(found) << (found ? "" : found.error().message);
    for (const AlarmRing& ring : *found) {
      const auto row = *reader->item(ring.row);
      const auto about = row->kind == ItemKind::kEvent ? ring.start : ring.end;
      lines.push_back(shown(ring.key.moment) + " " + row->title.value_or("") + " (" +
                      (about ? shown(*about) : std::string("-")) + ")");
    }
    return lines;
  }

  std::unique_ptr<CalendarStore> reader;
  std::optional<AlarmTimetable> timetable;
};

TEST_F(AlarmTimetableTest, HasEachAlarmOfEachOccurrenceInOrder) {
  Item daily = meeting("Standup", "2026-11-02 09:00", {before(minutes(15)), before(minutes(5))});
  daily.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 3)};
  saved(daily);
  saved(meeting("Lunch", "2026-11-03 09:00", {before(minutes(10))}));
  saved(meeting("Silent", "2026-11-03 09:00", {}));
  EXPECT_THAT(rings("2026-11-02 08:50", "2026-11-04 08:55"),
              ElementsAre("2026-11-02 08:55 Standup (2026-11-02 09:00)", "2026-11-03 08:45 Standup (2026-11-03 09:00)",
                          "2026-11-03 08:50 Lunch (2026-11-03 09:00)", "2026-11-03 08:55 Standup (2026-11-03 09:00)",
                          "2026-11-04 08:45 Standup (2026-11-04 09:00)"));
}

TEST_F(AlarmTimetableTest, FindsAlarmsWeeksAndYearsBeforeAndAfterTheirEvents) {
  Item yearly = meeting("Anniversary", "2020-12-14 09:00", {before(std::chrono::days(42))});
  yearly.recurrence.rules = {rule(RecurrenceRule::Frequency::kYearly)};
  saved(yearly);
  saved(meeting("Passport", "2031-11-02 10:00", {before(std::chrono::days(5 * 365 + 1))}));
  saved(meeting("Follow-up", "2026-08-02 10:00", {before(std::chrono::days(-92))}));
  EXPECT_THAT(
      rings("2026-11-02 00:00", "2026-11-03 00:00"),
      ElementsAre("2026-11-02 09:00 Anniversary (2026-12-14 09:00)", "2026-11-02 09:00 Follow-up (2026-08-02 10:00)",
                  "2026-11-02 10:00 Passport (2031-11-02 10:00)"));
}

TEST_F(AlarmTimetableTest, TakesChangedOccurrencesWithTheirOwnAlarms) {
  Item daily = meeting("Standup", "2026-11-02 09:00", {before(minutes(15))});
  daily.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 4)};
  daily.uid = "standup";
  const auto changed = [&](const std::string& original, const std::string& start, const std::string& title) {
    Item item = meeting(title, start, {before(minutes(30))});
    item.uid = "standup";
    item.recurrenceId = berlin(original);
    return item;
  };
  std::vector<Item> parts = {changed("2026-11-03 09:00", "2026-11-03 14:00", "Late standup"),
                             changed("2026-11-04 09:00", "2026-11-04 09:00", "No standup"),
                             changed("2026-11-05 09:00", "2026-11-05 09:00", "Silent standup")};
  parts[1].extra = "STATUS:CANCELLED\n";
  parts[2].alarms.clear();
  auto writer = *store->startWriting();
  ASSERT_TRUE(writer->put(1, daily, parts));
  ASSERT_TRUE(writer->commit());
  EXPECT_THAT(
      rings("2026-11-02 00:00", "2026-11-07 00:00"),
      ElementsAre("2026-11-02 08:45 Standup (2026-11-02 09:00)", "2026-11-03 13:30 Late standup (2026-11-03 14:00)"));
}

TEST_F(AlarmTimetableTest, ReadsWholeDaysAndFloatingTimesOnTheViewersWallClock) {
  Item holiday = event("Holiday", day("2026-11-03"), day("2026-11-04"));
  holiday.alarms = {before(std::chrono::hours(15))};
  saved(holiday);
  Item pill = event("Pill", floating("2026-11-02 20:00"), floating("2026-11-02 20:00"));
  pill.alarms = {before(minutes(0))};
  pill.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 2)};
  saved(pill);
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-04 00:00"),
              ElementsAre("2026-11-02 09:00 Holiday (2026-11-03 00:00)", "2026-11-02 20:00 Pill (2026-11-02 20:00)",
                          "2026-11-03 20:00 Pill (2026-11-03 20:00)"));
  AlarmTimetable elsewhere(*reader, *Zone::named("America/New_York"));
  EXPECT_EQ(elsewhere.between(at("2026-11-02 15:00"), at("2026-11-02 15:01"))->size(), 1U);
}

TEST_F(AlarmTimetableTest, HasOpenRemindersAndNoCompletedOnes) {
  Item tax = reminder("Tax", berlin("2026-11-03 09:00"));
  tax.alarms = {before(minutes(60))};
  Item done = tax;
  done.title = "Done";
  done.completed = at("2026-11-01 09:00");
  Item undated = reminder("Undated");
  undated.alarms = {before(minutes(0)), Alarm()};
  undated.alarms[1].trigger = at("2026-11-03 10:00");
  saved(tax);
  saved(done);
  saved(undated);
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-05 00:00"),
              ElementsAre("2026-11-03 08:00 Tax (2026-11-03 09:00)", "2026-11-03 10:00 Undated (-)"));
}

TEST_F(AlarmTimetableTest, RingsAnAlarmOfASeriesAtAMomentOnceForItsNextOccurrence) {
  Item daily = meeting("Standup", "2026-11-02 09:00", {Alarm()});
  daily.alarms[0].trigger = at("2026-11-05 08:00");
  daily.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily)};
  saved(daily);
  EXPECT_THAT(rings("2026-11-01 00:00", "2026-11-30 00:00"),
              ElementsAre("2026-11-05 08:00 Standup (2026-11-05 09:00)"));
}

TEST_F(AlarmTimetableTest, TellsAlarmsOfOneMomentApart) {
  saved(meeting("Talk", "2026-11-02 09:00", {before(minutes(15)), before(minutes(15))}));
  const auto found = *timetable->between(at("2026-11-02 00:00"), at("2026-11-03 00:00"));
  ASSERT_EQ(found.size(), 2U);
  EXPECT_EQ(found[0].key.number, 0);
  EXPECT_EQ(found[1].key.number, 1);
  EXPECT_NE(found[0].alarm, found[1].alarm);
  for (const AlarmRing& ring : found) { EXPECT_EQ((*timetable->ringOf(ring.key))->alarm, ring.alarm); }
}

TEST_F(AlarmTimetableTest, FollowsWhatOthersCommit) {
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-02 12:00"), IsEmpty());
  Item talk = saved(meeting("Talk", "2026-11-02 09:00", {before(minutes(15))}));
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-02 12:00"), ElementsAre("2026-11-02 08:45 Talk (2026-11-02 09:00)"));
  talk.alarms = {before(minutes(10))};
  talk = saved(talk);
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-02 12:00"), ElementsAre("2026-11-02 08:50 Talk (2026-11-02 09:00)"));
  talk.start = berlin("2026-11-02 10:00");
  talk.end = berlin("2026-11-02 11:00");
  talk = saved(talk);
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-02 12:00"), ElementsAre("2026-11-02 09:50 Talk (2026-11-02 10:00)"));
  ASSERT_TRUE(store->removeEvent(talk, std::nullopt, Span::kAll));
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-02 12:00"), IsEmpty());
}

TEST_F(AlarmTimetableTest, FollowsChangesToOneOccurrence) {
  Item daily = meeting("Standup", "2026-11-02 09:00", {before(minutes(15))});
  daily.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 3)};
  daily = saved(daily);
  EXPECT_EQ(rings("2026-11-02 00:00", "2026-11-05 00:00").size(), 3U);
  const auto days = occurrences(at("2026-11-03 00:00"), at("2026-11-04 00:00"));
  ASSERT_TRUE(store->removeEvent(daily, days.front(), Span::kThis));
  EXPECT_THAT(
      rings("2026-11-02 00:00", "2026-11-05 00:00"),
      ElementsAre("2026-11-02 08:45 Standup (2026-11-02 09:00)", "2026-11-04 08:45 Standup (2026-11-04 09:00)"));
}

TEST_F(AlarmTimetableTest, FollowsARemovedCalendarAndAnImportOfMany) {
  const Calendar team = madeCalendar("Team");
  auto writer = *store->startWriting();
  for (int i = 0; i < 1'500; ++i) {
    Item item = meeting("Talk " + std::to_string(i), "2026-11-02 09:00", {before(minutes(15))});
    item.uid = "talk-" + std::to_string(i);
    item.calendar = team.id;
    std::vector<Item> none;
    ASSERT_TRUE(writer->put(team.id, item, none));
  }
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-03 00:00"), IsEmpty());
  ASSERT_TRUE(writer->commit());
  EXPECT_EQ(rings("2026-11-02 00:00", "2026-11-03 00:00").size(), 1'500U);
  ASSERT_TRUE(store->removeCalendar(team.identifier));
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-03 00:00"), IsEmpty());
}

TEST_F(AlarmTimetableTest, FollowsAnotherFileInThePlaceOfTheFirst) {
  saved(meeting("Old", "2026-11-02 09:00", {before(minutes(15))}));
  EXPECT_EQ(rings("2026-11-02 00:00", "2026-11-03 00:00").size(), 1U);
  store->close();
  reader->close();
  std::filesystem::remove(file);
  store = opened();
  saved(meeting("New", "2026-11-02 10:00", {before(minutes(15))}));
  store->close();
  EXPECT_THAT(rings("2026-11-02 00:00", "2026-11-03 00:00"), ElementsAre("2026-11-02 09:45 New (2026-11-02 10:00)"));
}

TEST_F(AlarmTimetableTest, SaysWhenToComeAgain) {
  saved(meeting("Talk", "2026-11-02 09:00", {before(minutes(15))}));
  EXPECT_EQ(shown(*timetable->nextFrom(at("2026-11-02 08:00"))), "2026-11-02 08:45");
  EXPECT_EQ(shown(*timetable->nextFrom(at("2026-11-02 08:45"))), "2026-11-02 08:45");
  EXPECT_GT(*timetable->nextFrom(at("2026-11-02 08:46")), at("2026-11-02 09:00")) << "nothing rings, but days go by";
}

TEST_F(AlarmTimetableTest, KnowsARingNoMoreWhenItsEventIsMovedOrCancelled) {
  Item talk = saved(meeting("Talk", "2026-11-02 09:00", {before(minutes(15))}));
  const AlarmKey key = timetable->between(at("2026-11-02 00:00"), at("2026-11-03 00:00"))->front().key;
  EXPECT_TRUE(timetable->ringOf(key)->has_value());
  talk.title = "Talk of the town";
  talk = saved(talk);
  EXPECT_TRUE(timetable->ringOf(key)->has_value()) << "it is the same ring under another title";
  talk.start = berlin("2026-11-02 10:00");
  talk.end = berlin("2026-11-02 11:00");
  saved(talk);
  EXPECT_FALSE(timetable->ringOf(key)->has_value());
}

TEST_F(AlarmTimetableTest, LosesNoOtherAlarmsToASeriesThatCannotBeFollowed) {
  saved(meeting("Talk", "2026-11-02 09:00", {before(minutes(15))}));
  Item tick = meeting("Tick", "2026-01-01 00:00", {before(minutes(15))});
  tick.recurrence.rules = {rule(RecurrenceRule::Frequency::kHourly)};
  saved(tick);
  StoreOptions few = options();
  few.occurrenceBudget = 10;
  const auto small = *CalendarStore::open(few);
  AlarmTimetable table(*small, berlinZone());
  EXPECT_EQ(table.between(at("2026-11-02 00:00"), at("2026-11-03 00:00"))->size(), 1U);
  ASSERT_EQ(table.troubles().size(), 1U);
  EXPECT_THAT(table.troubles().begin()->second, testing::HasSubstr("Tick"));
}

}  // namespace
}  // namespace orlocal::store
