#pragma once

#include <filesystem>

#include "base/result.h"

namespace orlocal::store {

// Whoever may write to the folder of a store can put something under the names of what stands beside it: a pipe at
// which every reader waits for ever, or a link that leads elsewhere.

/// Fails, naming the file and what to do, where the store at `file` or what SQLite keeps beside it ("-journal", "-wal",
/// "-shm") is something else than a regular file of one name. Where nobody but its owner may write a store, those
/// beside it must be of that owner or of this user. Nothing that is not there is missed. `file` is no link.
Status checkStoreFiles(const std::filesystem::path& file);

/// Opens the file of that suffix beside the store when it passes the same measure; never waits. Negative, with errno,
/// when it does not or cannot be opened. `flags` and `mode` are those of open(2).
int openBeside(const std::filesystem::path& file, const char* suffix, int flags, unsigned mode = 0);

/// Gives what root has just made, and has open, to the owner of the folder that it was made in, who is to use it.
void giveToOwner(int made, const std::filesystem::path& folder);

/// Brings the entries of a folder to the disk: a file that is not in its folder is lost with all it holds.
Status syncFolder(const std::filesystem::path& folder);

}  // namespace orlocal::store
