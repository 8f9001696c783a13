#include "host/commands/command_line/change_wait.h"

#include <cerrno>
#include <vector>

#include <poll.h>
#include <signal.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/interruption.h"

namespace orlocal::host {

namespace {

/// Holds back the signals that interrupt, so that none comes between a look at the flag and the sleep.
class SignalsHeldBack {
 public:
  SignalsHeldBack() {
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGINT);
    ::sigaddset(&signals, SIGTERM);
    ::sigaddset(&signals, SIGHUP);
    ::pthread_sigmask(SIG_BLOCK, &signals, &m_before);
  }
  ~SignalsHeldBack() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  SignalsHeldBack(const SignalsHeldBack&) = delete;
  SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

  const sigset_t& before() const { return m_before; }

 private:
  sigset_t m_before{};
};

}  // namespace

Result<Woken> waitForAnyOf(std::span<const int> descriptors, std::optional<std::chrono::milliseconds> patience) {
  timespec bound{};
  if (patience) {
    bound.tv_sec = patience->count() / 1000;
    bound.tv_nsec = patience->count() % 1000 * 1'000'000;
  }
  std::vector<pollfd> waited;
  for (const int descriptor : descriptors) { waited.push_back({.fd = descriptor, .events = POLLIN, .revents = 0}); }
  const SignalsHeldBack held;
  for (;;) {
    if (Interruption::flag()) { return Woken::kByInterruption; }
    const int ready = ::ppoll(waited.data(), waited.size(), patience ? &bound : nullptr, &held.before());
    if (ready == 0) { return Woken::kByTime; }
    if (ready > 0) { return Woken::kByChange; }
    // A signal of another kind changes nothing.
    if (errno != EINTR) { return failure(ErrorCode::kIo, tr("waiting for changes: {}", systemReason(errno))); }
  }
}

Result<Woken> waitForChange(store::ChangeSignal& signal, std::optional<std::chrono::milliseconds> patience) {
  const int descriptor = signal.descriptor();
  ORLOCAL_TRY(const Woken woken, waitForAnyOf(std::span(&descriptor, 1), patience));
  if (woken == Woken::kByChange) { signal.drain(); }
  return woken;
}

}  // namespace orlocal::host
