#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace orlocal::host {

/// A process that has a file open.
struct FileUser {
  int process = 0;
  std::string name;  ///< of the program
  std::string user;

  friend bool operator==(const FileUser&, const FileUser&) = default;
};

/// Who has `file` open, this process left out. Other people's processes are seen by root alone.
std::vector<FileUser> usersOf(const std::filesystem::path& file);

}  // namespace orlocal::host
