#include "store/change_signal.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace orlocal::store {
namespace {

constexpr time_t kLookEverySeconds = 2;

std::string bellOf(const std::filesystem::path& file) { return file.string() + "-bell"; }

tl::unexpected<Error> cannotListen(const std::filesystem::path& file, const char* what) {
  return failure(ErrorCode::kIo,
                 fmt::format("changes of {} cannot be followed: {} ({})", file.string(), what, std::strerror(errno)));
}

}  // namespace

void ChangeSignal::ring(const std::filesystem::path& file) {
  const int bell = ::open(bellOf(file).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (bell < 0) return;
  static_cast<void>(!::pwrite(bell, "\n", 1, 0));
  ::close(bell);
}

Result<std::unique_ptr<ChangeSignal>> ChangeSignal::listen(const std::filesystem::path& file) {
  std::unique_ptr<ChangeSignal> signal(new ChangeSignal);
  signal->m_poll = ::epoll_create1(EPOLL_CLOEXEC);
  if (signal->m_poll < 0) return cannotListen(file, "no event queue");
  const auto add = [&](int descriptor) {
    epoll_event interest{};
    interest.events = EPOLLIN;
    return ::epoll_ctl(signal->m_poll, EPOLL_CTL_ADD, descriptor, &interest) == 0;
  };

  signal->m_timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
  const itimerspec look{{kLookEverySeconds, 0}, {kLookEverySeconds, 0}};
  if (signal->m_timer < 0 || ::timerfd_settime(signal->m_timer, 0, &look, nullptr) != 0 || !add(signal->m_timer)) {
    return cannotListen(file, "no timer");
  }

  // Without notices (a system may have run out of them) the look every two seconds is what remains.
  const std::string bell = bellOf(file);
  const int made = ::open(bell.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (made >= 0) ::close(made);
  signal->m_notices = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  if (signal->m_notices >= 0 && ::inotify_add_watch(signal->m_notices, bell.c_str(), IN_MODIFY) >= 0) {
    add(signal->m_notices);
  }
  return signal;
}

ChangeSignal::~ChangeSignal() {
  for (const int descriptor : {m_notices, m_timer, m_poll}) {
    if (descriptor >= 0) ::close(descriptor);
  }
}

void ChangeSignal::drain() {
  std::array<char, 4096> ignored;
  for (const int descriptor : {m_notices, m_timer}) {
    while (descriptor >= 0 && ::read(descriptor, ignored.data(), ignored.size()) > 0) {
    }
  }
}

}  // namespace orlocal::store
