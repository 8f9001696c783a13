#pragma once

#include <filesystem>

#include "host/commands/care/finding.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Looks at the store's file from outside: where it is, whose, its mode, its version, whether all of it can be read,
/// and who has it open.
Findings storeFindings(const store::StoreOptions& store);

}  // namespace orlocal::host
