#include "store/file/change_signal.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "base/translation.h"
#include "store/file/side_files.h"

namespace orlocal::store {
namespace {

constexpr time_t kLookEverySeconds = 2;

constexpr const char* kBell = "-bell";

std::string bellOf(const std::filesystem::path& file) { return file.string() + kBell; }

/// Made when it is not there, for the same users as the store. Negative when that cannot be.
int openBell(const std::filesystem::path& file) {
  const int there = openBeside(file, kBell, O_WRONLY);
  if (there >= 0 || errno != ENOENT) { return there; }
  const int made = openBeside(file, kBell, O_WRONLY | O_CREAT | O_EXCL, 0600);
  if (made < 0) { return openBeside(file, kBell, O_WRONLY); }
  struct stat store {};
  if (::stat(file.c_str(), &store) == 0) {
    if (::geteuid() == 0) { static_cast<void>(!::fchown(made, store.st_uid, store.st_gid)); }
    ::fchmod(made, store.st_mode & 0666U);
  }
  return made;
}

Failed cannotListen(const std::filesystem::path& file, const std::string& what) {
  return failure(ErrorCode::kIo, tr("Changes of the calendar store \"{}\" cannot be followed: {} ({}).", file.string(),
                                    what, std::strerror(errno)));
}

}  // namespace

Bell::Bell(const std::filesystem::path& file) : m_descriptor(openBell(file)) {}

Bell::~Bell() {
  if (m_descriptor >= 0) { ::close(m_descriptor); }
}

void Bell::ring() const {
  if (m_descriptor >= 0) { static_cast<void>(!::pwrite(m_descriptor, "\n", 1, 0)); }
}

Result<std::unique_ptr<ChangeSignal>> ChangeSignal::listen(const std::filesystem::path& file) {
  std::unique_ptr<ChangeSignal> signal(new ChangeSignal(file));
  signal->m_poll = ::epoll_create1(EPOLL_CLOEXEC);
  if (signal->m_poll < 0) { return cannotListen(file, tr("no event queue")); }

  signal->m_timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
  const itimerspec look{{kLookEverySeconds, 0}, {kLookEverySeconds, 0}};
  if (signal->m_timer < 0 || ::timerfd_settime(signal->m_timer, 0, &look, nullptr) != 0 ||
      !signal->wakeFor(signal->m_timer)) {
    return cannotListen(file, tr("no timer"));
  }
  signal->listenToBell();
  return signal;
}

ChangeSignal::~ChangeSignal() {
  for (const int descriptor : {m_notices, m_timer, m_poll}) {
    if (descriptor >= 0) { ::close(descriptor); }
  }
}

bool ChangeSignal::wakeFor(int descriptor) const {
  epoll_event interest{};
  interest.events = EPOLLIN;
  return ::epoll_ctl(m_poll, EPOLL_CTL_ADD, descriptor, &interest) == 0;
}

void ChangeSignal::listenToBell() {
  if (m_notices < 0) {
    m_notices = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (m_notices >= 0 && !wakeFor(m_notices)) { ::close(std::exchange(m_notices, -1)); }
  }
  if (m_notices >= 0 && watchBell()) {
    m_trouble.reset();
    return;
  }
  m_trouble = Failure{ErrorCode::kIo,
                      tr("Changes of the calendar store \"{}\" are noticed every {} seconds only: the system has "
                         "no file notices left ({}); raise fs.inotify.max_user_instances or "
                         "fs.inotify.max_user_watches.",
                         m_file.string(), kLookEverySeconds, std::strerror(errno))};
}

/// A bell that cannot be there yet is no trouble: whoever writes first hangs it up.
bool ChangeSignal::watchBell() const {
  const std::string bell = bellOf(m_file);
  // Watching what is watched already changes nothing.
  if (::inotify_add_watch(m_notices, bell.c_str(), IN_MODIFY | IN_DONT_FOLLOW) >= 0) { return true; }
  if (errno == ENOENT) {
    { const Bell made(m_file); }
    if (::inotify_add_watch(m_notices, bell.c_str(), IN_MODIFY | IN_DONT_FOLLOW) >= 0) { return true; }
  }
  return errno != ENOSPC && errno != ENOMEM;
}

void ChangeSignal::drain() {
  std::uint64_t looks = 0;
  // Somebody may have removed the bell, and the writers have hung up a new one.
  if (::read(m_timer, &looks, sizeof looks) > 0) { listenToBell(); }
  alignas(inotify_event) std::array<char, 4096> ignored;
  // One that does not fill the room has read all; what comes now wakes again.
  constexpr ssize_t kNearlyFull = 4096 - 2 * static_cast<ssize_t>(sizeof(inotify_event));
  while (m_notices >= 0 && ::read(m_notices, ignored.data(), ignored.size()) > kNearlyFull) {}
}

}  // namespace orlocal::store
