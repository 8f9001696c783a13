#include "store/rows/item_rows.h"

#include <functional>

#include <gmock/gmock.h>

#include "store/file/schema.h"
#include "store/rows/timeline.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;

/// Two rows that are kept back: an event and a changed occurrence of it.
class RowsKeptBack : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    store.reset();
    database = std::move(*openStoreFile(file, std::chrono::seconds(1), uuids));
    rows.emplace(database);
    turn.emplace(std::move(*Transaction::write(database)));
    rows->gather();
    main.uid = other.uid = "one";
    ASSERT_TRUE(rows->insert(main, 7, uuid, place));
    other.series = main.id;
    other.recurrenceId = other.start;
    ASSERT_TRUE(rows->insert(other, 8, uuids.next(), {0, 0, Timeline::keyOf(*other.recurrenceId)}));
    ASSERT_EQ(inTheFile(), 0);
  }
  void TearDown() override {
    turn.reset();
    rows.reset();
    database.close();
    StoreTest::TearDown();
  }
  std::int64_t inTheFile() { return *database.integerOf("SELECT count(*) FROM items"); }
  std::int64_t original() const { return Timeline::keyOf(*other.recurrenceId); }

  UuidMaker uuids;
  Database database;
  std::optional<ItemRows> rows;
  std::optional<Transaction> turn;
  Item main = plain("main"), other = plain("other");
  const Uuid uuid = uuids.next();
  const RowPlace place{0, 12, std::nullopt};
};

TEST_F(RowsKeptBack, AreThereForEveryReader) { EXPECT_EQ((*rows->read(main.id))->title, "main"); }
TEST_F(RowsKeptBack, AreThereToBeExpanded) {
  const auto found = *rows->readForExpansion(main.id);
  ASSERT_TRUE(found);
  EXPECT_TRUE(found->hasChanged);
}
TEST_F(RowsKeptBack, AreFoundByIdentifier) { EXPECT_EQ(*rows->withUuid(uuid), main.id); }
TEST_F(RowsKeptBack, AreFoundByUid) { EXPECT_EQ(*rows->withUid(main.calendar, main.kind, "one"), main.id); }
TEST_F(RowsKeptBack, AreFoundBySeries) {
  const auto changed = *rows->changedOf(main.id);
  ASSERT_EQ(changed.size(), 1u);
  EXPECT_EQ(changed[0].id, other.id);
}
TEST_F(RowsKeptBack, AreFoundByOriginalStart) { EXPECT_EQ(*rows->changedAt(main.id, original()), other.id); }
TEST_F(RowsKeptBack, HaveAPlace) { EXPECT_EQ((*rows->place(main.id))->shelfStart, 12); }
TEST_F(RowsKeptBack, CanBeChanged) {
  main.title = "changed";
  ASSERT_TRUE(rows->update(main, place, **rows->place(main.id)));
  EXPECT_EQ((*rows->read(main.id))->title, "changed");
}
TEST_F(RowsKeptBack, AreFoundByTheUidThatTheyWereGivenLater) {
  main.uid = "two";
  ASSERT_TRUE(rows->update(main, place, **rows->place(main.id)));
  EXPECT_EQ(*rows->withUid(main.calendar, main.kind, "two"), main.id);
  EXPECT_EQ(*rows->withUid(main.calendar, main.kind, "one"), std::nullopt);
}
TEST_F(RowsKeptBack, AreFoundByTheOriginalStartThatTheyWereGivenLater) {
  ASSERT_TRUE(rows->update(other, {0, 12, original() + 60}, **rows->place(other.id)));
  EXPECT_EQ(*rows->changedAt(main.id, original() + 60), other.id);
  EXPECT_EQ(*rows->changedAt(main.id, original()), 0);
}
TEST_F(RowsKeptBack, AreFoundWithoutTheSeriesThatTheyLeft) {
  other.series.reset();
  ASSERT_TRUE(rows->update(other, {0, 12, original()}, **rows->place(other.id)));
  EXPECT_EQ(*rows->changedAt(main.id, original()), 0);
  EXPECT_EQ(*rows->strayAt(other.calendar, other.kind, "one", original()), other.id);
}
TEST_F(RowsKeptBack, CanBeRemoved) {
  ASSERT_TRUE(rows->remove(main.id));
  EXPECT_EQ(*rows->read(main.id), nullptr);
}
TEST_F(RowsKeptBack, AreListed) {
  EXPECT_THAT(*rows->idsInCalendar(main.calendar), ElementsAre(other.id, main.id));
  EXPECT_THAT((*rows->idsByCalendar())[main.calendar], ElementsAre(main.id));
}
TEST_F(RowsKeptBack, AreNotWrittenForWhatCannotBeThem) {
  EXPECT_FALSE(*rows->withUid(main.calendar, main.kind, "two"));
  EXPECT_EQ(*rows->read(main.id - 1), nullptr);
  EXPECT_EQ(inTheFile(), 0);
}
TEST_F(RowsKeptBack, AreWrittenWhenThereAreEnough) {
  for (int i = 0; i < 14; ++i) {
    Item more = plain("more");
    ASSERT_TRUE(rows->insert(more, 9 + i, uuids.next(), place));
  }
  EXPECT_EQ(inTheFile(), 16);
}
TEST_F(RowsKeptBack, AreGoneWhenTheTurnIs) {
  turn.reset();
  rows->forgetAll();
  ASSERT_TRUE(rows->writeGathered());
  EXPECT_EQ(inTheFile(), 0);
}

}  // namespace
}  // namespace orlocal::store
