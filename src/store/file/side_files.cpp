#include "store/file/side_files.h"

#include <array>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/translation.h"

namespace orlocal::store {
namespace {

constexpr std::array kMadeBySqlite = {"-journal", "-wal", "-shm"};

const char* nounFor(mode_t mode) {
  if (S_ISDIR(mode)) { return translatable("folder"); }
  if (S_ISLNK(mode)) { return translatable("link"); }
  if (S_ISFIFO(mode)) { return translatable("pipe"); }
  if (S_ISSOCK(mode)) { return translatable("socket"); }
  return translatable("device");
}

/// What is wrong with a file beside a store; null when nothing is.
const char* flawOf(const struct stat& found, const struct stat& store) {
  if (!S_ISREG(found.st_mode)) { return nounFor(found.st_mode); }
  if (found.st_nlink > 1) { return translatable("file with several names"); }
  // Those who share a store may each have made what stands beside it.
  const bool shared = (store.st_mode & (S_IWGRP | S_IWOTH)) != 0;
  const bool known = found.st_uid == store.st_uid || found.st_uid == ::geteuid();
  return known || shared ? nullptr : translatable("file of another user");
}

}  // namespace

Status checkStoreFiles(const std::filesystem::path& file) {
  struct stat store {};
  // What cannot be looked at says why when it is opened.
  if (::stat(file.c_str(), &store) != 0) { return {}; }
  if (!S_ISREG(store.st_mode)) {
    return failure(ErrorCode::kIo, tr("The calendar store \"{}\" is a {} and no file; set ORLOCAL_STORE to a "
                                      "file.",
                                      file.string(), translated(nounFor(store.st_mode))));
  }
  for (const char* suffix : kMadeBySqlite) {
    const std::string beside = file.string() + suffix;
    struct stat found {};
    if (::lstat(beside.c_str(), &found) != 0) { continue; }
    if (const char* flaw = flawOf(found, store)) {
      return failure(ErrorCode::kIo,
                     tr("\"{}\" beside the calendar store is a {}, which none of its programs made; move it "
                        "away, and see who may write to the folder.",
                        beside, translated(flaw)));
    }
  }
  return {};
}

int openBeside(const std::filesystem::path& file, const char* suffix, int flags, unsigned mode) {
  const std::string beside = file.string() + suffix;
  const int opened = ::open(beside.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, mode);
  if (opened < 0) { return opened; }
  struct stat found {
  }, store{};
  // Without a store only this user and root are known.
  static_cast<void>(!::stat(file.c_str(), &store));
  if (::fstat(opened, &found) != 0 || flawOf(found, store) != nullptr) {
    ::close(opened);
    errno = EPERM;
    return -1;
  }
  return opened;
}

void giveToOwner(int made, const std::filesystem::path& folder) {
  if (::geteuid() != 0) { return; }
  struct stat in {
  }, own{};
  if (::stat(folder.c_str(), &in) != 0 || in.st_uid == 0 || ::fstat(made, &own) != 0) { return; }
  // The owner of the folder may have put something else of root's there meanwhile.
  if (own.st_uid != 0 || (S_ISREG(own.st_mode) && own.st_nlink > 1)) { return; }
  static_cast<void>(!::fchown(made, in.st_uid, in.st_gid));
}

Status syncFolder(const std::filesystem::path& folder) {
  const int opened = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int error = opened < 0 ? errno : ::fsync(opened) == 0 ? 0 : errno;
  if (opened >= 0) { ::close(opened); }
  // A folder that may be entered and not listed, or a file system that has nothing to bring to a disk.
  if (error == 0 || error == EACCES || error == EINVAL || error == EROFS) { return {}; }
  return failure(error == ENOSPC || error == EDQUOT ? ErrorCode::kFull : ErrorCode::kIo,
                 tr("The folder \"{}\" cannot be brought to the disk: {}.", folder.string(), std::strerror(error)));
}

}  // namespace orlocal::store
