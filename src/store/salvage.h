#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/export.h"

namespace orlocal::store {

struct SalvageReport {
  std::int64_t items = 0;          ///< written: events and reminders, changed occurrences too
  std::int64_t unreadable = 0;     ///< items that are there, or may have been, and cannot be read
  std::int64_t withoutPlace = 0;   ///< of those written: their calendar cannot be read
  std::int64_t calendars = 0;      ///< that cannot be read, or may have been there
  std::int64_t zones = 0;          ///< private zones that cannot be read although items name them
  std::vector<std::string> notes;  ///< a line for each loss

  bool complete() const { return unreadable == 0 && withoutPlace == 0 && calendars == 0 && zones == 0; }
};

/// Writes out what can still be read of a damaged store, row by row and past the rows that cannot be read, as
/// `exportCalendars` would. Items whose calendar is lost come in one titled "Recovered". Only calendars with one of
/// `titles` (without titles: all) are written. Fails when nothing of the file can be read. Changes nothing.
Result<SalvageReport> salvage(const std::filesystem::path& file, const std::vector<std::string>& titles,
                              std::chrono::milliseconds busyTimeout, const TextSink& sink);

}  // namespace orlocal::store
