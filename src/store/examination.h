#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "base/result.h"

namespace orlocal::store {

/// What a look at a store's file finds.
struct Examination {
  std::int64_t version = 0;  ///< of the format
  std::int64_t calendars = 0, events = 0, reminders = 0;
  std::uintmax_t bytes = 0;     ///< of the file
  std::uintmax_t logBytes = 0;  ///< of what SQLite has not brought into it yet
  std::uintmax_t unusedBytes = 0;
  std::vector<std::string> damage;  ///< SQLite's sentences on the file's structure
  std::vector<std::string> unread;  ///< a line for each thing in it that cannot be read
};

/// Reads all of the file, as it is, and changes nothing; others may read and write meanwhile. Fails when it is no
/// calendar store, is one of a newer version, or nothing of it can be read.
Result<Examination> examine(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout);

}  // namespace orlocal::store
