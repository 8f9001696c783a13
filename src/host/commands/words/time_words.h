#pragma once

#include <chrono>
#include <optional>

#include "base/result.h"
#include "host/commands/words/word_cursor.h"

// Times of day and lengths as people write them; docs/words.md has the tables. Each reader gives none where the words
// do not begin like what it reads, and leaves the cursor there; where they do and make no sense, it fails with their
// place.
namespace orlocal::host {

/// Minutes after midnight; 1440 is the midnight that ends the day.
using TimeOfDay = std::chrono::minutes;

struct TimeRange {
  TimeOfDay start{0};
  TimeOfDay end{0};  ///< not after `start`: on the next day
};

/// Days and hours are two things: a day has not always 24 hours.
struct Length {
  int days = 0;
  std::chrono::minutes minutes{0};

  friend bool operator==(const Length&, const Length&) = default;
};

/// `afterAt`: a number alone is an hour then ("at 9"), and 8h a time of day.
Result<std::optional<TimeOfDay>> takeTime(WordCursor& words, bool afterAt);
/// "12:30-13:30", "9-17", "9:00 to 10:30", "from 9 to 17".
Result<std::optional<TimeRange>> takeRange(WordCursor& words);
Result<std::optional<Length>> takeLength(WordCursor& words);

// The same of a text that is nothing else; failures say what may be written.
Result<TimeOfDay> readTime(std::string_view text, const WordsSetting& setting);
Result<Length> readLength(std::string_view text, const WordsSetting& setting);

/// Whether the word looks like a date or a time of day, sensible or not: "25:00", "31.2.", "11/2".
bool isShapedLikeTime(std::string_view word);

}  // namespace orlocal::host
