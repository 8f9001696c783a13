#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace orlocal::bench {

/// One occurrence, already expanded.
struct FloorRow {
  std::int64_t startSeconds = 0;
  std::int64_t endSeconds = 0;
  std::string title, location, notes, uid;
};

/// Makes an SQLite file of occurrences, row by row in one transaction.
class FloorWriter {
 public:
  explicit FloorWriter(const std::filesystem::path& file);
  ~FloorWriter();
  FloorWriter(const FloorWriter&) = delete;
  FloorWriter& operator=(const FloorWriter&) = delete;

  void add(const FloorRow& row);
  /// Makes the index, and commits.
  void finish();

 private:
  sqlite3* m_database = nullptr;
  sqlite3_stmt* m_insert = nullptr;
  std::int64_t m_longestShort = 0, m_longestLong = 0;
};

/// What the same questions cost when nothing is left to do: the occurrences are expanded, and an index on start and end
/// finds those that overlap a range. Those that last half a day or more are asked for by themselves, so that the others
/// need be looked for no further back than the longest of them lasts.
class Floor {
 public:
  explicit Floor(const std::filesystem::path& file);
  ~Floor();
  Floor(const Floor&) = delete;
  Floor& operator=(const Floor&) = delete;

  /// Steps through the rows that overlap [from, to) in the order of their start, and reads five columns of each;
  /// returns how many there were.
  std::size_t rowsWithin(std::int64_t from, std::int64_t to);
  /// The same by the index alone: start and end, and no row is fetched.
  std::size_t timesWithin(std::int64_t from, std::int64_t to);

  /// The numbers of the rows within, in their order.
  std::vector<std::int64_t> numbersWithin(std::int64_t from, std::int64_t to);
  /// Reads five columns of each row, one after the other, within one transaction.
  void readRows(const std::vector<std::int64_t>& numbers);

 private:
  void bindRange(sqlite3_stmt* statement, std::int64_t from, std::int64_t to) const;

  sqlite3* m_database = nullptr;
  sqlite3_stmt* m_rows = nullptr;
  sqlite3_stmt* m_times = nullptr;
  sqlite3_stmt* m_numbers = nullptr;
  sqlite3_stmt* m_row = nullptr;
  std::int64_t m_longestShort = 0, m_longestLong = 0;
};

/// One durable insert after another into a plain table: a full-sync write-ahead log, one transaction a row.
class InsertFloor {
 public:
  /// Makes the file anew.
  static void make(const std::filesystem::path& file);

  explicit InsertFloor(const std::filesystem::path& file);
  ~InsertFloor();
  InsertFloor(const InsertFloor&) = delete;
  InsertFloor& operator=(const InsertFloor&) = delete;

  /// Waits for its turn when another process inserts.
  void insert();

 private:
  sqlite3* m_database = nullptr;
  sqlite3_stmt* m_insert = nullptr;
};

/// What reading a calendar file costs the iCalendar library alone: the whole text parsed into components, nothing kept.
/// Returns the number of events.
std::size_t parseWithLibical(const std::string& text);

}  // namespace orlocal::bench
