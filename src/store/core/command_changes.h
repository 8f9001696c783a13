#pragma once

#include <cstdint>
#include <vector>

#include "store/core/store_core.h"
#include "store/model/command.h"

namespace orlocal::store {

/// See `CalendarStore::changesBy`. Inside a transaction.
Result<std::vector<CommandChange>> changesOfCommand(StoreCore& core, std::int64_t number);

}  // namespace orlocal::store
