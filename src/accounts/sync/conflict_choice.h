#pragma once

#include "store/calendar_store.h"
#include "store/model/remote.h"

namespace orlocal::accounts {

/// What somebody decided about a conflict.
enum class ConflictChoice {
  kMine,    ///< our version of what differs; the next sync sends it
  kTheirs,  ///< what the server has
  kBoth,    ///< the server's stays, and ours becomes an item of its own
};

/// Carries the decision out, in one transaction with taking the conflict off the list.
Status settle(store::CalendarStore& store, const store::Conflict& conflict, ConflictChoice choice);

}  // namespace orlocal::accounts
