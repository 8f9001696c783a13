#pragma once

#include <filesystem>
#include <string>

#include <sys/types.h>

#include "base/result.h"

namespace orlocal::host {

/// Whose a file is to be.
struct FileOwner {
  uid_t user = 0;
  gid_t group = 0;
  std::string userName, groupName;

  /// "fmserver:fmsadmin"
  std::string text() const { return userName + ':' + groupName; }
};

/// The account of that name, with its own group.
Result<FileOwner> accountNamed(const std::string& name);
/// Whose `path` is; `kNotFound` where there is none.
Result<FileOwner> ownerOf(const std::filesystem::path& path);
/// The same account, with the group of `path`.
Result<FileOwner> withGroupOf(FileOwner owner, const std::filesystem::path& path);

/// Whether this process may make files that are `owner`'s: root may, and anybody for themselves. A failure says what to
/// do.
Status mayGiveTo(const FileOwner& owner);

/// Gives it to `owner`, with that mode, whatever the mask says. No link is followed.
Status give(const std::filesystem::path& path, const FileOwner& owner, mode_t mode);

/// The folder of a store, for `owner` alone (0700), and those above it as far as they are missing. One that is there
/// stays as it is.
Status makeStoreFolder(const std::filesystem::path& folder, const FileOwner& owner);

}  // namespace orlocal::host
