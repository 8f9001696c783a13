#pragma once

#include <span>

#include "base/result.h"
#include "store/file/sqlite.h"

namespace orlocal::store {

/// Compares what the file defines (tables, indexes, views, triggers) with the statements that make them, which end with
/// ";\n". Fails, naming the object, where there is one more, one less, or another: SQLite would run what a foreign
/// trigger or view says, in our name.
Status checkDefinitions(Database& database, std::span<const char* const> steps);

/// For who reads a file as it is, and runs no triggers: fails where something other than a table of rows stands under
/// the name of one of ours.
Status checkTables(Database& database, std::span<const char* const> steps);

}  // namespace orlocal::store
