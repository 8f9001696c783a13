#include <gmock/gmock.h>

#include "store/edits/item_writer.h"
#include "store/file/sqlite.h"
#include "store/remote_reader.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What the store keeps of servers.
class RemotesTest : public StoreTest {
 protected:
  std::unique_ptr<ItemWriter> turn() {
    auto writer = store->startWriting();
    if (!writer) { throw std::runtime_error(writer.error().message); }
    return std::move(*writer);
  }
  SourceId account(const std::string& title) {
    auto writer = turn();
    Source source{0, "", Source::Type::kCalDav, title};
    EXPECT_TRUE(writer->makeSource(source));
    EXPECT_TRUE(writer->remotes().put(Remote{source.id, "settings", "state"}));
    EXPECT_TRUE(writer->commit());
    return source.id;
  }
  Calendar calendarOf(SourceId source, const std::string& title, CalendarKind kind = CalendarKind::kEvents) {
    auto writer = turn();
    Calendar calendar;
    calendar.title = title;
    calendar.kind = kind;
    calendar.source = source;
    EXPECT_TRUE(writer->makeCalendar(calendar));
    EXPECT_TRUE(writer->commit());
    return calendar;
  }
  std::vector<std::string> titles(CalendarKind kind) {
    std::vector<std::string> all;
    const auto calendars = *store->calendars(kind);
    for (const Calendar& calendar : calendars) { all.push_back(calendar.title); }
    return all;
  }

  RemoteReader reader() { return RemoteReader(*store); }
};

TEST_F(RemotesTest, ComeBackAsTheyWereWritten) {
  const SourceId source = account("Work");
  EXPECT_THAT(*reader().remotes(), ElementsAre(Remote{source, "settings", "state"}));
  Mirror mirror{0, source, 7, "https://dav.example.org/a/", "{}"};
  Resource resource;
  resource.url = "https://dav.example.org/a/1.ics";
  resource.key = "/a/1.ics";
  resource.etag = "\"1\"";
  resource.item = 12;
  resource.uid = "uid";
  resource.ours = true;
  resource.digest = 0xFEDCBA9876543210U;
  resource.text = "BEGIN:VCALENDAR\r\n";
  resource.sent = "sent";
  resource.trouble = "trouble";
  Conflict conflict;
  conflict.key = "/a/1.ics";
  conflict.item = 12;
  conflict.title = "Lunch";
  conflict.fields = "title";
  conflict.mine = "mine";
  conflict.made = at("2026-11-02 09:00");
  auto writer = turn();
  ASSERT_TRUE(writer->remotes().put(mirror));
  resource.mirror = conflict.mirror = mirror.id;
  ASSERT_TRUE(writer->remotes().put(resource));
  ASSERT_TRUE(writer->remotes().put(conflict));
  ASSERT_TRUE(writer->commit());

  EXPECT_THAT(*reader().mirrors(source), ElementsAre(mirror));
  EXPECT_EQ(reader().resource(mirror.id, "/a/1.ics")->value(), resource);
  EXPECT_EQ(reader().resourceOf(12)->value(), resource);
  EXPECT_THAT(*reader().conflicts(), ElementsAre(conflict));
  Resource listed = resource;
  listed.text.clear();
  listed.sent = "";
  EXPECT_THAT(*reader().resources(mirror.id), ElementsAre(listed));
}

TEST_F(RemotesTest, ResourceIsFoundByEachOfItsParts) {
  auto writer = turn();
  Mirror mirror{0, 1, 7, "https://dav.example.org/a/", "{}"};
  ASSERT_TRUE(writer->remotes().put(mirror));
  Resource resource;
  resource.mirror = mirror.id;
  resource.key = "/a/1.ics";
  resource.item = 12;
  ASSERT_TRUE(writer->remotes().put(resource));
  ASSERT_TRUE(writer->remotes().setParts(resource.id, {14, 13}));
  ASSERT_TRUE(writer->remotes().setParts(resource.id, {15, 13}));
  ASSERT_TRUE(writer->commit());
  EXPECT_THAT(*reader().parts(resource.id), ElementsAre(13, 15));
  for (const ItemId item : {12, 13, 15}) { EXPECT_EQ(reader().resourceOf(item)->value().id, resource.id); }
  EXPECT_FALSE(reader().resourceOf(14)->has_value());
  auto next = turn();
  ASSERT_TRUE(next->remotes().removeResource(resource.id));
  ASSERT_TRUE(next->commit());
  EXPECT_THAT(*reader().parts(resource.id), IsEmpty());
}

TEST_F(RemotesTest, AreNotWrittenWithoutACommit) {
  const SourceId source = account("Work");
  {
    auto writer = turn();
    ASSERT_TRUE(writer->remotes().put(Remote{source, "other", "other"}));
    ASSERT_TRUE(writer->remotes().noteUnsent(3));
  }
  EXPECT_THAT(*reader().remotes(), ElementsAre(Remote{source, "settings", "state"}));
  EXPECT_THAT(*reader().unsent(), IsEmpty());
}

TEST_F(RemotesTest, GoWithTheirSourceAndItsCalendars) {
  const SourceId source = account("Work");
  const Calendar calendar = calendarOf(source, "Team", CalendarKind::kBoth);
  auto writer = turn();
  Mirror mirror{0, source, calendar.id, "https://dav.example.org/a/", "{}"};
  ASSERT_TRUE(writer->remotes().put(mirror));
  Resource resource;
  resource.mirror = mirror.id;
  resource.key = "/a/1.ics";
  ASSERT_TRUE(writer->remotes().put(resource));
  ASSERT_TRUE(writer->removeSource(source));
  ASSERT_TRUE(writer->commit());
  EXPECT_THAT(*reader().remotes(), IsEmpty());
  EXPECT_THAT(*reader().allMirrors(), IsEmpty());
  EXPECT_THAT(*reader().resources(mirror.id), IsEmpty());
  EXPECT_THAT(titles(CalendarKind::kEvents), ElementsAre("Calendar"));
  EXPECT_EQ(store->sources()->size(), 1u);
}

TEST_F(RemotesTest, NoteWhatIsUnsentOnceAndInOrder) {
  auto writer = turn();
  for (const ItemId item : {5, 3, 5, 9}) { ASSERT_TRUE(writer->remotes().noteUnsent(item)); }
  ASSERT_TRUE(writer->remotes().setNotedUpTo(77));
  ASSERT_TRUE(writer->commit());
  EXPECT_THAT(*reader().unsent(), ElementsAre(5, 3, 9));
  EXPECT_EQ(*reader().notedUpTo(), 77);
  auto next = turn();
  ASSERT_TRUE(next->remotes().forgetUnsent(3));
  ASSERT_TRUE(next->commit());
  EXPECT_THAT(*reader().unsent(), ElementsAre(5, 9));
}

TEST_F(RemotesTest, CalendarOfBothKindsIsOneAmongBoth) {
  const Calendar both = calendarOf(account("Work"), "Team", CalendarKind::kBoth);
  EXPECT_THAT(titles(CalendarKind::kEvents), ElementsAre("Calendar", "Team"));
  EXPECT_THAT(titles(CalendarKind::kReminders), ElementsAre("Reminders", "Team"));
  EXPECT_EQ(store->calendar(both.identifier)->value(), both);
  Item meeting = plain("Meeting");
  meeting.calendar = both.id;
  saved(meeting);
  Item task = reminder("Task");
  task.calendar = both.id;
  EXPECT_EQ(saved(task).calendar, both.id);
}

TEST_F(RemotesTest, LastCalendarOfAKindStaysEvenWhenItHoldsBoth) {
  const Calendar both = calendarOf(account("Work"), "Team", CalendarKind::kBoth);
  const auto list = store->defaultCalendar(CalendarKind::kReminders)->value();
  ASSERT_TRUE(store->removeCalendar(list.identifier));
  const auto refused = store->removeCalendar(both.identifier);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kRefused);
  EXPECT_THAT(refused.error().message, testing::HasSubstr("the last reminder list"));
}

TEST_F(RemotesTest, WholeItemHasItsChangedOccurrences) {
  Item series = plain("Daily");
  series.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 5)};
  auto writer = turn();
  series.uid = "daily";
  Item moved = plain("Moved");
  moved.recurrenceId = berlin("2026-11-03 09:00");
  std::vector<Item> changed{moved};
  ASSERT_TRUE(writer->put(1, series, changed));
  const auto inTurn = writer->read(series.id);
  ASSERT_TRUE(inTurn && *inTurn);
  EXPECT_EQ((*inTurn)->changed.size(), 1u);
  ASSERT_TRUE(writer->commit());
  const auto whole = store->wholeItem(series.id);
  ASSERT_TRUE(whole && *whole);
  EXPECT_EQ((*whole)->main.title, "Daily");
  EXPECT_EQ((*whole)->changed.front().title, "Moved");
  EXPECT_FALSE(store->wholeItem((*whole)->changed.front().id)->has_value());

  auto remover = turn();
  ASSERT_TRUE(remover->remove(series.id));
  ASSERT_TRUE(remover->commit());
  EXPECT_FALSE(store->wholeItem(series.id)->has_value());
  EXPECT_THAT(titlesIn(*store), IsEmpty());
}

TEST_F(RemotesTest, TouchedItemsAreThoseOfOthersOnce) {
  const std::int64_t before = store->newestChange()->row;
  saved(plain("ours"));
  auto other = opened();
  store.swap(other);
  const Item theirs = saved(plain("theirs"));
  store.swap(other);
  const auto touched = store->touchedSince(before);
  ASSERT_TRUE(touched);
  EXPECT_TRUE(touched->complete);
  EXPECT_THAT(touched->items, ElementsAre(theirs.id));
  EXPECT_EQ(touched->upTo, store->newestChange()->row);
}

TEST_F(RemotesTest, TouchedItemsAreUnknownWhereTheLogDoesNotReachBack) {
  saved(plain("one"));
  saved(plain("two"));
  const std::int64_t before = store->newestChange()->row - 1;
  {
    auto database = Database::open(file, std::chrono::seconds(1));
    ASSERT_TRUE(database->execute(("DELETE FROM changes WHERE seq <= " + std::to_string(before)).c_str()));
  }
  EXPECT_FALSE(store->touchedSince(before - 1)->complete);
  EXPECT_TRUE(store->touchedSince(before)->complete);
  EXPECT_FALSE(store->touchedSince(before + 100)->complete);
}

}  // namespace
}  // namespace orlocal::store
