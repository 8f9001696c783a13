#include "platform/linux/run_loop.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <poll.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "platform/exception.h"

namespace orlocal {
namespace {

constexpr std::chrono::milliseconds kLookEvery{10};

[[noreturn]] void throwRunLoopException(const char* what) {
  throw Exception("RunLoopException", std::string("The run loop has no ") + what + ": " + systemReason(errno) +
                                          "; the limit of open files (ulimit -n) may be too low for this process.");
}

class Descriptor {
 public:
  Descriptor(int number, const char* what) : m_number(number) {
    if (number < 0) { throwRunLoopException(what); }
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
  Descriptor event{::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "way to wake it"};
  std::function<void()> handler;
};

/// What ports share with their loop, so that either may go first.
struct LoopState {
  /// Made for the first port: a loop without one takes nothing from the system.
  std::optional<Descriptor> poll;
  std::map<std::uint64_t, std::shared_ptr<Source>> sources;
  std::uint64_t lastKey = 0;
  /// Whether a port may be ready: asking the system is most of a turn in which nothing happens.
  std::atomic<bool> sent = false;
};

class LinuxRunLoopPort final : public RunLoopPort {
 public:
  LinuxRunLoopPort(std::shared_ptr<LoopState> loop, std::uint64_t key, std::shared_ptr<Source> source)
      : m_loop(std::move(loop)), m_key(key), m_source(std::move(source)) {}

  ~LinuxRunLoopPort() override {
    ::epoll_ctl(m_loop->poll->number(), EPOLL_CTL_DEL, m_source->event.number(), nullptr);
    m_loop->sources.erase(m_key);
  }

  void send() override {
    const std::uint64_t one = 1;
    // It fails only when the counter is full, and then the loop is to be woken already.
    static_cast<void>(!::write(m_source->event.number(), &one, sizeof one));
    m_loop->sent = true;
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
      if (left <= std::chrono::nanoseconds::zero()) { return; }
      const auto nap = m_looks.empty() ? left : std::min<std::chrono::nanoseconds>(left, kLookEvery);
      sleep(std::chrono::duration_cast<std::chrono::nanoseconds>(nap));
    }
  }

  void turn() override {
    serveWhatIsReady();
    lookAround();
  }

  std::unique_ptr<RunLoopPort> addPort(std::function<void()> handler) override {
    if (!m_state->poll) { m_state->poll.emplace(::epoll_create1(EPOLL_CLOEXEC), "place to wait in"); }
    auto source = std::make_shared<Source>();
    source->handler = std::move(handler);
    const std::uint64_t key = ++m_state->lastKey;
    wakeFor(source->event.number(), key);
    m_state->sources.emplace(key, source);
    return std::make_unique<LinuxRunLoopPort>(m_state, key, std::move(source));
  }

  std::shared_ptr<const TurnLook> add(TurnLook look) {
    auto added = std::make_shared<const TurnLook>(std::move(look));
    m_looks.push_back(added);
    return added;
  }

 private:
  void serveWhatIsReady() {
    if (!m_state->sent) { return; }
    // Before asking, so that the next turn finds what is sent from here on.
    m_state->sent = false;
    std::array<epoll_event, 64> ready;
    const int count = ::epoll_wait(m_state->poll->number(), ready.data(), static_cast<int>(ready.size()), 0);
    // There may be more of them than fit, and a handler that throws leaves those after it.
    if (count > 0) { m_state->sent = true; }
    for (int i = 0; i < count; ++i) { serve(ready[static_cast<std::size_t>(i)].data.u64); }
  }

  void lookAround() {
    std::erase_if(m_looks, [](const auto& look) { return look.expired(); });
    // One may be added or dropped meanwhile, or let the loop turn.
    const auto looks = m_looks;
    for (const auto& each : looks) {
      if (const auto look = each.lock()) { (*look)(); }
    }
  }

  void wakeFor(int descriptor, std::uint64_t key) {
    epoll_event interest{};
    interest.events = EPOLLIN;
    interest.data.u64 = key;
    if (::epoll_ctl(m_state->poll->number(), EPOLL_CTL_ADD, descriptor, &interest) != 0) {
      throwRunLoopException("room for a port");
    }
  }

  /// Until a port is ready or `left` has passed. The wait of epoll itself counts in whole milliseconds, which is coarse
  /// for a caller that comes back every ten.
  void sleep(std::chrono::nanoseconds left) {
    constexpr std::int64_t kNanoPerSecond = 1'000'000'000;
    const timespec bound{.tv_sec = left.count() / kNanoPerSecond, .tv_nsec = left.count() % kNanoPerSecond};
    pollfd any{.fd = m_state->poll ? m_state->poll->number() : -1, .events = POLLIN, .revents = 0};
    ::ppoll(&any, m_state->poll ? 1 : 0, &bound, nullptr);
  }

  void serve(std::uint64_t key) {
    const auto found = m_state->sources.find(key);
    // An earlier handler of the same turn may have removed it.
    if (found == m_state->sources.end()) { return; }
    const std::shared_ptr<Source> source = found->second;
    std::uint64_t sends = 0;
    if (::read(source->event.number(), &sends, sizeof sends) == sizeof sends) { source->handler(); }
  }

  std::shared_ptr<LoopState> m_state = std::make_shared<LoopState>();
  std::vector<std::weak_ptr<const TurnLook>> m_looks;
};

}  // namespace

namespace {

LinuxRunLoop& loopOfThisThread() {
  thread_local LinuxRunLoop loop;
  return loop;
}

}  // namespace

RunLoop& currentThreadRunLoop() { return loopOfThisThread(); }

std::shared_ptr<const TurnLook> lookAtEachTurn(TurnLook look) { return loopOfThisThread().add(std::move(look)); }

}  // namespace orlocal
