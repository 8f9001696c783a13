#include "store/core/zone_data.h"

#include <gmock/gmock.h>

#include "store/file/sqlite.h"
#include "store/store_fixture.h"
#include "store/time/zone_data_version.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;

/// A store whose timeline stands an hour too early, as after a country put its clocks back.
class ZoneData : public StoreTest {
 protected:
  void fill() {
    saved(event("single", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
    Item series = event("series", berlin("2026-11-02 11:00"), berlin("2026-11-02 12:00"));
    series.recurrence.rules = {rule(RecurrenceRule::Frequency::kDaily, 2)};
    series = saved(series);
    Item changed = read(series.id);
    changed.title = "changed";
    changed.start = berlin("2026-11-03 15:00");
    changed.end = berlin("2026-11-03 16:00");
    ASSERT_TRUE(saveEvent(*store, changed, occurrences(std::nullopt, std::nullopt)[2], Span::kThis));
    saved(event("whole day", day("2026-11-04"), day("2026-11-05")));
  }
  void shiftTheTimeline(const char* version) {
    store.reset();
    auto database = Database::open(file, std::chrono::seconds(1));
    const std::string sql =
        "UPDATE timeline SET \"start\" = \"start\" - 3600, \"end\" = \"end\" - 3600, original = original - 3600 "
        "WHERE slot < 100;"
        "UPDATE items SET slot_start = slot_start - 3600, original = original - 3600 WHERE slot < 100;"
        "UPDATE properties SET value = '" +
        std::string(version) + "' WHERE name = 'zone_data'";
    ASSERT_TRUE(database->execute(sql.c_str()));
    store = opened();
  }
};

TEST_F(ZoneData, OfANewerVersionMovesWhatStandsInZones) {
  if (zoneDataVersion().empty()) { GTEST_SKIP() << "the system does not tell the version of its zone data"; }
  fill();
  const auto before = occurrences(std::nullopt, std::nullopt);
  shiftTheTimeline("1999a");
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt), before);
  EXPECT_THAT(listed(std::nullopt, std::nullopt),
              ElementsAre("2026-11-02 09:00 single", "2026-11-02 11:00 series", "2026-11-03 15:00 changed",
                          "2026-11-04 00:00 whole day"));
}

TEST_F(ZoneData, OfAnOlderVersionChangesNothing) {
  fill();
  shiftTheTimeline("9999z");
  EXPECT_EQ(listed(std::nullopt, std::nullopt).front(), "2026-11-02 08:00 single");
}

}  // namespace
}  // namespace orlocal::store
