#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>

#include "store/time/zone.h"

namespace orlocal::store {

struct StoreOptions {
  std::filesystem::path file;
  /// Whose wall clock floating times and whole days are read on.
  Zone viewer;
  /// How long a writer waits for its turn.
  std::chrono::milliseconds busyTimeout{10'000};
  /// Where this user's new events and reminders go, by title or identifier; where there is no such calendar, or it
  /// allows no changes, the store's own choice counts. Empty: that one.
  std::string eventCalendar = {}, reminderList = {};
  /// Occurrences that one query may answer with; past it the query fails.
  std::size_t occurrenceBudget = 5'000'000;
  /// Whether series are kept in memory by their days (`LongEvents`). Answers are the same without, and slower.
  bool keepsLongEvents = true;
};

}  // namespace orlocal::store
