#include "store/alarm_book.h"

#include <gmock/gmock.h>

#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class AlarmBookTest : public StoreTest {
 protected:
  static AlarmKey key(ItemId item, const std::string& moment) { return {item, at("2026-11-02 09:00"), at(moment), 0}; }

  const AlarmKey first = key(1, "2026-11-02 08:45"), second = key(2, "2026-11-02 08:50");
  const Moment now = at("2026-11-02 08:51");
};

TEST_F(AlarmBookTest, KnowsOfNothingAtFirst) {
  AlarmBook book(*store);
  EXPECT_EQ(*book.toldUpTo(), std::nullopt);
  EXPECT_THAT(*book.records(), IsEmpty());
}

TEST_F(AlarmBookTest, GivesEachRingToWhoAsksFirst) {
  const auto other = opened();
  const auto own = AlarmBook(*store).claim({{first}, {}}, now, now);
  EXPECT_THAT(own->due, ElementsAre(first));
  EXPECT_EQ(own->toldUpTo, std::nullopt);
  const auto theirs = AlarmBook(*other).claim({{first, second}, {}}, now, now);
  EXPECT_THAT(theirs->due, ElementsAre(second));
  EXPECT_EQ(theirs->toldUpTo, now);
}

TEST_F(AlarmBookTest, KnowsWhatItHasGiven) {
  AlarmBook book(*store);
  ASSERT_TRUE(book.claim({{first}, {}}, now, now));
  EXPECT_THAT(*book.unknown(std::array{first, second}), ElementsAre(second));
}

TEST_F(AlarmBookTest, GivesWhatWasPutOffOnceMore) {
  AlarmBook book(*store);
  ASSERT_TRUE(book.claim({{first}, {}}, now, now));
  const Moment later = at("2026-11-02 09:01");
  ASSERT_TRUE(book.snooze(std::array{first}, later));
  EXPECT_THAT(*book.snoozed(), ElementsAre(AlarmRecord{first, now, later, {}}));
  EXPECT_THAT(book.claim({{first}, {first}}, now, now)->putOff, IsEmpty()) << "it is not time yet";
  EXPECT_THAT(book.claim({{}, {first}}, later, later)->putOff, ElementsAre(first));
  EXPECT_THAT(book.claim({{}, {first}}, later, later)->putOff, IsEmpty());
  EXPECT_THAT(*book.records(), ElementsAre(AlarmRecord{first, later, {}, {}}));
}

TEST_F(AlarmBookTest, GivesNothingThatWasAcknowledged) {
  AlarmBook book(*store);
  ASSERT_TRUE(book.acknowledge(std::array{first}, now));
  EXPECT_THAT(book.claim({{first}, {}}, now, now)->due, IsEmpty());
  ASSERT_TRUE(book.claim({{second}, {}}, now, now));
  ASSERT_TRUE(book.snooze(std::array{second}, now));
  ASSERT_TRUE(book.acknowledge(std::array{second}, now));
  EXPECT_THAT(book.claim({{}, {second}}, now, now)->putOff, IsEmpty());
}

TEST_F(AlarmBookTest, KeepsWhatRangForThirtyDays) {
  AlarmBook book(*store);
  ASSERT_TRUE(book.claim({{first}, {}}, now, now));
  ASSERT_TRUE(book.claim({}, now + std::chrono::days(29), now));
  EXPECT_EQ(book.records()->size(), 1U);
  ASSERT_TRUE(book.claim({}, now + std::chrono::days(31), now));
  EXPECT_THAT(*book.records(), IsEmpty());
}

TEST_F(AlarmBookTest, ChangesNoItemAndSaysNothingInTheLog) {
  const auto other = opened();
  LogPosition position = *other->newestChange();
  const LogPosition before = position;
  ASSERT_TRUE(AlarmBook(*store).claim({{first}, {}}, now, now));
  ASSERT_TRUE(AlarmBook(*store).snooze(std::array{first}, now));
  ASSERT_TRUE(AlarmBook(*store).acknowledge(std::array{first}, now));
  EXPECT_THAT(*other->outsideCommits(position), IsEmpty());
  EXPECT_EQ(position.row, before.row);
}

TEST_F(AlarmBookTest, WakesWhoListens) {
  const auto other = opened();
  const auto generation = other->generation();
  ASSERT_TRUE(AlarmBook(*store).snooze(std::array{first}, now));
  EXPECT_NE(other->generation(), generation);
}

TEST_F(AlarmBookTest, RefusesARowThatNoProgramWrote) {
  auto database = Database::open(file, std::chrono::seconds(1));
  ASSERT_TRUE(database->execute("INSERT INTO alarm_rings VALUES(1, 'x', 0, 0, NULL, NULL, NULL)"));
  EXPECT_EQ(AlarmBook(*store).records().error().code, ErrorCode::kCorrupt);
}

}  // namespace
}  // namespace orlocal::store
