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

/// What the same questions cost when nothing is left to do: an SQLite file of expanded occurrences with an index on
/// their start, scanned by that index, each row fetched; or with one on start and end, which answers alone.
class Floor {
 public:
  /// Makes the file anew from `rows`.
  static void build(const std::filesystem::path& file, const std::vector<FloorRow>& rows);

  explicit Floor(const std::filesystem::path& file);
  ~Floor();
  Floor(const Floor&) = delete;
  Floor& operator=(const Floor&) = delete;

  /// Steps through the rows that start in [from, to) and reads five columns of each; returns how many there were.
  std::size_t scan(std::int64_t from, std::int64_t to);
  /// The same by a covering index: start and end alone, and no row is fetched.
  std::size_t scanIndex(std::int64_t from, std::int64_t to);

 private:
  sqlite3* m_database = nullptr;
  sqlite3_stmt* m_range = nullptr;
  sqlite3_stmt* m_indexRange = nullptr;
};

/// One durable insert after another into a plain table: a full-sync write-ahead log, one transaction a row.
class InsertFloor {
 public:
  explicit InsertFloor(const std::filesystem::path& file);
  ~InsertFloor();
  InsertFloor(const InsertFloor&) = delete;
  InsertFloor& operator=(const InsertFloor&) = delete;

  void insert(const FloorRow& row);

 private:
  sqlite3* m_database = nullptr;
  sqlite3_stmt* m_insert = nullptr;
};

/// What reading a calendar file costs the iCalendar library alone: the whole text parsed into components, nothing kept.
/// Returns the number of components.
std::size_t parseWithLibical(const std::string& text);

}  // namespace orlocal::bench
