#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "host/commands/words/word_cursor.h"
#include "store/model/model.h"

// How something repeats, as people write it; docs/words.md has the table.
namespace orlocal::host {

/// "every 2 weeks", "every monday", "weekly until 2026-12-24": what may stand in a sentence. None where the words do
/// not begin with "every".
Result<std::optional<store::RecurrenceRule>> takeRepeat(WordCursor& words);

/// The text of `--repeat`: the same, words such as "daily", "mon,wed" or "last friday" alone, or an RRULE.
Result<store::RecurrenceRule> readRepeat(std::string_view text, const WordsSetting& setting);

}  // namespace orlocal::host
