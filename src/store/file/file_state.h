#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace orlocal::store {

/// The path from the root; where the current folder is no longer there, from "." on, which leads nowhere.
std::filesystem::path wholePath(const std::filesystem::path& path);

/// Which file a path leads to, and how far it was written when we looked. Asks the system for the path alone and never
/// opens the file: closing it again would drop the locks that SQLite holds on it for this process.
struct FileState {
  std::uint64_t device = 0;
  std::uint64_t number = 0;
  std::int64_t made = 0;  ///< nanoseconds since 1970; 0 where the file system does not keep it
  std::uint64_t size = 0;
  std::int64_t written = 0;  ///< nanoseconds since 1970

  /// None when nothing is there, or it cannot be reached.
  static std::optional<FileState> of(const std::filesystem::path& path);

  /// Another file may bear the number of one that was removed, but was made at another time.
  bool isSameFileAs(const FileState& other) const {
    return device == other.device && number == other.number && made == other.made;
  }
  friend bool operator==(const FileState&, const FileState&) = default;
};

}  // namespace orlocal::store
