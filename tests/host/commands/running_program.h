#pragma once

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orlocal::host {

/// The built program at work, with its output and its errors in pipes. Killed at the end when it has not ended.
class RunningProgram {
 public:
  explicit RunningProgram(std::vector<std::string> words) {
    std::array<int, 2> out{};
    std::array<int, 2> err{};
    if (::pipe2(out.data(), O_CLOEXEC) != 0 || ::pipe2(err.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    std::vector<char*> arguments;
    for (std::string& word : words) { arguments.push_back(word.data()); }
    arguments.push_back(nullptr);
    m_child = ::fork();
    if (m_child == 0) {
      ::dup2(out[1], STDOUT_FILENO);
      ::dup2(err[1], STDERR_FILENO);
      ::execv(arguments[0], arguments.data());
      ::_exit(127);
    }
    ::close(out[1]);
    ::close(err[1]);
    m_out = out[0];
    m_err = err[0];
  }
  ~RunningProgram() {
    if (m_child > 0) {
      ::kill(m_child, SIGKILL);
      finish();
    }
    ::close(m_out);
    ::close(m_err);
  }
  RunningProgram(const RunningProgram&) = delete;
  RunningProgram& operator=(const RunningProgram&) = delete;

  /// The next line of its output; empty when none comes for a long time, or when it has ended.
  std::string line() { return lineOf(m_out, m_outText); }
  std::string errorLine() { return lineOf(m_err, m_errText); }

  void signal(int number) const { ::kill(m_child, number); }
  pid_t process() const { return m_child; }

  /// Waits for its end; its exit status, or -1 when a signal ended it.
  int finish() {
    int state = 0;
    ::waitpid(m_child, &state, 0);
    m_child = -1;
    return WIFEXITED(state) ? WEXITSTATUS(state) : -1;
  }

 private:
  static std::string lineOf(int descriptor, std::string& text) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    for (;;) {
      if (const auto end = text.find('\n'); end != std::string::npos) {
        std::string line = text.substr(0, end);
        text.erase(0, end + 1);
        return line;
      }
      pollfd ready{.fd = descriptor, .events = POLLIN, .revents = 0};
      if (std::chrono::steady_clock::now() > deadline || ::poll(&ready, 1, 1000) < 0) { return {}; }
      if (ready.revents == 0) { continue; }
      std::array<char, 4096> block{};
      const ssize_t count = ::read(descriptor, block.data(), block.size());
      if (count <= 0) { return {}; }
      text.append(block.data(), static_cast<std::size_t>(count));
    }
  }

  pid_t m_child = -1;
  int m_out = -1;
  int m_err = -1;
  std::string m_outText, m_errText;
};

}  // namespace orlocal::host
