#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::store {

/// What a whole copy holds.
struct CopiedStore {
  std::int64_t events = 0;
  std::int64_t reminders = 0;
  std::uintmax_t bytes = 0;
};

class Database;

/// Copies an open store into `target`, an empty file, as one file that depends on no log, and checks it there.
Result<CopiedStore> copyChecked(Database& source, const std::filesystem::path& target,
                                std::chrono::milliseconds busyTimeout);

enum class ExistingFile { kIsRefused, kIsReplaced };

/// Copies the store at `file`, as it stands at one moment, into one file that is whole by itself, while others read and
/// write it. The copy appears at `target` when it is complete, checked and on disk.
Result<CopiedStore> backUpStore(const std::filesystem::path& file, const std::filesystem::path& target,
                                ExistingFile existing, std::chrono::milliseconds busyTimeout);

struct RestoredStore {
  CopiedStore content;
  std::optional<std::filesystem::path> kept;  ///< what was there before
  bool keptUnread = false;                    ///< it could not be read, and its files were moved as they are
};

/// Puts the content of `backup`, a whole store that is checked first, in place of that of `store`, and keeps what is
/// there in a file beside it. Others may read and write meanwhile: it is one commit to them. What is made later never
/// gets a number that was given before, and the log of changes begins anew.
Result<RestoredStore> restoreStore(const StoreOptions& store, const std::filesystem::path& backup);

}  // namespace orlocal::store
