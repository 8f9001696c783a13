#include "floors.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>
#include <libical/ical.h>
#include <sqlite3.h>

namespace orlocal::bench {
namespace {

/// Seconds. Whole days may be an hour shorter than a day.
constexpr std::int64_t kLong = 12 * 3'600;

void check(int code, sqlite3* database) {
  if (code != SQLITE_OK && code != SQLITE_DONE && code != SQLITE_ROW) {
    throw std::runtime_error(std::string("the floor's file: ") + sqlite3_errmsg(database));
  }
}

void execute(sqlite3* database, const std::string& sql) {
  check(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), database);
}

sqlite3_stmt* prepare(sqlite3* database, const std::string& sql) {
  sqlite3_stmt* statement = nullptr;
  check(sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr), database);
  return statement;
}

sqlite3* openedAnew(const std::filesystem::path& file) {
  for (const char* suffix : {"", "-wal", "-shm"}) { std::filesystem::remove(file.string() + suffix); }
  sqlite3* database = nullptr;
  check(sqlite3_open(file.c_str(), &database), database);
  return database;
}

void bindText(sqlite3_stmt* statement, int column, const std::string& text) {
  sqlite3_bind_text(statement, column, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

bool isLong(const FloorRow& row) { return row.endSeconds - row.startSeconds >= kLong; }

void insertRow(sqlite3_stmt* statement, const FloorRow& row, sqlite3* database) {
  sqlite3_bind_int64(statement, 1, row.startSeconds);
  sqlite3_bind_int64(statement, 2, row.endSeconds);
  sqlite3_bind_int(statement, 3, isLong(row) ? 1 : 0);
  bindText(statement, 4, row.title);
  bindText(statement, 5, row.location);
  bindText(statement, 6, row.notes);
  bindText(statement, 7, row.uid);
  check(sqlite3_step(statement), database);
  sqlite3_reset(statement);
}

constexpr const char* kTable =
    "CREATE TABLE occurrence (id INTEGER PRIMARY KEY, start INTEGER, \"end\" INTEGER, long INTEGER, title TEXT, "
    "location TEXT, notes TEXT, uid TEXT)";
constexpr const char* kInsert =
    "INSERT INTO occurrence (start, \"end\", long, title, location, notes, uid) VALUES (?, ?, ?, ?, ?, ?, ?)";

std::string within(const char* columns) {
  // The same condition for both lengths, which differ only in how far back they are looked for.
  const auto part = [&](int isLong, int lookBack) {
    return fmt::format(
        "SELECT {} FROM occurrence INDEXED BY occurrence_times WHERE long = {} AND start > ?{} AND start < ?2 AND "
        "(\"end\" > ?1 OR start >= ?1)",
        columns, isLong, lookBack);
  };
  return part(0, 3) + " UNION ALL " + part(1, 4) + " ORDER BY start";
}

/// Reads start, end, and `texts` columns after them.
std::uint64_t columnsRead(sqlite3_stmt* statement, int texts) {
  auto sum = static_cast<std::uint64_t>(sqlite3_column_int64(statement, 0) ^ sqlite3_column_int64(statement, 1));
  for (int column = 2; column < 2 + texts; ++column) {
    const unsigned char* text = sqlite3_column_text(statement, column);
    sum += text == nullptr ? 0 : text[0];
  }
  return sum;
}

std::size_t stepThrough(sqlite3_stmt* statement, int texts) {
  std::size_t rows = 0;
  std::uint64_t sum = 0;
  for (; sqlite3_step(statement) == SQLITE_ROW; ++rows) { sum += columnsRead(statement, texts); }
  sqlite3_reset(statement);
  asm volatile("" : : "r"(sum));  // the columns count as read
  return rows;
}

constexpr const char* kColumns = "start, \"end\", title, location, uid";
constexpr int kTexts = 3;

}  // namespace

FloorWriter::FloorWriter(const std::filesystem::path& file) : m_database(openedAnew(file)) {
  execute(m_database, "BEGIN");
  execute(m_database, kTable);
  execute(m_database, "CREATE TABLE longest (short INTEGER, long INTEGER)");
  m_insert = prepare(m_database, kInsert);
}

FloorWriter::~FloorWriter() {
  sqlite3_finalize(m_insert);
  sqlite3_close(m_database);
}

void FloorWriter::add(const FloorRow& row) {
  std::int64_t& longest = isLong(row) ? m_longestLong : m_longestShort;
  longest = std::max(longest, row.endSeconds - row.startSeconds);
  insertRow(m_insert, row, m_database);
}

void FloorWriter::finish() {
  execute(m_database, "CREATE INDEX occurrence_times ON occurrence (long, start, \"end\")");
  execute(m_database, fmt::format("INSERT INTO longest VALUES ({}, {})", m_longestShort, m_longestLong));
  execute(m_database, "COMMIT");
}

Floor::Floor(const std::filesystem::path& file) {
  check(sqlite3_open_v2(file.c_str(), &m_database, SQLITE_OPEN_READONLY, nullptr), m_database);
  m_rows = prepare(m_database, within(kColumns));
  m_times = prepare(m_database, within("start, \"end\""));
  m_numbers = prepare(m_database, within("start, id"));
  m_row = prepare(m_database, fmt::format("SELECT {} FROM occurrence WHERE id = ?", kColumns));
  sqlite3_stmt* longest = prepare(m_database, "SELECT short, long FROM longest");
  check(sqlite3_step(longest), m_database);
  m_longestShort = sqlite3_column_int64(longest, 0);
  m_longestLong = sqlite3_column_int64(longest, 1);
  sqlite3_finalize(longest);
}

Floor::~Floor() {
  for (sqlite3_stmt* statement : {m_rows, m_times, m_numbers, m_row}) { sqlite3_finalize(statement); }
  sqlite3_close(m_database);
}

void Floor::bindRange(sqlite3_stmt* statement, std::int64_t from, std::int64_t to) const {
  sqlite3_bind_int64(statement, 1, from);
  sqlite3_bind_int64(statement, 2, to);
  // One that lasts no time is within where it stands.
  sqlite3_bind_int64(statement, 3, from - std::max<std::int64_t>(m_longestShort, 1));
  sqlite3_bind_int64(statement, 4, from - std::max<std::int64_t>(m_longestLong, 1));
}

std::size_t Floor::rowsWithin(std::int64_t from, std::int64_t to) {
  bindRange(m_rows, from, to);
  return stepThrough(m_rows, kTexts);
}

std::size_t Floor::timesWithin(std::int64_t from, std::int64_t to) {
  bindRange(m_times, from, to);
  return stepThrough(m_times, 0);
}

std::vector<std::int64_t> Floor::numbersWithin(std::int64_t from, std::int64_t to) {
  bindRange(m_numbers, from, to);
  std::vector<std::int64_t> numbers;
  while (sqlite3_step(m_numbers) == SQLITE_ROW) { numbers.push_back(sqlite3_column_int64(m_numbers, 1)); }
  sqlite3_reset(m_numbers);
  return numbers;
}

void Floor::readRows(const std::vector<std::int64_t>& numbers) {
  execute(m_database, "BEGIN");
  for (const std::int64_t number : numbers) {
    sqlite3_bind_int64(m_row, 1, number);
    if (stepThrough(m_row, kTexts) != 1) { throw std::runtime_error("a row of the floor's file is missing"); }
  }
  execute(m_database, "COMMIT");
}

void InsertFloor::make(const std::filesystem::path& file) {
  sqlite3* database = openedAnew(file);
  execute(database, "PRAGMA journal_mode = WAL");
  execute(database, kTable);
  sqlite3_close(database);
}

InsertFloor::InsertFloor(const std::filesystem::path& file) {
  check(sqlite3_open(file.c_str(), &m_database), m_database);
  sqlite3_busy_timeout(m_database, 10'000);
  execute(m_database, "PRAGMA synchronous = FULL");
  m_insert = prepare(m_database, kInsert);
}

InsertFloor::~InsertFloor() {
  sqlite3_finalize(m_insert);
  sqlite3_close(m_database);
}

void InsertFloor::insert() {
  insertRow(m_insert, {1793865600, 1793869200, "Saved 1", "Room 12", "", "0000@measured.example"}, m_database);
}

std::size_t parseWithLibical(const std::string& text) {
  icalcomponent* calendar = icalparser_parse_string(text.c_str());
  if (calendar == nullptr) { throw std::runtime_error("libical cannot read the measured file"); }
  const int count = icalcomponent_count_components(calendar, ICAL_VEVENT_COMPONENT);
  icalcomponent_free(calendar);
  return static_cast<std::size_t>(count);
}

}  // namespace orlocal::bench
