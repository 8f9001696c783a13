#include "store/file/file_state.h"

#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace orlocal::store {
namespace {

std::int64_t nanoseconds(const statx_timestamp& time) { return time.tv_sec * 1'000'000'000 + time.tv_nsec; }

}  // namespace

std::filesystem::path wholePath(const std::filesystem::path& path) {
  std::error_code gone;
  auto whole = std::filesystem::absolute(path, gone);
  return gone ? "." / path : whole;
}

std::optional<FileState> FileState::of(const std::filesystem::path& path) {
  struct statx found {};
  constexpr unsigned kWanted = STATX_INO | STATX_SIZE | STATX_MTIME | STATX_BTIME;
  if (::statx(AT_FDCWD, path.c_str(), 0, kWanted, &found) != 0) { return std::nullopt; }
  FileState state;
  state.device = makedev(found.stx_dev_major, found.stx_dev_minor);
  state.number = found.stx_ino;
  if ((found.stx_mask & STATX_BTIME) != 0) { state.made = nanoseconds(found.stx_btime); }
  state.size = found.stx_size;
  state.written = nanoseconds(found.stx_mtime);
  return state;
}

}  // namespace orlocal::store
