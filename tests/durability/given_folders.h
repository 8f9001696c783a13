#pragma once

#include <filesystem>

namespace orlocal::test {

/// What is there before a change.
enum class Given {
  kNothing,      ///< an empty folder, and files to import
  kStore,        ///< a closed store with a bit of everything, files to import, an older export
  kLog,          ///< the same, whose last user was killed: its newest events are in the log alone
  kFullLog,      ///< the same with a log so long that the next commit brings it into the file
  kOldFormat,    ///< the store as an older program left it
  kOldZones,     ///< the store as a system with older zone data left it
  kBackup,       ///< the store and a backup of another one, "backup.db"
  kBackupAlone,  ///< the backup, and no store
  kDamaged,      ///< the backup, and a store that cannot be read
};
constexpr int kGivens = 9;

/// Makes them all, each in a folder of its own below `folder`.
void makeGivens(const std::filesystem::path& folder);
std::filesystem::path givenIn(const std::filesystem::path& folder, Given given);

}  // namespace orlocal::test
