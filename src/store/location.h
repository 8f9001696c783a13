#pragma once

#include <filesystem>

#include "store/result.h"

namespace orlocal::store {

/// Where the user's store is: the file that `ORLOCAL_STORE` names, else `orlocal/calendar.db` in `XDG_DATA_HOME`, else
/// in `.local/share` of `HOME`. Fails when none of them says; the file need not exist. Read anew at each call.
Result<std::filesystem::path> userStoreFile();

}  // namespace orlocal::store
