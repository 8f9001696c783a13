#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "base/result.h"

namespace orlocal::host {

/// What a child process wrote, and how it ended.
struct ChildResult {
  std::string output;
  int status = -1;     ///< the exit status; -1 when a signal ended it
  std::string ending;  ///< in words: "ended with status 1", "was ended by signal 11 (Segmentation fault)"
  bool hung = false;   ///< was ended by us when its time was over

  bool succeeded() const { return status == 0; }
};

// They fail when the system gives no process or no pipe to it.

/// Runs the work in a copy of this process, which must have one thread only. What it writes comes back; its failure, or
/// what it throws, is told on the error stream and ends it with status 1. The copy ends without running anything of
/// ours at exit. With `patience` it is killed when it takes longer.
Result<ChildResult> runInChild(const std::function<Status(std::ostream&)>& work,
                               std::optional<std::chrono::milliseconds> patience = std::nullopt);

/// Runs a program by its words, the first being its file; it reads nothing, and output and errors come back together.
/// It starts in `folder`, or (empty) where we are.
Result<ChildResult> runProgram(const std::vector<std::string>& words, const std::filesystem::path& folder = {});

/// Runs a program that shares our output and error streams and reads nothing; the first word is its file or a name that
/// is searched on the path. `output` stays empty.
Result<ChildResult> runVisibly(const std::vector<std::string>& words);

/// Starts a program as `runVisibly` does and does not wait for its end. It reads `input`; `variables` ("NAME=value")
/// are in its environment besides ours. Fails in words that stand behind its name.
Result<pid_t> startVisibly(const std::vector<std::string>& words, const std::string& input,
                           const std::vector<std::string>& variables);

/// How a program that was started has ended; none while it runs.
std::optional<ChildResult> endOf(pid_t child);

/// How a program ended, to stand behind its name; or that it was not started, and why.
std::string endingOf(const Result<ChildResult>& result);

}  // namespace orlocal::host
