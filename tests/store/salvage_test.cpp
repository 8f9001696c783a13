#include "store/salvage.h"

#include <fstream>
#include <vector>

#include <gmock/gmock.h>

#include "store/file/sqlite.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::HasSubstr;
using testing::Not;

class Salvage : public StoreTest {
 protected:
  void given(int events) {
    for (int i = 0; i < events; ++i) {
      Item item = event("Event " + std::to_string(i) + ".", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
      item.notes = std::string(300, 'n');
      saved(item);
    }
  }
  Result<SalvageReport> salvaged(const std::vector<std::string>& titles = {}) {
    text.clear();
    return salvage(file, titles, std::chrono::seconds(1), [this](std::string_view piece) -> Status {
      text += piece;
      return {};
    });
  }
  int titlesFound(int events) const {
    int found = 0;
    for (int i = 0; i < events; ++i) {
      found += text.find("SUMMARY:Event " + std::to_string(i) + ".\r\n") != std::string::npos ? 1 : 0;
    }
    return found;
  }
  /// Pages of a table or index that hold its entries.
  std::vector<std::int64_t> leavesOf(const std::string& name) {
    auto database = Database::open(file, std::chrono::seconds(1)).value();
    auto find = database.prepare("SELECT pageno FROM dbstat WHERE name = ? AND pagetype = 'leaf' ORDER BY pageno");
    EXPECT_TRUE(find);
    std::vector<std::int64_t> pages;
    find->bind(1, std::string_view(name));
    while (find->step().value_or(false)) { pages.push_back(find->integer(0)); }
    return pages;
  }
  void destroyPage(std::int64_t page) {
    store.reset();
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp((page - 1) * 4096);
    stream << std::string(4096, '\x7f');
  }

  std::string text;
};

TEST_F(Salvage, WritesAllOfAWholeStore) {
  given(50);
  saved(reminder("Call"));
  const auto report = salvaged();
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_TRUE(report->complete());
  EXPECT_EQ(report->items, 51);
  EXPECT_EQ(titlesFound(50), 50);
  EXPECT_THAT(text, HasSubstr("SUMMARY:Call"));
  EXPECT_THAT(text, HasSubstr("BEGIN:VTIMEZONE"));
}

TEST_F(Salvage, GoesPastRowsThatCannotBeReadAndCountsThem) {
  given(300);
  store.reset();
  const auto leaves = leavesOf("items");
  ASSERT_GT(leaves.size(), 6U);
  destroyPage(leaves[leaves.size() / 2]);
  const auto report = salvaged();
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_FALSE(report->complete());
  EXPECT_GT(report->unreadable, 0);
  EXPECT_LT(report->unreadable, 60);
  EXPECT_EQ(report->items + report->unreadable, 300);
  EXPECT_EQ(titlesFound(300), report->items);
  EXPECT_THAT(report->notes.front(), HasSubstr("item "));
}

TEST_F(Salvage, NeedsNoIndex) {
  given(300);
  store.reset();
  for (const char* name : {"items_by_uuid", "items_by_uid", "timeline"}) {
    for (const auto page : leavesOf(name)) { destroyPage(page); }
  }
  const auto report = salvaged();
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_EQ(titlesFound(300), 300);
  EXPECT_EQ(report->items, 300);
}

TEST_F(Salvage, KeepsItemsWhoseCalendarIsLost) {
  given(20);
  store.reset();
  for (const auto page : leavesOf("calendars")) { destroyPage(page); }
  const auto report = salvaged();
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_FALSE(report->complete());
  EXPECT_GT(report->calendars, 0);
  EXPECT_EQ(report->withoutPlace, 20);
  EXPECT_EQ(titlesFound(20), 20);
  EXPECT_THAT(text, HasSubstr("Recovered"));
}

TEST_F(Salvage, WritesTheCalendarsNamedOnly) {
  given(3);
  const Calendar work = madeCalendar("Work");
  Item item = event("Talk", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00"));
  item.calendar = work.id;
  saved(item);
  ASSERT_TRUE(salvaged({"Work"}));
  EXPECT_THAT(text, HasSubstr("Talk"));
  EXPECT_EQ(titlesFound(3), 0);
}

TEST_F(Salvage, SaysThatNothingCanBeRead) {
  given(3);
  destroyPage(1);
  const auto report = salvaged();
  ASSERT_FALSE(report);
  EXPECT_THAT(report.error().message, HasSubstr(file.string()));
  EXPECT_EQ(text, "");
}

TEST_F(Salvage, MakesNoStoreWhereThereIsNone) {
  store.reset();
  file = folder / "none.db";
  EXPECT_FALSE(salvaged());
  EXPECT_FALSE(std::filesystem::exists(file));
}

}  // namespace
}  // namespace orlocal::store
