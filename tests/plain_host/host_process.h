#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orlocal::host {

/// The plain C host with the plug-in, at work in a process of its own. Its errors go to a file.
class HostProcess {
 public:
  struct Answer {
    std::string result;
    std::string code;
    friend bool operator==(const Answer&, const Answer&) = default;
  };

  /// With these settings and those of this process; a setting without a value is taken away.
  HostProcess(const std::vector<std::pair<std::string, std::string>>& settings, std::filesystem::path log)
      : m_log(std::move(log)) {
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (::pipe2(in.data(), O_CLOEXEC) != 0 || ::pipe2(out.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe");
    }
    m_child = ::fork();
    if (m_child == 0) {
      for (const auto& [name, value] : settings) {
        value.empty() ? ::unsetenv(name.c_str()) : ::setenv(name.c_str(), value.c_str(), 1);
      }
      ::dup2(in[0], STDIN_FILENO);
      ::dup2(out[1], STDOUT_FILENO);
      ::dup2(::open(m_log.c_str(), O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0666), STDERR_FILENO);
      ::execl(ORLOCAL_PLAIN_HOST, ORLOCAL_PLAIN_HOST, ORLOCAL_PLUGIN, nullptr);
      ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    m_in = ::fdopen(in[1], "w");
    m_out = ::fdopen(out[0], "r");
  }
  ~HostProcess() {
    if (m_child > 0) { finish(); }
    std::fclose(m_out);
  }
  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  /// The line that it answers with; empty when it has died.
  std::string ask(const std::string& line) {
    std::fprintf(m_in, "%s\n", line.c_str());
    std::fflush(m_in);
    char* text = nullptr;
    std::size_t room = 0;
    const ssize_t length = ::getline(&text, &room, m_out);
    std::string answer(text, length > 0 ? static_cast<std::size_t>(length) - 1 : 0);
    std::free(text);
    return answer;
  }
  Answer call(const std::string& line) {
    const std::string answer = ask(line);
    const auto tab = answer.rfind('\t');
    return tab == std::string::npos ? Answer() : Answer{answer.substr(0, tab), answer.substr(tab + 1)};
  }

  /// Sends the shutdown; whether the host ended in good order.
  bool finish() {
    std::fclose(m_in);
    int state = 0;
    ::waitpid(m_child, &state, 0);
    m_child = -1;
    return WIFEXITED(state) && WEXITSTATUS(state) == 0;
  }

  std::string log() const {
    std::ifstream stream(m_log);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  }

 private:
  std::filesystem::path m_log;
  pid_t m_child = -1;
  std::FILE* m_in = nullptr;
  std::FILE* m_out = nullptr;
};

inline void PrintTo(const HostProcess::Answer& answer, std::ostream* out) {
  *out << answer.result << " and " << answer.code;
}

}  // namespace orlocal::host
