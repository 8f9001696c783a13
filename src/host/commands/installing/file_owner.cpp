#include "host/commands/installing/file_owner.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"

namespace orlocal::host {
namespace {

std::string nameOfGroup(gid_t id) {
  const struct group* const known = ::getgrgid(id);
  return known == nullptr ? std::to_string(id) : known->gr_name;
}

FileOwner named(uid_t user, gid_t group) {
  const struct passwd* const known = ::getpwuid(user);
  return {user, group, known == nullptr ? std::to_string(user) : known->pw_name, nameOfGroup(group)};
}

}  // namespace

Result<FileOwner> accountNamed(const std::string& name) {
  const struct passwd* const known = ::getpwnam(name.c_str());
  if (known == nullptr) {
    return failure(ErrorCode::kNotFound,
                   tr("this machine has no account {}; name the one that the server runs as with --user", name));
  }
  return FileOwner{known->pw_uid, known->pw_gid, name, nameOfGroup(known->pw_gid)};
}

Result<FileOwner> ownerOf(const std::filesystem::path& path) {
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0) {
    return failure(errno == ENOENT ? ErrorCode::kNotFound : ErrorCode::kIo,
                   fmt::format("{}: {}", path.string(), systemReason(errno)));
  }
  return named(found.st_uid, found.st_gid);
}

Result<FileOwner> withGroupOf(FileOwner owner, const std::filesystem::path& path) {
  ORLOCAL_TRY(const FileOwner other, ownerOf(path));
  owner.group = other.group;
  owner.groupName = other.groupName;
  return owner;
}

Status mayGiveTo(const FileOwner& owner) {
  if (::geteuid() == 0 || owner.user == ::geteuid()) { return {}; }
  return failure(ErrorCode::kNotPermitted,
                 tr("only root may give files to {}; run this as root, or name yourself with --user", owner.userName));
}

Status give(const std::filesystem::path& path, const FileOwner& owner, mode_t mode) {
  const int opened = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  // One's own files may stay with one's own group where a folder's is not among one's groups.
  const bool given = opened >= 0 && (::fchown(opened, owner.user, owner.group) == 0 || ::geteuid() != 0) &&
                     ::fchmod(opened, mode) == 0 && ::fsync(opened) == 0;
  const int error = errno;
  if (opened >= 0) { ::close(opened); }
  if (given) { return {}; }
  return failure(ErrorCode::kIo, tr("{} cannot be given to {}: {}", path.string(), owner.text(), systemReason(error)));
}

Status makeStoreFolder(const std::filesystem::path& folder, const FileOwner& owner) {
  std::error_code error;
  if (std::filesystem::is_directory(folder, error)) { return {}; }
  std::filesystem::create_directories(folder.parent_path(), error);
  if (error || ::mkdir(folder.c_str(), 0700) != 0) {
    return failure(ErrorCode::kIo, tr("the store's folder {} cannot be made: {}; name a store elsewhere with "
                                      "--store",
                                      folder.string(), error ? error.message() : systemReason(errno)));
  }
  Status given = give(folder, owner, 0700);
  if (!given) { ::rmdir(folder.c_str()); }
  return given;
}

}  // namespace orlocal::host
