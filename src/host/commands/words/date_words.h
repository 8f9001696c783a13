#pragma once

#include <optional>

#include "base/result.h"
#include "host/commands/words/word_cursor.h"

// Days as people write them, by the rules of time_words.h.
namespace orlocal::host {

Result<std::optional<store::LocalDay>> takeDay(WordCursor& words);
Result<store::LocalDay> readDay(std::string_view text, const WordsSetting& setting);

/// `day` some units later; a day that a month does not have becomes its last.
store::LocalDay later(store::LocalDay day, int count, Unit unit);

/// Whether the word looks like a date, of this calendar or not: "31.2.", "11/2".
bool isShapedLikeDate(std::string_view word);

}  // namespace orlocal::host
