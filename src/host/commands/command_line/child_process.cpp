#include "host/commands/command_line/child_process.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <ostream>
#include <streambuf>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/trouble.h"

namespace orlocal::host {

namespace {

/// Writes straight through: what was written before a crash has arrived.
class PipeBuffer : public std::streambuf {
 public:
  explicit PipeBuffer(int descriptor) : m_descriptor(descriptor) {}

 protected:
  int_type overflow(int_type unit) override {
    const char c = traits_type::to_char_type(unit);
    return xsputn(&c, 1) == 1 ? unit : traits_type::eof();
  }

  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    std::streamsize written = 0;
    while (written < count) {
      const ssize_t step = ::write(m_descriptor, bytes + written, static_cast<std::size_t>(count - written));
      if (step < 0 && errno == EINTR) { continue; }
      if (step < 0) { return written; }
      written += step;
    }
    return written;
  }

 private:
  int m_descriptor;
};

/// `what` failed for the reason that the system left in errno.
Failed systemFailure(std::string_view what) {
  return failure(ErrorCode::kIo, fmt::format("{}: {}", what, systemReason(errno)));
}

/// The reading end and the writing one.
using Pipe = std::array<int, 2>;

Result<Pipe> newPipe() {
  Pipe ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) { return systemFailure(tr("no pipe")); }
  return ends;
}

using Clock = std::chrono::steady_clock;

/// Waits until there is something to read, or an end; false when there is neither by then.
bool readableBy(int descriptor, Clock::time_point deadline) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    struct pollfd asked {
      descriptor, POLLIN, 0
    };
    const int found = ::poll(&asked, 1, static_cast<int>(std::clamp<std::int64_t>(left, 0, 60'000)));
    if (found > 0) { return true; }
    if (found == 0 && Clock::now() >= deadline) { return false; }
  }
}

/// Until the end, or until the deadline is over.
std::string readAll(int descriptor, std::optional<Clock::time_point> deadline = std::nullopt) {
  std::string text;
  std::array<char, 65536> block{};
  for (;;) {
    if (deadline && !readableBy(descriptor, *deadline)) { return text; }
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count < 0 && errno == EINTR) { continue; }
    if (count <= 0) { return text; }
    text.append(block.data(), static_cast<std::size_t>(count));
  }
}

/// Puts the child's end into words.
void describe(int state, ChildResult& result) {
  if (WIFEXITED(state)) {
    result.status = WEXITSTATUS(state);
    result.ending = tr("ended with status {}", result.status);
  } else {
    const int signal = WTERMSIG(state);
    result.ending = tr("was ended by signal {} ({})", signal, ::strsignal(signal));
  }
}

void waitFor(pid_t child, ChildResult& result) {
  int state = 0;
  while (::waitpid(child, &state, 0) < 0 && errno == EINTR) {}
  describe(state, result);
}

ChildResult collect(pid_t child, const Pipe& pipe, std::optional<std::chrono::milliseconds> patience = std::nullopt) {
  ::close(pipe[1]);
  ChildResult result;
  const auto deadline = patience ? std::optional(Clock::now() + *patience) : std::nullopt;
  result.output = readAll(pipe[0], deadline);
  ::close(pipe[0]);
  const bool overdue = deadline && Clock::now() >= *deadline;
  if (overdue) { ::kill(child, SIGKILL); }
  waitFor(child, result);
  result.hung = overdue && result.status == -1;
  return result;
}

/// The words as the system takes them; they borrow from `words`.
std::vector<char*> argumentsOf(const std::vector<std::string>& words) {
  std::vector<char*> arguments;
  for (const std::string& word : words) { arguments.push_back(const_cast<char*>(word.c_str())); }
  arguments.push_back(nullptr);
  return arguments;
}

/// Both of the processes have the ends of `pipe`; nobody has when none was started.
Result<pid_t> forked(const Pipe& pipe) {
  std::cout.flush();
  std::cerr.flush();
  const pid_t child = ::fork();
  if (child >= 0) { return child; }
  auto failed = systemFailure(tr("no process can be started"));
  ::close(pipe[0]);
  ::close(pipe[1]);
  return failed;
}

void readNothing() {
  const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::dup2(nothing, STDIN_FILENO);
}

struct Started {
  pid_t child = -1;
  int trouble = 0;  ///< why it is no such program; the child ends then
};

/// Starts a program that is searched on the path; `prepare` runs in it before.
template <class Prepare>
Result<Started> startWith(const std::vector<std::string>& words, char** environment, const Prepare& prepare) {
  const std::vector<char*> arguments = argumentsOf(words);
  // What closes without a word when the program begins, and says why when it cannot.
  ORLOCAL_TRY(const Pipe pipe, newPipe());
  ORLOCAL_TRY(const pid_t child, forked(pipe));
  if (child == 0) {
    prepare();
    ::execvpe(arguments[0], arguments.data(), environment);
    const int reason = errno;
    static_cast<void>(!::write(pipe[1], &reason, sizeof reason));
    ::_exit(127);
  }
  ::close(pipe[1]);
  Started started{child, 0};
  while (::read(pipe[0], &started.trouble, sizeof started.trouble) < 0 && errno == EINTR) {}
  ::close(pipe[0]);
  return started;
}

}  // namespace

Result<ChildResult> runInChild(const std::function<Status(std::ostream&)>& work,
                               std::optional<std::chrono::milliseconds> patience) {
  ORLOCAL_TRY(const Pipe pipe, newPipe());
  ORLOCAL_TRY(const pid_t child, forked(pipe));
  if (child != 0) { return collect(child, pipe, patience); }
  ::close(pipe[0]);
  const Status done = withoutThrowing([&] {
    PipeBuffer buffer(pipe[1]);
    std::ostream out(&buffer);
    return work(out);
  });
  if (!done) { tellTrouble(std::cerr, done.error().message); }
  std::cout.flush();
  ::_exit(done ? 0 : 1);
}

Result<ChildResult> runProgram(const std::vector<std::string>& words, const std::filesystem::path& folder) {
  const std::vector<char*> arguments = argumentsOf(words);
  ORLOCAL_TRY(const Pipe pipe, newPipe());
  ORLOCAL_TRY(const pid_t child, forked(pipe));
  if (child != 0) { return collect(child, pipe); }
  readNothing();
  ::dup2(pipe[1], STDOUT_FILENO);
  ::dup2(pipe[1], STDERR_FILENO);
  if (!folder.empty() && ::chdir(folder.c_str()) != 0) { ::_exit(127); }
  ::execv(arguments[0], arguments.data());
  ::_exit(127);
}

Result<ChildResult> runVisibly(const std::vector<std::string>& words) {
  ORLOCAL_TRY(const Started started, startWith(words, environ, readNothing));
  ChildResult result;
  waitFor(started.child, result);
  if (started.trouble != 0) { result.ending = tr("cannot be run: {}", systemReason(started.trouble)); }
  return result;
}

Result<pid_t> startVisibly(const std::vector<std::string>& words, const std::string& input,
                           const std::vector<std::string>& variables) {
  std::vector<char*> environment;
  for (char** variable = environ; *variable != nullptr; ++variable) { environment.push_back(*variable); }
  for (const std::string& variable : variables) { environment.push_back(const_cast<char*>(variable.c_str())); }
  environment.push_back(nullptr);
  // A file, so that nobody waits for a program that does not read.
  const int file = ::memfd_create("input", MFD_CLOEXEC);
  if (file < 0 || ::write(file, input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
    auto failed = systemFailure(tr("was not run: no room for its input"));
    if (file >= 0) { ::close(file); }
    return failed;
  }
  ::lseek(file, 0, SEEK_SET);
  const auto started = startWith(words, environment.data(), [file] { ::dup2(file, STDIN_FILENO); });
  ::close(file);
  if (!started) { return failure(started.error().code, tr("was not run: {}", started.error().message)); }
  if (started->trouble == 0) { return started->child; }
  ChildResult ignored;
  waitFor(started->child, ignored);
  return failure(ErrorCode::kNotFound, tr("cannot be run: {}", systemReason(started->trouble)));
}

std::optional<ChildResult> endOf(pid_t child) {
  int state = 0;
  if (::waitpid(child, &state, WNOHANG) != child) { return std::nullopt; }
  ChildResult result;
  describe(state, result);
  return result;
}

std::string endingOf(const Result<ChildResult>& result) {
  return result ? result->ending : tr("was not run: {}", result.error().message);
}

}  // namespace orlocal::host
