#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

/// The built program, importing what the test writes into its standard input.
class RunningImport {
 public:
  explicit RunningImport(const std::string& calendarTitle) {
    int ends[2];
    if (::pipe(ends) != 0) { throw std::runtime_error("pipe"); }
    m_process = ::fork();
    if (m_process == 0) {
      ::dup2(ends[0], STDIN_FILENO);
      ::close(ends[0]);
      ::close(ends[1]);
      ::execl(ORLOCAL_PROGRAM, ORLOCAL_PROGRAM, "import", "-", "--calendar", calendarTitle.c_str(), nullptr);
      ::_exit(127);
    }
    ::close(ends[0]);
    m_input = ends[1];
  }

  void write(const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
      const auto count = ::write(m_input, text.data() + done, text.size() - done);
      if (count <= 0) { throw std::runtime_error("write"); }
      done += static_cast<std::size_t>(count);
    }
  }

  /// Whether the program has come so far that it looks out for Ctrl-C.
  bool awaitsInterruption() const {
    std::ifstream status("/proc/" + std::to_string(m_process) + "/status");
    for (std::string line; std::getline(status, line);) {
      if (line.rfind("SigCgt:", 0) == 0) { return (std::stoull(line.substr(7), nullptr, 16) >> (SIGINT - 1)) & 1U; }
    }
    return false;
  }

  void interrupt() { ::kill(m_process, SIGINT); }

  int end() {
    ::close(m_input);
    int status = 0;
    ::waitpid(m_process, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  pid_t m_process = 0;
  int m_input = -1;
};

class ImportInterrupted : public StoreCommand {
 protected:
  static std::string manyEvents() {
    std::string events;
    for (int i = 0; i < 2000; ++i) {
      events += event(std::to_string(i), "Event", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n");
    }
    return calendar("", events);
  }
};

TEST_F(ImportInterrupted, LeavesNoTraceOfTheFile) {
  RunningImport import("Big");
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!import.awaitsInterruption() && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  import.interrupt();
  import.write(manyEvents());
  EXPECT_EQ(import.end(), 1);
  run({"calendars"});
  EXPECT_THAT(out, testing::Not(testing::HasSubstr("Big")));
  run({"agenda"});
  EXPECT_THAT(out, testing::HasSubstr("Nothing is planned"));
}

TEST_F(ImportInterrupted, OtherwiseBringsEverything) {
  RunningImport import("Big");
  import.write(manyEvents());
  EXPECT_EQ(import.end(), 0);
  run({"calendars"});
  EXPECT_THAT(out, testing::HasSubstr("Big"));
}

}  // namespace
}  // namespace orlocal::host
