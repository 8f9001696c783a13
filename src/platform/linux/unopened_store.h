#pragma once

#include <memory>

#include "store/calendar_store.h"

namespace orlocal {

/// Stands for a store that could not be opened: every call fails with the reason.
std::unique_ptr<store::CalendarStore> makeUnopenedStore(Failure reason);

}  // namespace orlocal
