#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "measure.h"

namespace orlocal::bench {

/// Where and how much to measure.
struct Setting {
  std::filesystem::path program;  ///< this one
  std::filesystem::path plugin;   ///< Orlocal.fmx
  std::filesystem::path folder;   ///< for stores and floors; emptied before
  std::vector<std::size_t> sizes{1'000, 10'000, 100'000};
  int rounds = 7;
  bool smoke = false;
  std::string only;  ///< of the hostile inputs: those whose name has this in it
};

/// Collects rows and remarks and prints them as they come.
class Report {
 public:
  void add(Row row);
  void note(std::string line);
  /// Prints a line that belongs to no row.
  void print(const std::string& text) const;
  /// The rows as a Markdown table, then the notes.
  std::string markdown() const;

 private:
  std::vector<Row> m_rows;
  std::vector<std::string> m_notes;
};

/// Imports `ics` into a new store at `file`, beside the iCalendar library parsing the same text.
Row measureImport(const Setting& setting, const std::filesystem::path& ics, const std::filesystem::path& file,
                  std::size_t events);

/// Adds how long imports of `ics`, which has `events`, keep others from saving, beside as many rows that are written
/// into an SQLite file together.
void measureTurns(Report& report, const Setting& setting, const std::filesystem::path& ics, std::size_t events);

/// Adds what a thousand occurrences cost where most of the store lies elsewhere, in a stretch that was answered before
/// and in one that was not, beside the occurrences in `floorFile`.
void measureStretches(Report& report, const Setting& setting, const std::filesystem::path& floorFile,
                      std::size_t events);

/// Answers twelve months from the store that the environment names, and prints this process's peak of memory in KiB.
void printPeakOfReading(const Setting& setting);

// Each adds its rows to the report.
void measureCallOverhead(Report& report, const Setting& setting);
void measureReading(Report& report, const Setting& setting);
void measureSaving(Report& report, const Setting& setting);
void measureNotices(Report& report, const Setting& setting);
/// Inputs that were made to hurt: what they cost, against their size.
void measureHostile(Report& report, const Setting& setting);

}  // namespace orlocal::bench
