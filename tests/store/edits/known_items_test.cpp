#include "store/edits/known_items.h"

#include <fmt/format.h>

#include "store/core/zone_data.h"
#include "store/edits/item_writer.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

/// What is looked at ahead, while `store` is another who writes the same file.
class Known : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    core = std::move(*StoreCore::open(options()));
    known.emplace(*core);
    put("one", "as it was");
    for (int i = 0; i < 50; ++i) { put(fmt::format("other {}", i), "-"); }
  }
  void TearDown() override {
    turn.reset();
    known.reset();
    core.reset();
    StoreTest::TearDown();
  }

  static Item item(const std::string& uid, const std::string& title) {
    Item item = plain(title);
    item.uid = uid;
    return item;
  }
  void put(const std::string& uid, const std::string& title) {
    auto writer = std::move(*store->startWriting());
    Item written = item(uid, title);
    std::vector<Item> none;
    ASSERT_TRUE(writer->put(1, written, none));
    ASSERT_TRUE(writer->commit());
  }
  void remove(const std::string& uid) {
    for (const Occurrence& occurrence : occurrences(std::nullopt, std::nullopt)) {
      const Item found = read(occurrence.item);
      if (found.uid != uid) { continue; }
      ASSERT_TRUE(store->removeEvent(found, std::nullopt, Span::kThis));
    }
  }
  void lookAhead(const std::atomic<bool>* stop = nullptr) {
    const AnnouncedItem announced[] = {{&one, ""}, {&two, ""}};
    ASSERT_TRUE(known->lookAhead({announced, stop}));
  }
  void takeTurn() {
    turn.emplace(core->beginWriting().value());
    ASSERT_TRUE(known->beginTurn());
  }
  Standing standing(Item& main) {
    auto found = known->of(main, false);
    EXPECT_TRUE(found);
    return found.value_or(Standing());
  }
  /// Past the log, so that who does not look again does not see it.
  void changeBehindTheBack() {
    ASSERT_TRUE(core->database.execute("UPDATE items SET title = 'another' WHERE uid = 'one'"));
  }

  std::unique_ptr<StoreCore> core;
  std::optional<KnownItems> known;
  std::optional<WriteTurn> turn;
  Item one = item("one", "as it was"), two = item("two", "new");
};

TEST_F(Known, AreSeenAhead) {
  lookAhead();
  takeTurn();
  changeBehindTheBack();
  const Standing found = standing(one);
  EXPECT_NE(found.id, 0);
  EXPECT_FALSE(found.differs);
  EXPECT_EQ(found.place.uidHash, ItemValues::hashOf("one"));
  EXPECT_EQ(one.id, found.id);
  EXPECT_EQ(standing(two).id, 0);
}

TEST_F(Known, AreLookedAtOnceMoreWhenTheyComeOnceMore) {
  lookAhead();
  takeTurn();
  standing(one);
  changeBehindTheBack();
  EXPECT_TRUE(standing(one).differs);
}

TEST_F(Known, AreLookedAtWhenTheyAreNotAnnounced) {
  takeTurn();
  changeBehindTheBack();
  EXPECT_TRUE(standing(one).differs);
  EXPECT_EQ(standing(two).id, 0);
}

TEST_F(Known, AreLookedAtWhenLookingAheadWasStopped) {
  const std::atomic<bool> stop = true;
  lookAhead(&stop);
  takeTurn();
  changeBehindTheBack();
  EXPECT_TRUE(standing(one).differs);
}

TEST_F(Known, AreLookedAtInAnotherCalendarThanWasAnnounced) {
  const Calendar work = madeCalendar("Work");
  lookAhead();
  takeTurn();
  one.calendar = work.id;
  EXPECT_EQ(standing(one).id, 0);
}

TEST_F(Known, AreLookedAtAgainWhereAnotherChangedThem) {
  lookAhead();
  put("one", "changed");
  takeTurn();
  EXPECT_TRUE(standing(one).differs);
}

TEST_F(Known, AreSeenAheadStillWhereAnotherChangedOthers) {
  lookAhead();
  put("other 7", "changed");
  takeTurn();
  changeBehindTheBack();
  EXPECT_FALSE(standing(one).differs);
}

TEST_F(Known, AreGoneWhenAnotherRemovedThem) {
  lookAhead();
  remove("one");
  takeTurn();
  EXPECT_EQ(standing(one).id, 0);
}

TEST_F(Known, AreThereWhenAnotherMadeThem) {
  lookAhead();
  put("two", "made");
  takeTurn();
  EXPECT_NE(standing(two).id, 0);
}

TEST_F(Known, AreLookedAtAgainWhenZonesChanged) {
  lookAhead();
  {
    auto writer = std::move(*store->startWriting());
    ASSERT_TRUE(writer->putZone("Private/Known",
                                "BEGIN:VTIMEZONE\nTZID:Private/Known\nBEGIN:STANDARD\nDTSTART:19700101T000000\n"
                                "TZOFFSETFROM:+0100\nTZOFFSETTO:+0100\nEND:STANDARD\nEND:VTIMEZONE\n"));
    ASSERT_TRUE(writer->commit());
  }
  takeTurn();
  changeBehindTheBack();
  EXPECT_TRUE(standing(one).differs);
}

TEST_F(Known, AreLookedAtAgainWhenAnotherFollowedNewZoneData) {
  lookAhead();
  const auto other = std::move(*StoreCore::open(options()));
  ASSERT_TRUE(followZoneData(*other, "2999a"));
  takeTurn();
  changeBehindTheBack();
  EXPECT_TRUE(standing(one).differs);
}

TEST_F(Known, AreLookedAtAgainWhenAnotherFileTookThePlace) {
  lookAhead();
  StoreOptions other = options();
  other.file = folder / "other.db";
  store = CalendarStore::open(other).value();
  put("two", "in the other file");
  for (int i = 0; i < 50; ++i) { put(fmt::format("other {}", i), "-"); }
  store.reset();
  std::filesystem::rename(other.file, file);
  takeTurn();
  EXPECT_EQ(standing(one).id, 0);
  EXPECT_NE(standing(two).id, 0);
}

TEST_F(Known, AreLookedAtAgainAfterMoreThanCanBeToldOneByOne) {
  lookAhead();
  {
    auto writer = std::move(*store->startWriting());
    std::vector<Item> none;
    for (int i = 0; i < 2'100; ++i) {
      Item more = item(fmt::format("more {}", i), "more");
      ASSERT_TRUE(writer->put(1, more, none));
    }
    ASSERT_TRUE(writer->put(1, two, none));
    ASSERT_TRUE(writer->commit());
  }
  takeTurn();
  changeBehindTheBack();
  EXPECT_TRUE(standing(one).differs);
  EXPECT_NE(standing(two).id, 0);
}

}  // namespace
}  // namespace orlocal::store
