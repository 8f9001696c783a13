#include "host/commands/accounts/password_question.h"

#include <array>
#include <istream>
#include <ostream>

#include <signal.h>
#include <termios.h>
#include <unistd.h>

namespace orlocal::host {
namespace {

struct termios asItWas;

/// The usual handling is back when this runs.
void bringBack(int signal) {
  ::tcsetattr(STDIN_FILENO, TCSANOW, &asItWas);
  ::raise(signal);
}

/// While it lives, the terminal shows nothing of what is typed.
class SilentTerminal {
 public:
  SilentTerminal() : m_isTerminal(::tcgetattr(STDIN_FILENO, &asItWas) == 0) {
    if (!m_isTerminal) { return; }
    struct sigaction action {};
    action.sa_handler = bringBack;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    ::sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i) { ::sigaction(kSignals[i], &action, &m_before[i]); }
    struct termios silent = asItWas;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ECHONL;
    ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
  }
  ~SilentTerminal() {
    if (!m_isTerminal) { return; }
    ::tcsetattr(STDIN_FILENO, TCSANOW, &asItWas);
    for (std::size_t i = 0; i < kSignals.size(); ++i) { ::sigaction(kSignals[i], &m_before[i], nullptr); }
  }
  SilentTerminal(const SilentTerminal&) = delete;
  SilentTerminal& operator=(const SilentTerminal&) = delete;

 private:
  static constexpr std::array<int, 4> kSignals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};
  bool m_isTerminal;
  std::array<struct sigaction, kSignals.size()> m_before{};
};

}  // namespace

std::optional<std::string> askPassword(Streams& streams, const std::string& question) {
  if (!streams.inIsTerminal) { return std::nullopt; }
  const SilentTerminal silent;
  streams.err << question << std::flush;
  std::string password;
  if (!std::getline(streams.in, password) || password.empty()) { return std::nullopt; }
  return password;
}

}  // namespace orlocal::host
