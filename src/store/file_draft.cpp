#include "store/file_draft.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "store/try.h"
#include "store/uuid.h"

namespace orlocal::store {
namespace {

tl::unexpected<Error> cannotWrite(const std::filesystem::path& file, int error) {
  const ErrorCode code = error == EACCES || error == EPERM || error == EROFS ? ErrorCode::kReadOnly
                         : error == ENOSPC || error == EDQUOT                ? ErrorCode::kFull
                                                                             : ErrorCode::kIo;
  return failure(code, fmt::format("The file \"{}\" cannot be written: {}.", file.string(), std::strerror(error)));
}

Status writtenThrough(const std::filesystem::path& path, int flags) {
  const int descriptor = ::open(path.c_str(), flags | O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return cannotWrite(path, errno);
  const int error = ::fsync(descriptor) == 0 ? 0 : errno;
  ::close(descriptor);
  if (error != 0) return cannotWrite(path, error);
  return {};
}

}  // namespace

Result<FileDraft> FileDraft::beside(const std::filesystem::path& target) {
  UuidMaker names;
  for (;;) {
    FileDraft draft(target.string() + fmt::format(".{:016x}.part", names.randomNumber()));
    const int made = ::open(draft.m_file.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (made >= 0) {
      ::close(made);
      return draft;
    }
    const int error = errno;
    draft.m_file.clear();
    if (error != EEXIST) return cannotWrite(target, error);
  }
}

FileDraft::~FileDraft() {
  if (m_file.empty()) return;
  std::error_code ignored;
  for (const char* suffix : {"", "-wal", "-shm", "-journal", "-bell"}) {
    std::filesystem::remove(m_file.string() + suffix, ignored);
  }
}

Status FileDraft::publish(const std::filesystem::path& target) { return moveTo(target, false); }
Status FileDraft::publishInPlaceOf(const std::filesystem::path& target) { return moveTo(target, true); }

Status FileDraft::moveTo(const std::filesystem::path& target, bool replace) {
  ORLOCAL_CHECK(writtenThrough(m_file, 0));
  int error = 0;
  if (::renameat2(AT_FDCWD, m_file.c_str(), AT_FDCWD, target.c_str(), replace ? 0 : RENAME_NOREPLACE) != 0) {
    error = errno;
    // Not every file system can do this in one go; a second name is never given twice either.
    if (!replace && (error == EINVAL || error == ENOSYS))
      error = ::link(m_file.c_str(), target.c_str()) == 0 ? 0 : errno;
  }
  if (error == EEXIST) {
    return failure(ErrorCode::kInvalid,
                   fmt::format("The file \"{}\" is there already; choose another name.", target.string()));
  }
  if (error != 0) return cannotWrite(target, error);
  std::error_code ignored;
  std::filesystem::remove(m_file, ignored);
  const auto folder = std::filesystem::absolute(target).parent_path();
  ORLOCAL_CHECK(writtenThrough(folder, O_DIRECTORY));
  for (const char* suffix : {"-wal", "-shm", "-journal", "-bell"}) {
    std::filesystem::remove(m_file.string() + suffix, ignored);
  }
  m_file.clear();
  return {};
}

}  // namespace orlocal::store
