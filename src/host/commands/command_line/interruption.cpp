#include "host/commands/command_line/interruption.h"

namespace orlocal::host {
namespace {

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void note(int) { interrupted.store(true); }

}  // namespace

Interruption::Interruption() {
  interrupted.store(false);
  struct sigaction action {};
  action.sa_handler = note;
  // After the first signal the usual handling is back, and calls that wait go on waiting.
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  ::sigemptyset(&action.sa_mask);
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    ::sigaction(kSignals[i], nullptr, &m_before[i]);
    if (m_before[i].sa_handler != SIG_IGN) { ::sigaction(kSignals[i], &action, nullptr); }
  }
}

Interruption::~Interruption() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) { ::sigaction(kSignals[i], &m_before[i], nullptr); }
}

const std::atomic<bool>& Interruption::flag() { return interrupted; }

}  // namespace orlocal::host
