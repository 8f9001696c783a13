#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "store/time/time.h"

namespace orlocal::host {

/// Days from the first to the last, both included.
struct DayRange {
  store::LocalDay first, last;

  friend bool operator==(const DayRange&, const DayRange&) = default;
};

/// A day as people write it (docs/words.md) in the user's language, or a month: "2026-11", "november", "nov 2027".
std::optional<DayRange> daysFromWords(std::string_view words, store::LocalDay today);

/// What is wrong with words for days, or for one day, in a sentence; empty when they can be read, as the command line's
/// checks want it.
std::string objectionToDays(const std::string& words);
std::string objectionToDay(const std::string& words);

}  // namespace orlocal::host
