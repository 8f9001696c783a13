#include "accounts/transport/first_line.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"

extern char** environ;

namespace orlocal::accounts {
namespace {

using Clock = std::chrono::steady_clock;

// Much more than any password or token has.
constexpr std::size_t kMostOutput = 1U << 16U;
// How often it is looked whether somebody wants to stop.
constexpr std::chrono::milliseconds kPatience{20};

/// A process group of one command. Whatever is left of it ends with this.
class Command {
 public:
  Command() = default;
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  ~Command() {
    if (m_process > 0) {
      ::kill(-m_process, SIGKILL);
      while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {}
    }
    if (m_output >= 0) { ::close(m_output); }
  }

  /// Gives a value of errno, or 0.
  int start(const std::string& command) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) { return errno; }
    m_output = ends[0];
    posix_spawn_file_actions_t files{};
    posix_spawnattr_t attributes{};
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
    sigset_t none{};
    sigset_t reset{};
    ::sigemptyset(&none);
    ::sigemptyset(&reset);
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE, SIGQUIT, SIGHUP}) { ::sigaddset(&reset, signal); }
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setsigdefault(&attributes, &reset);
    ::posix_spawnattr_setpgroup(&attributes, 0);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    std::string shell = "sh";
    std::string option = "-c";
    std::string words = command;
    std::array<char*, 4> arguments{shell.data(), option.data(), words.data(), nullptr};
    const int error = ::posix_spawn(&m_process, "/bin/sh", &files, &attributes, arguments.data(), environ);
    if (error != 0) { m_process = 0; }
    ::posix_spawn_file_actions_destroy(&files);
    ::posix_spawnattr_destroy(&attributes);
    ::close(ends[1]);
    return error;
  }

  /// Waits for a moment for output, which it appends; false at the output's end.
  bool read(std::string& text) const {
    pollfd waiting{m_output, POLLIN, 0};
    if (::poll(&waiting, 1, static_cast<int>(kPatience.count())) <= 0) { return true; }
    std::array<char, 4096> piece{};
    const ssize_t count = ::read(m_output, piece.data(), piece.size());
    if (count > 0) { text.append(piece.data(), static_cast<std::size_t>(count)); }
    return count > 0 || (count < 0 && errno == EINTR);
  }

  /// Whether it has ended, and then how.
  bool ended(int& status) {
    if (::waitpid(m_process, &status, WNOHANG) != m_process) { return false; }
    m_process = 0;
    return true;
  }

 private:
  pid_t m_process = 0;
  int m_output = -1;
};

}  // namespace

std::string_view firstLineIn(std::string_view text) {
  std::string_view line = text.substr(0, text.find('\n'));
  if (line.ends_with('\r')) { line.remove_suffix(1); }
  return line;
}

Result<std::string> firstLineOf(const std::string& command, std::chrono::milliseconds limit, const std::string& subject,
                                const std::atomic<bool>* stop) {
  const Clock::time_point until = Clock::now() + limit;
  const auto patience = [&]() -> Status {
    if (stop != nullptr && *stop) { return failure(ErrorCode::kInterrupted, tr("{} was stopped.", subject)); }
    if (Clock::now() < until) { return {}; }
    return failure(ErrorCode::kIo, tr("{} did not end within {} seconds.", subject,
                                      std::chrono::ceil<std::chrono::seconds>(limit).count()));
  };
  Command running;
  if (const int error = running.start(command); error != 0) {
    return failure(ErrorCode::kIo, tr("{} cannot be started: {}.", subject, systemReason(error)));
  }
  std::string output;
  while (running.read(output)) {
    ORLOCAL_CHECK(patience());
    if (output.size() > kMostOutput) { return failure(ErrorCode::kTooLarge, tr("{} prints too much.", subject)); }
  }
  int status = 0;
  while (!running.ended(status)) {
    ORLOCAL_CHECK(patience());
    std::this_thread::sleep_for(kPatience / 10);
  }
  if (WIFSIGNALED(status)) {
    return failure(ErrorCode::kIo, tr("{} was ended by signal {}.", subject, WTERMSIG(status)));
  }
  if (WEXITSTATUS(status) != 0) {
    return failure(ErrorCode::kIo, tr("{} ended with status {}.", subject, WEXITSTATUS(status)));
  }
  return std::string(firstLineIn(output));
}

}  // namespace orlocal::accounts
