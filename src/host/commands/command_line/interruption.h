#pragma once

#include <array>
#include <atomic>

#include <signal.h>

namespace orlocal::host {

/// While it lives, the first Ctrl-C (or request to end, or end of the terminal) only sets a flag, so that the work can
/// be undone in good order; the second one ends the program as usual. Signals that were ignored before stay so. One at
/// a time.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  static const std::atomic<bool>& flag();

 private:
  static constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, kSignals.size()> m_before{};
};

}  // namespace orlocal::host
