#include "host/commands/interruption.h"

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
  ::sigaction(SIGINT, &action, &m_beforeInterrupt);
  ::sigaction(SIGTERM, &action, &m_beforeTerminate);
}

Interruption::~Interruption() {
  ::sigaction(SIGINT, &m_beforeInterrupt, nullptr);
  ::sigaction(SIGTERM, &m_beforeTerminate, nullptr);
}

const std::atomic<bool>& Interruption::flag() { return interrupted; }

}  // namespace orlocal::host
