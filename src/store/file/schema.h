#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>

#include "base/result.h"
#include "store/file/sqlite.h"
#include "store/file/uuid.h"

namespace orlocal::store {

/// "Orlo": marks an SQLite file as a calendar store.
constexpr std::int64_t kApplicationId = 0x4f726c6f;

/// The version of the format that this program writes.
std::int64_t formatVersion();

/// What to do where there is no file.
enum class Missing { kIsMade, kIsAFailure };

/// Opens a store file as docs/store_format.md describes it: makes it with its folder and the default calendars when it
/// is not there, brings an older version forward in one transaction. A file that is no calendar store, or one of a
/// newer version, is refused and stays as it is. Reads the header and the table definitions, nothing else.
Result<Database> openStoreFile(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout,
                               UuidMaker& uuids, Missing missing = Missing::kIsMade);

/// Makes the folders for it that are missing, only for the user.
Status makeStoreFolder(const std::filesystem::path& file);

/// Opens a store file of any version that is known, to read it as it is. Makes nothing and changes nothing.
Result<Database> openStoreAsItIs(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout);

}  // namespace orlocal::store
