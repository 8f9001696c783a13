#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "measure.h"

namespace orlocal::bench {

/// What a task costs in instructions, which no other load of the machine changes.
struct InstructionCount {
  std::string task;
  std::size_t events = 0;  ///< size of the store
  std::uint64_t instructions = 0;
};

/// All that a run found out.
struct Results {
  std::string date;  ///< 2026-11-23
  unsigned threads = 0;
  std::vector<Row> rows;
  std::vector<InstructionCount> instructions;
  std::vector<std::string> notes;
};

/// As JSON; throws when the file cannot be written or is no such file.
void writeResults(const Results& results, const std::filesystem::path& file);
Results readResults(const std::filesystem::path& file);

/// The rows of one name: one thing in stores that grow, or in one.
struct Series {
  std::string name;
  std::vector<Row> rows;

  bool grows() const { return rows.size() > 1; }

  /// The row of 10,000 events, or the first one.
  const Row& base() const;
};

/// In the order in which the names came.
std::vector<Series> seriesOf(const Results& results);
/// Of those, the times that were measured in stores of several sizes.
std::vector<Series> growingTimesOf(const Results& results);

/// One row's share, which ought not to grow.
inline double costOfOne(const Side& side) {
  return side.rows == 0 ? 0 : side.amount.median / static_cast<double>(side.rows);
}

}  // namespace orlocal::bench
