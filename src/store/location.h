#pragma once

#include <filesystem>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::store {

/// Where the user's store is: the file that `ORLOCAL_STORE` or a settings file names, else `orlocal/calendar.db` in
/// `XDG_DATA_HOME`, else in `.local/share` of `HOME`. Fails when none of them says; the file need not exist. Read anew
/// at each call.
Result<std::filesystem::path> userStoreFile();

/// How the user's store is opened: the file above, seen from `viewer`; a writer waits for its turn as many seconds as
/// `ORLOCAL_WAIT` or a settings file says, from 0 to 3600, or ten. Fails, naming the setting, when one of them makes no
/// sense.
Result<StoreOptions> userStoreOptions(const Zone& viewer);

}  // namespace orlocal::store
