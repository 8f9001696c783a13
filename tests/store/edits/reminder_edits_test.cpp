#include <gmock/gmock.h>

#include "store/edits/item_writer.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;
using testing::ElementsAre;
using testing::HasSubstr;

class ReminderEdits : public StoreTest {
 protected:
  /// "title due [done]" of each.
  std::vector<std::string> all() {
    ReminderQuery query{
        ReminderQuery::Status::kAny, std::nullopt, std::nullopt, {defaultCalendar(CalendarKind::kReminders)}};
    const auto ids = *store->reminders(query);
    std::vector<std::string> lines;
    for (const ItemId id : ids) {
      const Item item = read(id);
      lines.push_back(*item.title + (item.due ? " " + shown(momentOf(*item.due, berlinZone())) : "") +
                      (item.completed ? " done" : ""));
    }
    return lines;
  }
  Item weekly(std::optional<std::int64_t> count = std::nullopt) {
    Item item = reminder("bins", berlin("2026-10-20 07:00"));
    item.recurrence.rules = {rule(Frequency::kWeekly, count)};
    return saved(item);
  }
  Item completed(Item item) {
    item.completed = at("2026-11-02 08:00");
    return saved(item);
  }
};

TEST_F(ReminderEdits, ComeBackAsTheyWereSaved) {
  for (const auto& due :
       {std::optional<CalendarTime>(), std::optional(day("2026-11-05")), std::optional(floating("2026-11-05 09:30:15")),
        std::optional(berlin("2026-11-05 09:30:15"))}) {
    Item item = reminder("milk", due);
    item.priority = 5;
    item = saved(item);
    store = opened();
    EXPECT_EQ(read(item.id), item);
  }
}

TEST_F(ReminderEdits, NeedAList) {
  Item item = reminder("milk");
  item.calendar = 0;
  const auto status = saveReminder(*store, item);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kRefused);
  EXPECT_THAT(status.error().message, HasSubstr("list"));
}

TEST_F(ReminderEdits, DoNotGoIntoACalendarOfEvents) {
  Item item = reminder("milk");
  item.calendar = defaultCalendar();
  EXPECT_EQ(saveReminder(*store, item).error().code, ErrorCode::kInvalid);
}

TEST_F(ReminderEdits, AreNotMadeOfEvents) {
  Item item = saved(event("Talk", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  const auto status = saveReminder(*store, item);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kInvalid);
}

TEST_F(ReminderEdits, OfOneDateStayThatWhenTheyAreSaved) {
  for (const bool withSeries : {false, true}) {
    Item series = reminder("bins", berlin("2026-10-20 07:00"));
    series.uid = withSeries ? "bins" : "others";
    series.recurrence.rules = {rule(Frequency::kWeekly)};
    Item one = reminder("bins", berlin("2026-10-27 08:00"));
    one.uid = "bins";
    one.recurrenceId = berlin("2026-10-27 07:00");
    std::vector<Item> none;
    const auto writer = *store->startWriting();
    ASSERT_TRUE(writer->put(series.calendar, series, none));
    ASSERT_TRUE(writer->put(one.calendar, one, none));
    ASSERT_TRUE(writer->commit());
    EXPECT_EQ(read(one.id).series, withSeries ? std::optional(series.id) : std::nullopt);
    Item opened = read(one.id);
    opened.title = "bins and paper";
    ASSERT_TRUE(saveReminder(*store, opened));
    EXPECT_EQ(read(one.id).title, "bins and paper");
    EXPECT_EQ(read(one.id).recurrenceId, berlin("2026-10-27 07:00"));
    EXPECT_EQ(read(one.id).series, withSeries ? std::optional(series.id) : std::nullopt);
    // A file that has it still finds it.
    Item again = reminder("bins", berlin("2026-10-27 08:00"));
    again.uid = "bins";
    again.recurrenceId = one.recurrenceId;
    {
      const auto another = *store->startWriting();
      EXPECT_EQ(*another->put(again.calendar, again, none), PutOutcome::kUpdated);
      EXPECT_EQ(again.id, one.id);
      ASSERT_TRUE(another->commit());
    }
    ASSERT_TRUE(store->removeReminder(read(one.id)));
    ASSERT_TRUE(store->removeReminder(read(series.id)));
  }
}

TEST_F(ReminderEdits, AreNotEvents) {
  Item item = saved(reminder("milk"));
  EXPECT_EQ(store->removeEvent(item, std::nullopt, Span::kThis).error().code, ErrorCode::kNotFound);
  EXPECT_EQ(saveEvent(*store, item, std::nullopt, Span::kThis).error().code, ErrorCode::kInvalid);
}

TEST_F(ReminderEdits, AreCompletedAndOpenedAgain) {
  Item item = completed(saved(reminder("milk")));
  EXPECT_THAT(all(), ElementsAre("milk done"));
  item.completed.reset();
  saved(item);
  EXPECT_THAT(all(), ElementsAre("milk"));
}

TEST_F(ReminderEdits, AreRemoved) {
  const Item item = saved(reminder("milk"));
  ASSERT_TRUE(store->removeReminder(item));
  EXPECT_THAT(all(), ElementsAre());
  EXPECT_EQ(store->removeReminder(item).error().code, ErrorCode::kNotFound);
}

TEST_F(ReminderEdits, OfAListThatAllowsNoChangesStay) {
  Calendar list = madeCalendar("Fixed", CalendarKind::kReminders);
  Item item = reminder("milk");
  item.calendar = list.id;
  item = saved(item);
  list.readOnly = true;
  ASSERT_TRUE(store->saveCalendar(list));
  EXPECT_EQ(store->removeReminder(item).error().code, ErrorCode::kReadOnly);
  EXPECT_EQ(saveReminder(*store, item).error().code, ErrorCode::kReadOnly);
}

TEST_F(ReminderEdits, MoveOnWhenTheyRepeatAndKeepWhatWasDone) {
  const Item series = weekly();
  const Item next = completed(series);
  EXPECT_EQ(next.id, series.id);
  EXPECT_EQ(next.identifier, series.identifier);
  EXPECT_FALSE(next.completed);
  EXPECT_THAT(all(), ElementsAre("bins 2026-10-20 07:00 done", "bins 2026-10-27 07:00"));
}

TEST_F(ReminderEdits, EndWithTheirLastOccurrence) {
  Item item = weekly(2);
  item = completed(item);
  ASSERT_EQ(item.recurrence.rules[0].count, 1);
  item = completed(item);
  EXPECT_TRUE(item.completed);
  EXPECT_THAT(all(), ElementsAre("bins 2026-10-20 07:00 done", "bins 2026-10-27 07:00 done"));
}

TEST_F(ReminderEdits, PassOverExceptionsWhenTheyMoveOn) {
  Item item = reminder("bins", berlin("2026-10-20 07:00"));
  item.start = berlin("2026-10-19 18:00");
  item.recurrence.rules = {rule(Frequency::kWeekly)};
  item.recurrence.excluded = {berlin("2026-10-26 18:00")};
  item = completed(saved(item));
  EXPECT_EQ(item.start, berlin("2026-11-02 18:00"));
  EXPECT_EQ(item.due, berlin("2026-11-03 07:00"));
  EXPECT_TRUE(item.recurrence.excluded.empty());
}

TEST_F(ReminderEdits, LeaveAddedDatesBehindThatTheyHaveComeTo) {
  Item item = reminder("bins", berlin("2026-10-20 07:00"));
  item.recurrence.rules = {rule(Frequency::kWeekly)};
  item.recurrence.added = {berlin("2026-10-27 07:00"), berlin("2026-10-29 07:00")};
  item = completed(saved(item));
  EXPECT_EQ(item.due, berlin("2026-10-27 07:00"));
  EXPECT_THAT(item.recurrence.added, ElementsAre(berlin("2026-10-29 07:00")));
}

TEST_F(ReminderEdits, CountRulesOfExceptionsFromWhereTheSeriesBegan) {
  Item item = reminder("bins", berlin("2026-10-20 07:00"));
  item.recurrence.rules = {rule(Frequency::kWeekly)};
  ExceptionRule everyThird;
  everyThird.rule = rule(Frequency::kWeekly);
  everyThird.rule.interval = 3;
  item.recurrence.exceptionRules = {everyThird};
  item = saved(item);
  std::vector<CalendarTime> dues;
  for (int times = 0; times < 4; ++times) {
    item = completed(item);
    dues.push_back(*item.due);
  }
  EXPECT_THAT(dues, ElementsAre(berlin("2026-10-27 07:00"), berlin("2026-11-03 07:00"), berlin("2026-11-17 07:00"),
                                berlin("2026-11-24 07:00")))
      << "20 October, 10 November and 1 December are taken out";
}

TEST_F(ReminderEdits, ThatRepeatNeedADueDate) {
  Item item = reminder("bins");
  item.recurrence.rules = {rule(Frequency::kWeekly)};
  const auto status = saveReminder(*store, item);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kInvalid);
  EXPECT_EQ(status.error().message, "A reminder that repeats needs a due date.");
}

}  // namespace
}  // namespace orlocal::store
