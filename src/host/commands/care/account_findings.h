#pragma once

#include "base/result.h"
#include "host/commands/care/finding.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// How the accounts and subscriptions are: what failed, what waits, what could not be merged.
Result<Findings> accountFindings(store::CalendarStore& store);

}  // namespace orlocal::host
