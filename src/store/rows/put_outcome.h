#pragma once

#include <cstdint>

namespace orlocal::store {

/// What putting an item, with its changed occurrences, or a contact did to the one that the store had of it.
enum class PutOutcome : std::uint8_t { kNew, kUpdated, kUnchanged };

}  // namespace orlocal::store
