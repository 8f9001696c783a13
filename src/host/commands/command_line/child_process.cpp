#include "host/commands/command_line/child_process.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>
#include <ostream>
#include <streambuf>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/system_reason.h"
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
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) { return systemFailure("no pipe"); }
  return ends;
}

std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 65536> block{};
  for (;;) {
    const ssize_t count = ::read(descriptor, block.data(), block.size());
    if (count < 0 && errno == EINTR) { continue; }
    if (count <= 0) { return text; }
    text.append(block.data(), static_cast<std::size_t>(count));
  }
}

/// Waits for the child's end and puts it into words.
void waitFor(pid_t child, ChildResult& result) {
  int state = 0;
  while (::waitpid(child, &state, 0) < 0 && errno == EINTR) {}
  if (WIFEXITED(state)) {
    result.status = WEXITSTATUS(state);
    result.ending = fmt::format("ended with status {}", result.status);
  } else {
    const int signal = WTERMSIG(state);
    result.ending = fmt::format("was ended by signal {} ({})", signal, ::strsignal(signal));
  }
}

ChildResult collect(pid_t child, const Pipe& pipe) {
  ::close(pipe[1]);
  ChildResult result;
  result.output = readAll(pipe[0]);
  ::close(pipe[0]);
  waitFor(child, result);
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
  auto failed = systemFailure("no process can be started");
  ::close(pipe[0]);
  ::close(pipe[1]);
  return failed;
}

void readNothing() {
  const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::dup2(nothing, STDIN_FILENO);
}

}  // namespace

Result<ChildResult> runInChild(const std::function<Status(std::ostream&)>& work) {
  ORLOCAL_TRY(const Pipe pipe, newPipe());
  ORLOCAL_TRY(const pid_t child, forked(pipe));
  if (child != 0) { return collect(child, pipe); }
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
  const std::vector<char*> arguments = argumentsOf(words);
  // What closes without a word when the program begins, and says why when it cannot.
  ORLOCAL_TRY(const Pipe pipe, newPipe());
  ORLOCAL_TRY(const pid_t child, forked(pipe));
  if (child == 0) {
    readNothing();
    ::execvp(arguments[0], arguments.data());
    const int reason = errno;
    static_cast<void>(!::write(pipe[1], &reason, sizeof reason));
    ::_exit(127);
  }
  ::close(pipe[1]);
  int reason = 0;
  ssize_t count = 0;
  while ((count = ::read(pipe[0], &reason, sizeof reason)) < 0 && errno == EINTR) {}
  ::close(pipe[0]);
  ChildResult result;
  waitFor(child, result);
  if (count > 0) { result.ending = fmt::format("cannot be run: {}", systemReason(reason)); }
  return result;
}

std::string endingOf(const Result<ChildResult>& result) {
  return result ? result->ending : "was not run: " + result.error().message;
}

}  // namespace orlocal::host
