#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/backup.h"
#include "store/edits/item_writer.h"
#include "store/file/schema.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class SearchOfAStore : public StoreTest {
 protected:
  SearchQuery queryFor(const std::string& text) {
    SearchQuery query;
    query.text = text;
    for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
      const auto calendars = *store->calendars(kind);
      for (const Calendar& calendar : calendars) { query.calendars.push_back(calendar.id); }
    }
    return query;
  }
  std::vector<std::string> titlesOf(const SearchQuery& query) {
    const auto hits = store->search(query);
    if (!hits) { return {"(" + hits.error().message + ")"}; }
    std::vector<std::string> titles;
    for (const SearchHit& hit : *hits) { titles.push_back(read(hit.item).title.value_or("-")); }
    return titles;
  }
  std::vector<std::string> titles(const std::string& text) { return titlesOf(queryFor(text)); }
  void change(const char* sql) {
    store.reset();
    auto database = Database::open(file, std::chrono::seconds(1));
    const auto done = database->executeOnIndex(sql);
    ASSERT_TRUE(done) << done.error().message;
    database->close();
    store = opened();
  }
  std::int64_t number(const char* sql) {
    auto database = Database::open(file, std::chrono::seconds(1));
    return database->integerOf(sql).value_or(-1);
  }
  void many(int from, int to, const std::string& title) {
    auto writer = *store->startWriting();
    std::vector<Item> none;
    for (int i = from; i < to; ++i) {
      Item item = plain(title + " " + std::to_string(i));
      item.uid = "many-" + std::to_string(i);
      ASSERT_TRUE(writer->put(1, item, none));
    }
    ASSERT_TRUE(writer->commit());
  }
};

TEST_F(SearchOfAStore, FindsTitlesPlacesPeopleUrlsAndNotes) {
  Item place = plain("one"), people = plain("two"), url = plain("three"), notes = plain("four");
  place.location = "Zürich";
  people.attendees.emplace_back().address = "mailto:zuri@example.org";
  url.url = "https://example.org/zurich";
  notes.notes = "by train to Zürich";
  saved(plain("Zürich"));
  for (Item* item : {&place, &url, &notes}) { saved(*item); }
  auto writer = *store->startWriting();
  std::vector<Item> none;
  people.uid = "people";
  ASSERT_TRUE(writer->put(1, people, none));
  ASSERT_TRUE(writer->commit());
  writer.reset();
  EXPECT_THAT(titles("zuri"), ElementsAre("Zürich", "one", "two", "three", "four"));
  const auto hits = *store->search(queryFor("train"));
  ASSERT_EQ(hits.size(), 1U);
  EXPECT_THAT(hits[0].fields, ElementsAre(SearchField::kNotes));
}

TEST_F(SearchOfAStore, FollowsEverySaveAndRemoval) {
  Item item = saved(plain("Dentist"));
  EXPECT_THAT(titles("dentist"), ElementsAre("Dentist"));
  item.title = "Surgery";
  item = saved(item);
  EXPECT_THAT(titles("dentist"), IsEmpty());
  EXPECT_THAT(titles("surg"), ElementsAre("Surgery"));
  ASSERT_TRUE(store->removeEvent(item, std::nullopt, Span::kAll));
  EXPECT_THAT(titles("surg"), IsEmpty());
}

TEST_F(SearchOfAStore, FindsTheSameWhetherTheIndexOrTheRowsAreAsked) {
  many(0, 2'000, "Meeting");
  EXPECT_EQ(titles("meeting 17").size(), 111U);  // 17, 170 to 179, 1700 to 1799
  EXPECT_GT(number("SELECT count(*) FROM search"), 1'999);
  Item last = plain("Meeting 17 late");
  saved(last);
  EXPECT_EQ(titles("meeting 17").size(), 112U);
  // More than is looked at row by row.
  many(500, 1'500, "Call");
  EXPECT_EQ(titles("call 1").size(), 500U);
  EXPECT_EQ(titles("meeting 1").size(), 111U + 500U + 1U);
  EXPECT_EQ(number("SELECT count(*) FROM search WHERE search MATCH 'call'"), 1'000);
}

TEST_F(SearchOfAStore, IsFilledInPartsOverALargeStore) {
  many(0, 21'000, "Meeting");
  EXPECT_THAT(titles("20999"), ElementsAre("Meeting 20999"));
  EXPECT_EQ(number("SELECT count(*) FROM search"), 21'000);
  EXPECT_EQ(number("SELECT value FROM properties WHERE name = 'searched_from'"), 0);
}

TEST_F(SearchOfAStore, GivesASeriesOnceAndAChangedOccurrenceWhereOnlyThatHasTheWords) {
  Item series = event("Course", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  series.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 5)};
  series = saved(series);
  const auto second = *store->occurrenceAt(series, at("2026-11-03 09:00"));
  Item changed = series;
  changed.location = "Attic";
  ASSERT_TRUE(saveEvent(*store, changed, second, Span::kThis));
  EXPECT_THAT(titles("course"), ElementsAre("Course"));
  const auto hits = *store->search(queryFor("attic"));
  ASSERT_EQ(hits.size(), 1U);
  EXPECT_EQ(read(hits[0].item).series, series.id);
}

TEST_F(SearchOfAStore, PutsWhatTheTitleHasFirstAndTheLaterBeforeTheEarlier) {
  Item notes = plain("Other");
  notes.notes = "team meeting";
  saved(notes);
  saved(event("Team meeting old", berlin("2026-01-02 09:00"), berlin("2026-01-02 10:00")));
  saved(event("Team meeting new", berlin("2026-12-02 09:00"), berlin("2026-12-02 10:00")));
  EXPECT_THAT(titles("meeting team"), ElementsAre("Team meeting new", "Team meeting old", "Other"));
}

TEST_F(SearchOfAStore, CanBeNarrowedDown) {
  const Calendar other = madeCalendar("Other");
  Item there = plain("Paint there");
  there.calendar = other.id;
  saved(there);
  saved(plain("Paint here"));
  saved(reminder("Paint the door", day("2026-11-05")));
  Item series = event("Paint daily", berlin("2026-10-01 09:00"), berlin("2026-10-01 10:00"));
  series.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily)};
  saved(series);
  auto query = queryFor("paint");
  query.calendars = {other.id};
  EXPECT_THAT(titlesOf(query), ElementsAre("Paint there"));
  query = queryFor("paint");
  query.kind = ItemKind::kReminder;
  EXPECT_THAT(titlesOf(query), ElementsAre("Paint the door"));
  query = queryFor("paint");
  query.from = at("2026-11-05 00:00");
  query.to = at("2026-11-06 00:00");
  EXPECT_THAT(titlesOf(query), UnorderedElementsAre("Paint the door", "Paint daily"));
}

TEST_F(SearchOfAStore, RefusesATextWithoutAWord) {
  const auto hits = store->search(queryFor("—"));
  ASSERT_FALSE(hits);
  EXPECT_EQ(hits.error().code, ErrorCode::kInvalid);
}

TEST_F(SearchOfAStore, TakesWhatTheIndexCouldReadAsItsOwnLanguage) {
  saved(plain("NOT a OR b NEAR c"));
  EXPECT_THAT(titles("not near or"), ElementsAre("NOT a OR b NEAR c"));
  EXPECT_THAT(titles("a* b"), ElementsAre("NOT a OR b NEAR c"));
}

TEST_F(SearchOfAStore, SurvivesARestore) {
  saved(plain("Kept"));
  many(0, 600, "Filler");
  EXPECT_THAT(titles("kept"), ElementsAre("Kept"));
  ASSERT_TRUE(backUpStore(file, folder / "backup.db", ExistingFile::kIsRefused, std::chrono::seconds(1)));
  saved(plain("After"));
  ASSERT_TRUE(restoreStore(options(), folder / "backup.db"));
  EXPECT_THAT(titles("kept"), ElementsAre("Kept"));
  EXPECT_THAT(titles("after"), IsEmpty());
}

TEST_F(SearchOfAStore, OfAnOlderFileFindsWhatItHolds) {
  saved(plain("Before"));
  change(backToVersion(4).c_str());
  EXPECT_THAT(titles("before"), ElementsAre("Before"));
}

TEST_F(SearchOfAStore, LooksAtTheRowsWhereNothingCanBeWritten) {
  saved(plain("Kept"));
  store->close();
  store.reset();
  std::filesystem::permissions(folder, std::filesystem::perms(0555));
  std::filesystem::permissions(file, std::filesystem::perms(0444));
  const pid_t child = ::fork();
  if (child == 0) {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) { ::_exit(99); }
    auto readOnly = CalendarStore::open(options());
    const auto hits = readOnly ? (*readOnly)->search({"kept", {1}, {}, {}, {}}) : tl::unexpected(readOnly.error());
    ::_exit(hits && hits->size() == 1 ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  std::filesystem::permissions(folder, std::filesystem::perms(0755));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

struct IndexDamage {
  const char* name;
  const char* sql;
};

TEST_F(SearchOfAStore, WithADamagedIndexSaysHowToMakeItAnewAndThenFindsAgain) {
  constexpr IndexDamage kDamages[] = {
      {"another kind", "UPDATE search_config SET v = 99"},
      {"no kind", "DELETE FROM search_config"},
      {"no structure", "DELETE FROM search_data WHERE id = 10"},
      {"broken structure", "UPDATE search_data SET block = x'ffffffffffffffffffff'"},
      {"no leaves", "DELETE FROM search_data WHERE id > 10"},
  };
  many(0, 1'000, "Meeting");
  saved(plain("Lunch"));
  for (const IndexDamage& damage : kDamages) {
    ASSERT_THAT(titles("lunch"), ElementsAre("Lunch")) << damage.name;
    change(damage.sql);
    const auto failed = store->search(queryFor("lunch"));
    ASSERT_FALSE(failed) << damage.name;
    EXPECT_EQ(failed.error().code, ErrorCode::kCorrupt) << damage.name;
    EXPECT_THAT(failed.error().message, HasSubstr("orlocal search --rebuild")) << damage.name;
    // Nothing else notices.
    EXPECT_THAT(titlesIn(*store).size(), 1'001U);
    saved(plain("While damaged"));
    ASSERT_TRUE(
        store->removeEvent(*store->item(number("SELECT max(id) FROM items")).value(), std::nullopt, Span::kAll));
    const auto rebuilt = store->rebuildSearch();
    ASSERT_TRUE(rebuilt) << damage.name << ": " << rebuilt.error().message;
  }
  EXPECT_THAT(titles("lunch"), ElementsAre("Lunch"));
}

}  // namespace
}  // namespace orlocal::store
