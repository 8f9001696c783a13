#include "durability/file_calls.h"

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// The functions at the end take the place of the C library's for the whole process: the linker finds a program's own
// first, for shared libraries too. They call the system themselves.
namespace orlocal::test {
namespace {

WatchFiles* s_watch = nullptr;
std::map<int, std::string>* s_open = nullptr;

}  // namespace

struct WatchedCall {
  /// Calls of the watcher itself go straight to the system.
  class Quiet {
   public:
    Quiet() : m_watch(std::exchange(s_watch, nullptr)), m_errno(errno) {}
    ~Quiet() {
      s_watch = m_watch;
      errno = m_errno;
    }
    WatchFiles& watch() { return *m_watch; }

   private:
    WatchFiles* m_watch;
    int m_errno;
  };

  /// The path when it is watched, else nothing.
  static std::string at(int folder, const char* name) {
    if (s_watch == nullptr || name == nullptr) { return {}; }
    Quiet quiet;
    std::string path = name;
    if (path.empty() || path[0] != '/') {
      const auto known = folder == AT_FDCWD ? s_open->end() : s_open->find(folder);
      if (known == s_open->end()) { return {}; }
      path = path.empty() ? known->second : known->second + "/" + path;
    }
    const std::string& watched = quiet.watch().m_folder;
    const bool inside = path.starts_with(watched) && (path.size() == watched.size() || path[watched.size()] == '/');
    return inside ? path : std::string();
  }
  static std::string of(int descriptor) { return at(descriptor, ""); }

  static Fate fateOf(FileCall call, const std::string& path) {
    Quiet quiet;
    return quiet.watch().m_watcher->fateOf(call, path);
  }
  static void tell(const FileDeed& deed) {
    Quiet quiet;
    if (deed.what == FileDeed::What::kMade || deed.what == FileDeed::What::kOpened) {
      s_open->insert_or_assign(deed.descriptor, deed.path);
    }
    quiet.watch().m_watcher->happened(deed);
  }
  [[noreturn]] static void die() {
    for (;;) { ::kill(::getpid(), SIGKILL); }
  }
};

WatchFiles::WatchFiles(const std::filesystem::path& folder, FileCallWatcher& watcher)
    : m_folder(folder.string()), m_watcher(&watcher), m_before(s_watch) {
  // Files are closed until the very end of the process.
  if (s_open == nullptr) { s_open = new std::map<int, std::string>; }
  s_watch = this;
}

WatchFiles::~WatchFiles() { s_watch = m_before; }

namespace {

using What = FileDeed::What;

/// A call that works or fails as a whole; `told` makes of its result what was done.
template <class Work, class Told>
long whole(FileCall call, const std::string& path, Work work, Told told) {
  if (path.empty()) { return work(); }
  const Fate fate = WatchedCall::fateOf(call, path);
  if (fate.what == Fate::What::kFails) {
    errno = fate.error;
    return -1;
  }
  if (fate.what == Fate::What::kDies) { WatchedCall::die(); }
  const long result = work();
  if (result >= 0) { told(result); }
  return result;
}
template <class Work>
long whole(FileCall call, const std::string& path, Work work) {
  return whole(call, path, work, [](long) {});
}

int opened(int folder, const char* name, int flags, mode_t mode) {
  const std::string path = WatchedCall::at(folder, name);
  const auto exists = [&] { return ::syscall(SYS_faccessat, folder, name, F_OK) == 0; };
  const bool makes = !path.empty() && (flags & O_CREAT) != 0 && !exists();
  return static_cast<int>(whole(
      FileCall::kOpen, path, [&] { return ::syscall(SYS_openat, folder, name, flags, mode); },
      [&](long result) {
        const int descriptor = static_cast<int>(result);
        WatchedCall::tell({.what = makes ? What::kMade : What::kOpened, .descriptor = descriptor, .path = path});
        if ((flags & O_TRUNC) != 0) {
          WatchedCall::tell({.what = What::kCutOff, .descriptor = descriptor, .path = path});
        }
      }));
}

long readAt(int file, void* bytes, std::size_t count, off_t at) {
  const auto work = [&](std::size_t n) {
    return at < 0 ? ::syscall(SYS_read, file, bytes, n) : ::syscall(SYS_pread64, file, bytes, n, at);
  };
  const std::string path = WatchedCall::of(file);
  if (path.empty()) { return work(count); }
  const Fate fate = WatchedCall::fateOf(FileCall::kRead, path);
  if (fate.what == Fate::What::kFails) {
    errno = fate.error;
    return -1;
  }
  if (fate.what == Fate::What::kDies || fate.what == Fate::What::kDiesHalfDone) { WatchedCall::die(); }
  return work(fate.what == Fate::What::kIsCutShort && count > 1 ? count / 2 : count);
}

long writeAt(int file, const void* bytes, std::size_t count, off_t at) {
  const auto work = [&](std::size_t n) {
    return at < 0 ? ::syscall(SYS_write, file, bytes, n) : ::syscall(SYS_pwrite64, file, bytes, n, at);
  };
  const std::string path = WatchedCall::of(file);
  if (path.empty()) { return work(count); }
  const Fate fate = WatchedCall::fateOf(FileCall::kWrite, path);
  if (fate.what == Fate::What::kFails) {
    errno = fate.error;
    return -1;
  }
  if (fate.what == Fate::What::kDies) { WatchedCall::die(); }
  if (fate.what == Fate::What::kDiesHalfDone) {
    work(count / 2);
    WatchedCall::die();
  }
  const off_t place = at < 0 ? ::syscall(SYS_lseek, file, 0, SEEK_CUR) : at;
  const long written = work(fate.what == Fate::What::kIsCutShort && count > 1 ? count / 2 : count);
  if (written > 0) {
    WatchedCall::tell({.what = What::kWritten,
                       .descriptor = file,
                       .path = path,
                       .at = place,
                       .bytes = std::string_view(static_cast<const char*>(bytes), static_cast<std::size_t>(written))});
  }
  return written;
}

int synced(int file) {
  const std::string path = WatchedCall::of(file);
  const auto work = [&] { return path.empty() ? ::syscall(SYS_fsync, file) : 0; };
  return static_cast<int>(whole(FileCall::kSync, path, work, [&](long) {
    WatchedCall::tell({.what = What::kSynced, .descriptor = file, .path = path});
  }));
}

int renamed(int fromFolder, const char* from, int toFolder, const char* to, unsigned how) {
  const std::string path = WatchedCall::at(fromFolder, from);
  return static_cast<int>(whole(
      FileCall::kRename, path, [&] { return ::syscall(SYS_renameat2, fromFolder, from, toFolder, to, how); },
      [&](long) {
        WatchedCall::tell({.what = What::kRenamed, .path = path, .second = WatchedCall::at(toFolder, to)});
      }));
}

int linked(int fromFolder, const char* from, int toFolder, const char* to, int how) {
  const std::string path = WatchedCall::at(fromFolder, from);
  return static_cast<int>(whole(
      FileCall::kRename, path, [&] { return ::syscall(SYS_linkat, fromFolder, from, toFolder, to, how); },
      [&](long) {
        WatchedCall::tell({.what = What::kLinked, .path = path, .second = WatchedCall::at(toFolder, to)});
      }));
}

int removed(int folder, const char* name, int how) {
  const std::string path = WatchedCall::at(folder, name);
  return static_cast<int>(whole(
      FileCall::kRemove, path, [&] { return ::syscall(SYS_unlinkat, folder, name, how); },
      [&](long) { WatchedCall::tell({.what = What::kRemoved, .path = path}); }));
}

int looked(int folder, const char* name, void* found, int how) {
  return static_cast<int>(whole(FileCall::kLook, WatchedCall::at(folder, name),
                                [&] { return ::syscall(SYS_newfstatat, folder, name, found, how); }));
}

int controlled(int file, int what, void* argument) {
  // Letting go of a lock never fails.
  const bool locks = (what == F_SETLK || what == F_SETLKW) && static_cast<struct flock*>(argument)->l_type != F_UNLCK;
  return static_cast<int>(whole(FileCall::kLock, locks ? WatchedCall::of(file) : std::string(),
                                [&] { return ::syscall(SYS_fcntl, file, what, argument); }));
}

int closed(int file) {
  const std::string path = WatchedCall::of(file);
  if (!path.empty()) { WatchedCall::tell({.what = What::kClosed, .descriptor = file, .path = path}); }
  if (s_open != nullptr) { s_open->erase(file); }
  return static_cast<int>(::syscall(SYS_close, file));
}

int cutOff(int file, off_t size) {
  const std::string path = WatchedCall::of(file);
  return static_cast<int>(whole(
      FileCall::kTruncate, path, [&] { return ::syscall(SYS_ftruncate, file, size); },
      [&](long) { WatchedCall::tell({.what = What::kCutOff, .descriptor = file, .path = path, .at = size}); }));
}

void* mapped(void* where, std::size_t size, int access, int flags, int file, off_t at) {
  const std::string path = file < 0 ? std::string() : WatchedCall::of(file);
  const long place =
      whole(FileCall::kMap, path, [&] { return ::syscall(SYS_mmap, where, size, access, flags, file, at); });
  return reinterpret_cast<void*>(place);  // NOLINT: -1 is MAP_FAILED
}

}  // namespace
}  // namespace orlocal::test

// On this system the names with and without 64 mean the same.
using namespace orlocal::test;

extern "C" {

int open(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return opened(AT_FDCWD, name, flags, mode);
}
int open64(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return opened(AT_FDCWD, name, flags, mode);
}
FILE* fopen64(const char* name, const char* how) {
  // What streams ask for: "r", "w" or "a", with "+" for both ways.
  const int made = how[0] == 'r' ? 0 : O_CREAT | (how[0] == 'w' ? O_TRUNC : O_APPEND);
  const int way = std::strchr(how, '+') != nullptr ? O_RDWR : how[0] == 'r' ? O_RDONLY : O_WRONLY;
  const int file = opened(AT_FDCWD, name, made | way | O_CLOEXEC, 0666);
  return file < 0 ? nullptr : ::fdopen(file, how);
}
FILE* fopen(const char* name, const char* how) { return fopen64(name, how); }
int openat(int folder, const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return opened(folder, name, flags, mode);
}
int close(int file) { return closed(file); }

ssize_t read(int file, void* bytes, size_t count) { return readAt(file, bytes, count, -1); }
ssize_t pread(int file, void* bytes, size_t count, off_t at) { return readAt(file, bytes, count, at); }
ssize_t pread64(int file, void* bytes, size_t count, off64_t at) { return readAt(file, bytes, count, at); }
ssize_t write(int file, const void* bytes, size_t count) { return writeAt(file, bytes, count, -1); }
ssize_t pwrite(int file, const void* bytes, size_t count, off_t at) { return writeAt(file, bytes, count, at); }
ssize_t pwrite64(int file, const void* bytes, size_t count, off64_t at) { return writeAt(file, bytes, count, at); }

int fsync(int file) { return synced(file); }
int fdatasync(int file) { return synced(file); }
int ftruncate(int file, off_t size) noexcept { return cutOff(file, size); }
int ftruncate64(int file, off64_t size) noexcept { return cutOff(file, size); }

int rename(const char* from, const char* to) noexcept { return renamed(AT_FDCWD, from, AT_FDCWD, to, 0); }
int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
  return renamed(fromFolder, from, toFolder, to, 0);
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned how) noexcept {
  return renamed(fromFolder, from, toFolder, to, how);
}
int link(const char* from, const char* to) noexcept { return linked(AT_FDCWD, from, AT_FDCWD, to, 0); }
int linkat(int fromFolder, const char* from, int toFolder, const char* to, int how) noexcept {
  return linked(fromFolder, from, toFolder, to, how);
}
int unlink(const char* name) noexcept { return removed(AT_FDCWD, name, 0); }
int unlinkat(int folder, const char* name, int how) noexcept { return removed(folder, name, how); }
int remove(const char* name) noexcept {
  const int result = removed(AT_FDCWD, name, 0);
  return result != 0 && errno == EISDIR ? removed(AT_FDCWD, name, AT_REMOVEDIR) : result;
}
int mkdir(const char* name, mode_t mode) noexcept {
  const std::string path = WatchedCall::at(AT_FDCWD, name);
  return static_cast<int>(whole(
      FileCall::kMakeFolder, path, [&] { return ::syscall(SYS_mkdirat, AT_FDCWD, name, mode); },
      [&](long) { WatchedCall::tell({.what = What::kFolderMade, .path = path}); }));
}

int stat(const char* name, struct stat* found) noexcept { return looked(AT_FDCWD, name, found, 0); }
int stat64(const char* name, struct stat64* found) noexcept { return looked(AT_FDCWD, name, found, 0); }
int lstat(const char* name, struct stat* found) noexcept { return looked(AT_FDCWD, name, found, AT_SYMLINK_NOFOLLOW); }
int lstat64(const char* name, struct stat64* found) noexcept {
  return looked(AT_FDCWD, name, found, AT_SYMLINK_NOFOLLOW);
}
int fstat(int file, struct stat* found) noexcept { return looked(file, "", found, AT_EMPTY_PATH); }
int fstat64(int file, struct stat64* found) noexcept { return looked(file, "", found, AT_EMPTY_PATH); }
int statx(int folder, const char* name, int how, unsigned wanted, struct statx* found) noexcept {
  return static_cast<int>(whole(FileCall::kLook, WatchedCall::at(folder, name),
                                [&] { return ::syscall(SYS_statx, folder, name, how, wanted, found); }));
}
int access(const char* name, int how) noexcept {
  return static_cast<int>(whole(FileCall::kLook, WatchedCall::at(AT_FDCWD, name),
                                [&] { return ::syscall(SYS_faccessat, AT_FDCWD, name, how); }));
}

void* mmap(void* where, size_t size, int access, int flags, int file, off_t at) noexcept {
  return mapped(where, size, access, flags, file, at);
}
void* mmap64(void* where, size_t size, int access, int flags, int file, off64_t at) noexcept {
  return mapped(where, size, access, flags, file, at);
}
int fcntl(int file, int what, ...) {
  va_list more;
  va_start(more, what);
  void* argument = va_arg(more, void*);
  va_end(more);
  return controlled(file, what, argument);
}
int fcntl64(int file, int what, ...) {
  va_list more;
  va_start(more, what);
  void* argument = va_arg(more, void*);
  va_end(more);
  return controlled(file, what, argument);
}
}
