#include "floors.h"

#include <stdexcept>

#include <libical/ical.h>
#include <sqlite3.h>

namespace orlocal::bench {
namespace {

void check(int code, sqlite3* database) {
  if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW) {
    throw std::runtime_error(std::string("the floor's file: ") + sqlite3_errmsg(database));
  }
}

void execute(sqlite3* database, const char* sql) {
  check(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), database);
}

sqlite3_stmt* prepare(sqlite3* database, const char* sql) {
  sqlite3_stmt* statement = nullptr;
  check(sqlite3_prepare_v2(database, sql, -1, &statement, nullptr), database);
  return statement;
}

void bindText(sqlite3_stmt* statement, int column, const std::string& text) {
  sqlite3_bind_text(statement, column, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

void bindRow(sqlite3_stmt* statement, const FloorRow& row) {
  sqlite3_bind_int64(statement, 1, row.startSeconds);
  sqlite3_bind_int64(statement, 2, row.endSeconds);
  bindText(statement, 3, row.title);
  bindText(statement, 4, row.location);
  bindText(statement, 5, row.notes);
  bindText(statement, 6, row.uid);
}

constexpr const char* kTable =
    "CREATE TABLE occurrence (id INTEGER PRIMARY KEY, start INTEGER, \"end\" INTEGER, title TEXT, location TEXT, "
    "notes TEXT, uid TEXT)";
constexpr const char* kInsert =
    "INSERT INTO occurrence (start, \"end\", title, location, notes, uid) VALUES (?, ?, ?, ?, ?, ?)";

}  // namespace

void Floor::build(const std::filesystem::path& file, const std::vector<FloorRow>& rows) {
  std::filesystem::remove(file);
  sqlite3* database = nullptr;
  check(sqlite3_open(file.c_str(), &database), database);
  execute(database, kTable);
  execute(database, "BEGIN");
  sqlite3_stmt* insert = prepare(database, kInsert);
  for (const auto& row : rows) {
    bindRow(insert, row);
    check(sqlite3_step(insert), database);
    sqlite3_reset(insert);
  }
  sqlite3_finalize(insert);
  execute(database, "CREATE INDEX occurrence_start ON occurrence (start)");
  execute(database, "CREATE INDEX occurrence_times ON occurrence (start, \"end\")");
  execute(database, "COMMIT");
  sqlite3_close(database);
}

Floor::Floor(const std::filesystem::path& file) {
  check(sqlite3_open_v2(file.c_str(), &m_database, SQLITE_OPEN_READONLY, nullptr), m_database);
  m_range = prepare(m_database,
                    "SELECT start, \"end\", title, location, uid FROM occurrence INDEXED BY occurrence_start WHERE "
                    "start >= ? AND start < ? ORDER BY start");
  m_indexRange = prepare(m_database,
                         "SELECT start, \"end\" FROM occurrence INDEXED BY occurrence_times "
                         "WHERE start >= ? AND start < ? ORDER BY start");
}

Floor::~Floor() {
  sqlite3_finalize(m_indexRange);
  sqlite3_finalize(m_range);
  sqlite3_close(m_database);
}

std::size_t Floor::scan(std::int64_t from, std::int64_t to) {
  sqlite3_bind_int64(m_range, 1, from);
  sqlite3_bind_int64(m_range, 2, to);
  std::size_t rows = 0;
  std::uint64_t sum = 0;
  while (sqlite3_step(m_range) == SQLITE_ROW) {
    sum += static_cast<std::uint64_t>(sqlite3_column_int64(m_range, 0) ^ sqlite3_column_int64(m_range, 1));
    for (int column = 2; column < 5; ++column) {
      const unsigned char* text = sqlite3_column_text(m_range, column);
      sum += text == nullptr ? 0 : text[0];
    }
    ++rows;
  }
  sqlite3_reset(m_range);
  asm volatile("" : : "r"(sum));  // the columns count as read
  return rows;
}

std::size_t Floor::scanIndex(std::int64_t from, std::int64_t to) {
  sqlite3_bind_int64(m_indexRange, 1, from);
  sqlite3_bind_int64(m_indexRange, 2, to);
  std::size_t rows = 0;
  std::uint64_t sum = 0;
  for (; sqlite3_step(m_indexRange) == SQLITE_ROW; ++rows) {
    sum += static_cast<std::uint64_t>(sqlite3_column_int64(m_indexRange, 0) ^ sqlite3_column_int64(m_indexRange, 1));
  }
  sqlite3_reset(m_indexRange);
  asm volatile("" : : "r"(sum));  // the columns count as read
  return rows;
}

InsertFloor::InsertFloor(const std::filesystem::path& file) {
  for (const char* suffix : {"", "-wal", "-shm"}) { std::filesystem::remove(file.string() + suffix); }
  check(sqlite3_open(file.c_str(), &m_database), m_database);
  execute(m_database, "PRAGMA journal_mode = WAL");
  execute(m_database, "PRAGMA synchronous = FULL");
  execute(m_database, kTable);
  m_insert = prepare(m_database, kInsert);
}

InsertFloor::~InsertFloor() {
  sqlite3_finalize(m_insert);
  sqlite3_close(m_database);
}

void InsertFloor::insert(const FloorRow& row) {
  bindRow(m_insert, row);
  check(sqlite3_step(m_insert), m_database);
  sqlite3_reset(m_insert);
}

std::size_t parseWithLibical(const std::string& text) {
  icalcomponent* calendar = icalparser_parse_string(text.c_str());
  if (calendar == nullptr) { throw std::runtime_error("libical cannot read the measured file"); }
  const int count = icalcomponent_count_components(calendar, ICAL_ANY_COMPONENT);
  icalcomponent_free(calendar);
  return static_cast<std::size_t>(count);
}

}  // namespace orlocal::bench
