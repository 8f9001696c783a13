#include "platform/linux/run_loop_linux.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <system_error>
#include <utility>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace orlocal {
namespace {

class Descriptor {
 public:
  Descriptor(int number, const char* what) : m_number(number) {
    if (number < 0) throw std::system_error(errno, std::generic_category(), what);
  }
  ~Descriptor() { ::close(m_number); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int number() const { return m_number; }

 private:
  int m_number;
};

/// A counter in the kernel: any thread may raise it, the loop takes it down.
struct Source {
  Descriptor event{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "run loop: eventfd"};
  std::function<void()> handler;
  int watched = -1;  ///< a descriptor of somebody else that wakes the loop, too
};

/// What ports share with their loop, so that either may go first.
struct LoopState {
  Descriptor poll{::epoll_create1(EPOLL_CLOEXEC), "run loop: epoll"};
  std::map<std::uint64_t, std::shared_ptr<Source>> sources;
  std::uint64_t lastKey = 0;
};

class LinuxRunLoopPort final : public RunLoopPort {
 public:
  LinuxRunLoopPort(std::shared_ptr<LoopState> loop, std::uint64_t key, std::shared_ptr<Source> source)
      : m_loop(std::move(loop)), m_key(key), m_source(std::move(source)) {}

  ~LinuxRunLoopPort() override {
    ::epoll_ctl(m_loop->poll.number(), EPOLL_CTL_DEL, m_source->event.number(), nullptr);
    if (m_source->watched >= 0) ::epoll_ctl(m_loop->poll.number(), EPOLL_CTL_DEL, m_source->watched, nullptr);
    m_loop->sources.erase(m_key);
  }

  void send() override {
    const std::uint64_t one = 1;
    // It fails only when the counter is full, and then the loop is to be woken already.
    static_cast<void>(!::write(m_source->event.number(), &one, sizeof one));
  }

 private:
  std::shared_ptr<LoopState> m_loop;
  std::uint64_t m_key;
  std::shared_ptr<Source> m_source;
};

class LinuxRunLoop final : public RunLoop {
 public:
  void runFor(std::chrono::microseconds time) override {
    const auto deadline = std::chrono::steady_clock::now() + time;
    for (;;) {
      turn();
      const auto left = deadline - std::chrono::steady_clock::now();
      if (left <= std::chrono::nanoseconds::zero()) return;
      sleep(std::chrono::duration_cast<std::chrono::nanoseconds>(left));
    }
  }

  void turn() override {
    std::array<epoll_event, 64> ready{};
    const int count = ::epoll_wait(m_state->poll.number(), ready.data(), static_cast<int>(ready.size()), 0);
    for (int i = 0; i < count; ++i) serve(ready[static_cast<std::size_t>(i)].data.u64);
  }

  std::unique_ptr<RunLoopPort> addPort(std::function<void()> handler) override { return add(std::move(handler), -1); }

  std::unique_ptr<RunLoopPort> add(std::function<void()> handler, int watched) {
    auto source = std::make_shared<Source>();
    source->handler = std::move(handler);
    source->watched = watched;
    const std::uint64_t key = ++m_state->lastKey;
    wakeFor(source->event.number(), key);
    if (watched >= 0) wakeFor(watched, key);
    m_state->sources.emplace(key, source);
    return std::make_unique<LinuxRunLoopPort>(m_state, key, std::move(source));
  }

 private:
  void wakeFor(int descriptor, std::uint64_t key) {
    epoll_event interest{};
    interest.events = EPOLLIN;
    interest.data.u64 = key;
    if (::epoll_ctl(m_state->poll.number(), EPOLL_CTL_ADD, descriptor, &interest) != 0) {
      throw std::system_error(errno, std::generic_category(), "run loop: adding a port");
    }
  }

  /// Until a port is ready or `left` has passed. The wait of epoll itself counts in whole milliseconds, which is coarse
  /// for a caller that comes back every ten.
  void sleep(std::chrono::nanoseconds left) {
    constexpr std::int64_t kNanoPerSecond = 1'000'000'000;
    const timespec bound{.tv_sec = left.count() / kNanoPerSecond, .tv_nsec = left.count() % kNanoPerSecond};
    pollfd any{.fd = m_state->poll.number(), .events = POLLIN, .revents = 0};
    ::ppoll(&any, 1, &bound, nullptr);
  }

  void serve(std::uint64_t key) {
    const auto found = m_state->sources.find(key);
    // An earlier handler of the same turn may have removed it.
    if (found == m_state->sources.end()) return;
    const std::shared_ptr<Source> source = found->second;
    std::uint64_t sends = 0;
    const bool sent = ::read(source->event.number(), &sends, sizeof sends) == sizeof sends;
    if (sent || source->watched >= 0) source->handler();
  }

  std::shared_ptr<LoopState> m_state = std::make_shared<LoopState>();
};

}  // namespace

namespace {

LinuxRunLoop& loopOfThisThread() {
  thread_local LinuxRunLoop loop;
  return loop;
}

}  // namespace

RunLoop& currentThreadRunLoop() { return loopOfThisThread(); }

std::unique_ptr<RunLoopPort> watchDescriptor(int descriptor, std::function<void()> handler) {
  return loopOfThisThread().add(std::move(handler), descriptor);
}

}  // namespace orlocal
