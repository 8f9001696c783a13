#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "store/model/model.h"
#include "store/time/time.h"

namespace orlocal::store {

/// Something that a person asked for and may take back.
struct Command {
  std::string person;  ///< who asked, the same for all that they ask: "1000 grace"
  std::string words;   ///< what was done, for people: `remove "Lunch" of Mon 2 Nov 2026`
};

/// A command as the journal has it.
struct JournalEntry {
  std::int64_t number = 0;
  Command command;
  Moment made;
  std::optional<std::int64_t> undoes;    ///< the number of the command that this one took back
  std::optional<std::int64_t> undoneBy;  ///< the number of the one that took this back
};

/// What a command did to an event, a series with its changed occurrences, or a reminder.
struct CommandChange {
  enum class What : std::uint8_t { kMade, kChanged, kRemoved };
  What what = What::kChanged;
  ItemId row = 0;
  /// As it was before; of what was made, as it is now. None where neither is known: what was made is gone meanwhile,
  /// or only an occurrence was changed of a series that is.
  std::optional<Item> item;
};

}  // namespace orlocal::store
