#include <algorithm>
#include <fstream>
#include <random>

#include <gmock/gmock.h>
#include <sqlite3.h>

#include "store/damaged_file.h"
#include "store/file/schema.h"
#include "store/salvage.h"

namespace orlocal::store {
namespace {

using testing::HasSubstr;
using testing::Not;

struct DamagedValue {
  const char* name;
  const char* sql;
};

constexpr DamagedValue kValues[] = {
    {"minus one", "-1"},
    {"the lowest number", "-9223372036854775807-1"},
    {"the highest number", "9223372036854775807"},
    {"a number past every enum", "255"},
    {"a number past every bitset", "70000"},
    {"seconds far past the year 9999", "99999999999999"},
    {"microseconds far past the year 9999", "999999999999999999"},
    {"half a number", "0.5"},
    {"a number past every other", "9e999"},
    {"text", "'text'"},
    {"text that is no text", "CAST(x'61ff62' AS TEXT)"},
    {"an unknown clock", "'=tomorrow'"},
    {"a byte", "x'01'"},
    {"many ones", "(SELECT x'ffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffffff')"},
    {"nothing", "NULL"},
};

/// Packed columns, every fifth byte.
constexpr const char* kPacked[] = {"recurrence", "alarms", "attendees"};

class DamagedByAValue : public DamagedFile, public testing::WithParamInterface<DamagedValue> {};

TEST_P(DamagedByAValue, GivesASentenceWhereverItStands) {
  struct Column {
    std::string table, name;
  };
  std::vector<Column> columns;
  {
    auto database = Database::open(file, std::chrono::seconds(1)).value();
    auto read = database.prepare(
        "SELECT s.name, c.name FROM sqlite_schema s, pragma_table_info(s.name) c WHERE s.type = 'table' "
        "ORDER BY 1, c.cid");
    ASSERT_TRUE(read);
    while (read->step().value_or(false)) {
      columns.push_back({std::string(read->text(0)), std::string(read->text(1))});
    }
  }
  ASSERT_GT(columns.size(), 60U);
  for (const Column& column : columns) {
    const auto damaged = copied();
    execute(damaged, "UPDATE OR IGNORE " + column.table + " SET \"" + column.name + "\" = " + GetParam().sql);
    EXPECT_EQ(usedInAChild(damaged), "") << column.table << "." << column.name << " is " << GetParam().name;
  }
}

INSTANTIATE_TEST_SUITE_P(Every, DamagedByAValue, testing::ValuesIn(kValues), [](const auto& tested) {
  std::string name = tested.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

TEST_F(DamagedFile, GivesASentenceWhicheverByteOfAPackedColumnIsWrong) {
  for (const char* column : kPacked) {
    std::int64_t longest = 0;
    {
      auto database = Database::open(file, std::chrono::seconds(1)).value();
      longest = database.integerOf((std::string("SELECT max(length(") + column + ")) FROM items").c_str()).value_or(0);
    }
    ASSERT_GT(longest, 0) << column;
    for (std::int64_t at = 1; at <= longest; at += 5) {
      for (const char* byte : {"7f", "ff"}) {
        const auto damaged = copied();
        const std::string place = std::to_string(at);
        execute(damaged, std::string("UPDATE items SET ") + column + " = CAST(substr(" + column + ", 1, " + place +
                             " - 1) || x'" + byte + "' || substr(" + column + ", " + place + " + 1) AS BLOB) WHERE " +
                             column + " IS NOT NULL");
        EXPECT_EQ(usedInAChild(damaged), "") << column << " has " << byte << " at " << at;
      }
    }
  }
}

TEST_F(DamagedFile, GivesASentenceWhateverItsBytesAre) {
  const auto size = std::filesystem::file_size(file);
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 random(seed);
    const auto damaged = copied();
    {
      std::fstream stream(damaged, std::ios::in | std::ios::out | std::ios::binary);
      for (unsigned hit = 0; hit < 1 + random() % 12; ++hit) {
        // The marks that make it a store are left, most of the time: what lies behind them is what is asked about.
        const auto place = random() % 8 == 0 ? random() % size : 100 + random() % (size - 100);
        const std::size_t length = random() % 3 == 0 ? 1 + random() % 64 : 1;
        std::string bytes(length, random() % 2 == 0 ? '\0' : static_cast<char>(random()));
        stream.seekp(static_cast<std::streamoff>(place));
        stream.write(bytes.data(), static_cast<std::streamsize>(std::min<std::size_t>(length, size - place)));
      }
    }
    EXPECT_EQ(usedInAChild(damaged), "") << "seed " << seed;
  }
}

TEST_F(DamagedFile, IsReadWholeWhereNothingIsWrong) {
  const auto failed = firstFailure(copied());
  EXPECT_FALSE(failed) << failed->message;
  EXPECT_EQ(usedInAChild(copied()), "");
}

struct Damage {
  const char* sql;
  const char* named;
};

TEST_F(DamagedFile, IsReportedAsDamagedWithASafeRemedy) {
  constexpr Damage kDamages[] = {
      {"UPDATE items SET title = CAST(x'61ff62' AS TEXT) WHERE uid = 'single'", "Item 3 "},
      {"UPDATE items SET kind = 7 WHERE uid = 'single'", "Item 3 "},
      {"UPDATE items SET \"start\" = 99999999999999 WHERE uid = 'single'", "Item 3 "},
      {"UPDATE items SET alarms = x'01ff7f0000000000' WHERE uid = 'single'", "Item 3 "},
      {"UPDATE items SET \"start\" = NULL WHERE uid = 'single'", "Item 3 "},
      {"UPDATE calendars SET kind = 9 WHERE title = 'Calendar'", "calendar 1 "},
      {"UPDATE calendars SET title = CAST(x'ff' AS TEXT) WHERE title = 'Calendar'", "calendar 1 "},
      {"UPDATE sources SET type = 9", "source"},
      {"UPDATE timeline SET \"end\" = 'later'", "timeline"},
      {"UPDATE timeline SET slot = 'no shelf'", "timeline"},
      {"UPDATE changes SET operation = 200", "log of changes"},
      {"UPDATE items SET slot = 70000 WHERE uid = 'single'", ""},
  };
  for (const Damage& damage : kDamages) {
    const auto damaged = copied();
    execute(damaged, damage.sql);
    if (*damage.named == '\0') { continue; }
    const auto failed = firstFailure(damaged);
    ASSERT_TRUE(failed) << damage.sql;
    EXPECT_EQ(failed->code, ErrorCode::kCorrupt) << damage.sql;
    EXPECT_THAT(failed->message, HasSubstr(damage.named));
    EXPECT_THAT(failed->message, HasSubstr("orlocal export --salvage"));
    EXPECT_THAT(failed->message, HasSubstr("orlocal restore"));
  }
}

TEST_F(DamagedFile, IsRefusedWithForeignOrMissingDefinitions) {
  constexpr Damage kDamages[] = {
      {"CREATE TRIGGER spy AFTER INSERT ON items BEGIN DELETE FROM items; END", "spy"},
      {"ALTER TABLE items RENAME TO hidden; CREATE VIEW items AS SELECT * FROM hidden", "hidden"},
      {"ALTER TABLE timeline RENAME TO t2; CREATE VIEW timeline AS WITH RECURSIVE r(n) AS (VALUES(0) UNION ALL SELECT "
       "n FROM r) SELECT n AS slot, 0 AS start, 0 AS item, 0 AS end, 0 AS calendar, 0 AS flags, 0 AS series, 0 AS "
       "original FROM r",
       "t2"},
      {"CREATE TABLE extra(a)", "extra"},
      {"CREATE INDEX more ON items(title)", "more"},
      {"DROP INDEX items_by_series", "items_by_series"},
      {"DROP TABLE contacts", "contacts"},
      {"ALTER TABLE items ADD COLUMN more", "items"},
      {"DROP INDEX items_by_uid; CREATE INDEX items_by_uid ON items(uid)", "items_by_uid"},
      {"CREATE VIRTUAL TABLE more USING fts5(a)", "more"},
      {"CREATE TRIGGER spy AFTER INSERT ON changes BEGIN DELETE FROM items; END", "spy"},
  };
  for (const int version : {1, 2, 3, 4, 5}) {
    for (const Damage& damage : kDamages) {
      const auto damaged = copied();
      execute(damaged, backToVersion(version));
      execute(damaged, damage.sql);
      const auto failed = firstFailure(damaged);
      ASSERT_TRUE(failed) << damage.sql;
      EXPECT_EQ(failed->code, ErrorCode::kCorrupt) << damage.sql;
      EXPECT_THAT(failed->message, HasSubstr(std::string("\"") + damage.named + "\"")) << damage.sql;
      EXPECT_THAT(failed->message, HasSubstr("orlocal export --salvage"));
      EXPECT_EQ(usedInAChild(damaged), "") << damage.sql;
    }
  }
}

TEST_F(DamagedFile, IsRefusedWithAnIndexOfWordsOfAnotherKind) {
  constexpr Damage kDamages[] = {
      {"DROP TABLE search", "search"},
      {"DROP TABLE search; CREATE VIRTUAL TABLE search USING fts5(words)", "search"},
      {"DROP TABLE search_idx", "search_idx"},
      {"ALTER TABLE search_content RENAME TO hidden; CREATE VIEW search_content AS SELECT * FROM hidden", "hidden"},
      {"ALTER TABLE changes DROP COLUMN calendar", "changes"},
  };
  for (const Damage& damage : kDamages) {
    const auto damaged = copied();
    execute(damaged, damage.sql);
    const auto failed = firstFailure(damaged);
    ASSERT_TRUE(failed) << damage.sql;
    EXPECT_EQ(failed->code, ErrorCode::kCorrupt) << damage.sql;
    EXPECT_THAT(failed->message, HasSubstr(std::string("\"") + damage.named)) << damage.sql;
    EXPECT_EQ(usedInAChild(damaged), "") << damage.sql;
  }
}

TEST_F(DamagedFile, MayHoldWhatTheDatabaseItselfNotesAboutIt) {
  const auto copy = copied();
  execute(copy, "ANALYZE");
  const auto failed = firstFailure(copy);
  EXPECT_FALSE(failed) << failed->message;
}

TEST_F(DamagedFile, OfAVersionThatNeverWasIsRefused) {
  for (const char* version : {"-1", "-2147483648", "0"}) {
    const auto damaged = copied();
    execute(damaged, std::string("PRAGMA user_version = ") + version);
    const auto failed = firstFailure(damaged);
    ASSERT_TRUE(failed) << version;
    EXPECT_EQ(failed->code, ErrorCode::kCorrupt) << version;
    EXPECT_EQ(usedInAChild(damaged), "") << version;
  }
}

TEST_F(DamagedFile, IsSalvagedPastADamagedValue) {
  const auto damaged = copied();
  execute(damaged,
          "UPDATE items SET alarms = x'01ff7f' WHERE uid = 'single'; CREATE TRIGGER spy AFTER INSERT ON items "
          "BEGIN DELETE FROM items; END");
  std::string text;
  const auto report = salvage(damaged, {}, std::chrono::seconds(1), [&](std::string_view piece) -> Status {
    text += piece;
    return {};
  });
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_EQ(report->unreadable, 1);
  EXPECT_THAT(text, HasSubstr("SUMMARY:Series"));
  EXPECT_THAT(text, Not(HasSubstr("SUMMARY:Talk")));
}

TEST_F(DamagedFile, WithAViewInPlaceOfATableIsNotSalvagedThroughIt) {
  const auto damaged = copied();
  execute(damaged, "ALTER TABLE items RENAME TO hidden; CREATE VIEW items AS SELECT * FROM hidden");
  const auto report = salvage(damaged, {}, std::chrono::seconds(1), [](std::string_view) -> Status { return {}; });
  ASSERT_FALSE(report);
  EXPECT_THAT(report.error().message, HasSubstr("\"items\""));
}

TEST_F(DamagedFile, TakesNothingThatItWouldNotGiveBack) {
  store = opened();
  Item far = event("far", utc("2026-11-02 09:00"), utc("2026-11-02 10:00"));
  far.end->local += std::int64_t{400} * 366 * 86'400 * 100;
  Item broken = event("bro\xffken", utc("2026-11-02 09:00"), utc("2026-11-02 10:00"));
  for (Item* item : {&far, &broken}) {
    const auto status = saveEvent(*store, *item, std::nullopt, Span::kThis);
    ASSERT_FALSE(status);
    EXPECT_EQ(status.error().code, ErrorCode::kRefused);
  }
  Calendar calendar;
  calendar.title = "bro\xffken";
  calendar.source = 1;
  const auto status = store->saveCalendar(calendar);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kRefused);
  ASSERT_TRUE(store->calendars(CalendarKind::kEvents));
}

}  // namespace
}  // namespace orlocal::store
