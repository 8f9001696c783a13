#include "host/commands/checking/check_run.h"

#include <cstdlib>
#include <ostream>
#include <sstream>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/check/trial.h"
#include "host/commands/command_line/child_process.h"
#include "host/commands/command_line/temporary_folder.h"

namespace orlocal::host {
namespace {

// What the process tells, a line each.
constexpr std::string_view kStep = "step ", kFailed = "failed ", kSkipped = "skipped ", kDone = "done";

std::string onOneLine(std::string text) {
  for (char& c : text) { c = c == '\n' || c == '\r' ? ' ' : c; }
  return text;
}

/// The surroundings that are the same for every check.
void settle(const std::filesystem::path& folder) {
  ::setenv("HOME", folder.c_str(), 1);
  ::setenv("ORLOCAL_STORE", (folder / "calendar.db").c_str(), 1);
  ::setenv("ORLOCAL_SETTINGS", "", 1);
  ::setenv("LC_ALL", "C.UTF-8", 1);
  ::setenv("TZ", "Europe/Berlin", 1);
  for (const char* name : {"LANGUAGE", "ORLOCAL_SYSTEM_MINOR", "ORLOCAL_NOW", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
    ::unsetenv(name);
  }
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  ::dup2(nowhere, STDOUT_FILENO);
  ::dup2(nowhere, STDERR_FILENO);
  ::close(nowhere);
}

Status work(const check::Check& check, const CheckSetting& setting, const std::filesystem::path& folder,
            std::ostream& out) {
  settle(folder);
  check::Trial trial({setting.plugin, folder, setting.seed},
                     [&](std::string_view step) { out << kStep << onOneLine(std::string(step)) + '\n'; });
  check.run(trial);
  for (const std::string& why : trial.failures()) { out << kFailed << onOneLine(why) + '\n'; }
  if (trial.skipped() && !trial.failed()) { out << kSkipped << onOneLine(*trial.skipped()) + '\n'; }
  out << kDone << '\n';
  return {};
}

CheckVerdict verdictOf(const ChildResult& result) {
  CheckVerdict verdict;
  std::istringstream told(result.output);
  bool done = false;
  for (std::string line; std::getline(told, line);) {
    const auto behind = [&](std::string_view word) { return line.substr(word.size()); };
    if (line.starts_with(kStep)) {
      verdict.step = behind(kStep);
    } else if (line.starts_with(kFailed)) {
      verdict.kind = CheckVerdict::Kind::kFailed;
      verdict.reasons.push_back(behind(kFailed));
    } else if (line.starts_with(kSkipped)) {
      verdict.kind = CheckVerdict::Kind::kSkipped;
      verdict.reasons.push_back(behind(kSkipped));
    } else if (line == kDone) {
      done = true;
    }
  }
  // What ends badly after its check is over, at the process's end, has crashed all the same.
  if (done && result.succeeded()) {
    verdict.step.clear();
    return verdict;
  }
  verdict.kind = result.hung ? CheckVerdict::Kind::kHung : CheckVerdict::Kind::kCrashed;
  verdict.reasons = {result.hung ? tr("it did not come back") : tr("its process {}", result.ending)};
  return verdict;
}

}  // namespace

const char* wordFor(CheckVerdict::Kind kind) {
  switch (kind) {
    case CheckVerdict::Kind::kPassed:
      return translatable("passed");
    case CheckVerdict::Kind::kFailed:
      return translatable("failed");
    case CheckVerdict::Kind::kCrashed:
      return translatable("crashed");
    case CheckVerdict::Kind::kHung:
      return translatable("hung");
    case CheckVerdict::Kind::kSkipped:
      return translatable("skipped");
  }
  return "";
}

Result<CheckVerdict> runCheck(const check::Check& check, const CheckSetting& setting) {
  TemporaryFolder folder;
  ORLOCAL_CHECK(folder.make());
  const auto begun = std::chrono::steady_clock::now();
  ORLOCAL_TRY(
      const ChildResult result,
      runInChild([&](std::ostream& out) { return work(check, setting, folder.path(), out); }, setting.patience));
  CheckVerdict verdict = verdictOf(result);
  verdict.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
  return verdict;
}

}  // namespace orlocal::host
