#include "store/rows/kept_items.h"

#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

/// An event in which no field is as a new one has it.
Item fullItem() {
  Item item;
  item.id = 7;
  item.calendar = 3;
  item.identifier = "01890000-0000-7000-8000-000000000001";
  item.itemIdentifier = "01890000-0000-7000-8000-000000000002";
  item.uid = "seven@example.org";
  item.series = 5;
  item.recurrenceId = berlin("2026-11-02 09:00");
  item.title = "Grüße";
  item.notes = "";
  item.location = "Café am Markt";
  item.url = "https://example.org/";
  item.start = berlin("2026-11-02 10:00");
  item.end = utc("2026-11-02 10:00");
  item.due = floating("2026-11-02 12:00");
  item.created = Moment(std::chrono::microseconds(-1));
  item.modified = at("2026-11-02 09:00");
  item.stamped = at("2026-11-02 10:00");
  item.completed = at("2026-11-02 11:00");
  item.priority = 5;
  item.sequence = 12;
  RecurrenceRule rule;
  rule.frequency = RecurrenceRule::Frequency::kWeekly;
  rule.count = 12;
  rule.byDay = {{0, 1}, {-1, 3}};
  item.recurrence.rules = {rule};
  item.recurrence.added = {day("2026-12-24")};
  item.recurrence.excluded = {berlin("2026-12-25 09:00")};
  item.recurrence.exceptionRules = {{rule, local("2026-11-02 09:00")}};
  Alarm alarm;
  alarm.trigger = Alarm::Relative{std::chrono::seconds(-900), true};
  alarm.soundName = "Glass";
  item.alarms = {alarm};
  Attendee attendee;
  attendee.address = "mailto:ada@example.org";
  attendee.role = Attendee::Role::kChair;
  item.attendees = {attendee};
  item.extra = "X-ONE:1\n";
  return item;
}

TEST(PackedItem, IsTheSameAfterwards) {
  PackedBytes bytes;
  packItem(fullItem(), bytes);
  EXPECT_EQ(unpackItem(bytes), fullItem());
}

TEST(PackedItem, MayHaveNothingInIt) {
  PackedBytes bytes;
  packItem(Item(), bytes);
  EXPECT_EQ(unpackItem(bytes), Item());
}

TEST(PackedItem, MayBeAReminder) {
  Item reminder;
  reminder.kind = ItemKind::kReminder;
  reminder.itemIdentifier = reminder.identifier = "01890000-0000-7000-8000-000000000002";
  PackedBytes bytes;
  packItem(reminder, bytes);
  EXPECT_EQ(unpackItem(bytes), reminder);
}

class KeptItemsTest : public testing::Test {
 protected:
  void keep(Item item) { items.keep(std::make_shared<const Item>(std::move(item))); }
  /// So many that what was kept before makes way.
  void keepManyOthers() {
    Item other;
    for (other.id = 1'000; other.id < 21'000; ++other.id) { keep(other); }
  }
  KeptItems items;
};

TEST_F(KeptItemsTest, AreAtHand) {
  keep(fullItem());
  ASSERT_NE(items.find(7), nullptr);
  EXPECT_EQ(*items.find(7), fullItem());
  EXPECT_EQ(items.find(8), nullptr);
  EXPECT_TRUE(items.has(7));
  EXPECT_FALSE(items.has(8));
}

TEST_F(KeptItemsTest, AreStillAtHandAfterManyOthersWhenTheyRepeat) {
  keep(fullItem());
  keepManyOthers();
  ASSERT_NE(items.find(7), nullptr);
  EXPECT_EQ(*items.find(7), fullItem());
}

TEST_F(KeptItemsTest, CanBeAskedForAgainAndAgainWhenTheyArePacked) {
  keep(fullItem());
  keepManyOthers();
  EXPECT_TRUE(items.has(7));
  EXPECT_EQ(*items.find(7), *items.find(7));
  EXPECT_TRUE(items.has(7));
}

TEST_F(KeptItemsTest, MakeWayWhenTheyHappenOnce) {
  Item once = fullItem();
  once.recurrence = {};
  keep(once);
  keepManyOthers();
  EXPECT_EQ(items.find(7), nullptr);
}

TEST_F(KeptItemsTest, MakeWayOneByOneWhenThereIsNoRoomEvenPacked) {
  Item large = fullItem();
  large.notes = std::string(100'000, 'n');
  for (large.id = 1; large.id <= 500; ++large.id) { keep(large); }
  keepManyOthers();
  int left = 0;
  for (ItemId id = 1; id <= 500; ++id) { left += items.has(id) ? 1 : 0; }
  EXPECT_GT(left, 200);
  EXPECT_LT(left, 300);
}

TEST_F(KeptItemsTest, AreForgottenPackedOrNot) {
  keep(fullItem());
  keepManyOthers();
  items.forget(7);
  EXPECT_EQ(items.find(7), nullptr);
  keep(fullItem());
  items.forget(7);
  EXPECT_EQ(items.find(7), nullptr);
}

TEST_F(KeptItemsTest, AreTheOnesReadLastAfterTheyWereForgotten) {
  keep(fullItem());
  keepManyOthers();
  items.forget(7);
  Item changed = fullItem();
  changed.title = "changed";
  keep(changed);
  keepManyOthers();
  ASSERT_NE(items.find(7), nullptr);
  EXPECT_EQ(items.find(7)->title, "changed");
}

TEST_F(KeptItemsTest, AreAllForgotten) {
  keep(fullItem());
  keepManyOthers();
  items.forgetAll();
  EXPECT_EQ(items.find(7), nullptr);
}

}  // namespace
}  // namespace orlocal::store
