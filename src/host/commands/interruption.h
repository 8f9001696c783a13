#pragma once

#include <atomic>

#include <signal.h>

namespace orlocal::host {

/// While it lives, the first Ctrl-C (or request to end) only sets a flag, so that the work can be undone in good order;
/// the second one ends the program as usual. One at a time.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  static const std::atomic<bool>& flag();

 private:
  struct sigaction m_beforeInterrupt {};
  struct sigaction m_beforeTerminate {};
};

}  // namespace orlocal::host
