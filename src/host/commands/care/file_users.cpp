#include "host/commands/care/file_users.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <optional>
#include <system_error>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

std::optional<int> processOf(const fs::path& folder) {
  const std::string name = folder.filename();
  int process = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
  return error == std::errc() && end == name.data() + name.size() ? std::optional(process) : std::nullopt;
}

bool hasOpen(const fs::path& process, const struct stat& file) {
  std::error_code error;
  for (fs::directory_iterator it(process / "fd", error), end; !error && it != end; it.increment(error)) {
    struct stat open {};
    if (::stat(it->path().c_str(), &open) == 0 && open.st_dev == file.st_dev && open.st_ino == file.st_ino) {
      return true;
    }
  }
  return false;
}

std::string ownerOf(const fs::path& process) {
  struct stat found {};
  if (::stat(process.c_str(), &found) != 0) { return "?"; }
  const passwd* owner = ::getpwuid(found.st_uid);
  return owner != nullptr ? owner->pw_name : std::to_string(found.st_uid);
}

}  // namespace

std::vector<FileUser> usersOf(const fs::path& file) {
  std::vector<FileUser> users;
  struct stat found {};
  if (::stat(file.c_str(), &found) != 0) { return users; }
  std::error_code error;
  // Processes come and go while they are looked at.
  for (fs::directory_iterator it("/proc", error), end; !error && it != end; it.increment(error)) {
    const auto process = processOf(it->path());
    if (!process || *process == ::getpid() || !hasOpen(it->path(), found)) { continue; }
    std::string name;
    std::getline(std::ifstream(it->path() / "comm"), name);
    users.push_back({*process, name, ownerOf(it->path())});
  }
  std::sort(users.begin(), users.end(), [](const auto& a, const auto& b) { return a.process < b.process; });
  return users;
}

}  // namespace orlocal::host
