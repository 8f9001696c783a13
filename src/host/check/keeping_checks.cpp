// What a plug-in takes of its process, and whether it gives it back.
#include <algorithm>
#include <clocale>
#include <fstream>
#include <iterator>

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/check/check.h"
#include "host/check/trial.h"

namespace orlocal::host::check {
namespace {

namespace fs = std::filesystem;

std::size_t entriesOf(const char* folder) {
  std::error_code error;
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder, error), fs::directory_iterator()));
}
std::size_t descriptors() { return entriesOf("/proc/self/fd"); }
std::size_t threads() { return entriesOf("/proc/self/task"); }

/// Of this process, in KiB.
std::size_t residentMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == "VmRSS:") {
      std::size_t size = 0;
      status >> size;
      return size;
    }
  }
  return 0;
}

/// All functions, with words that mean nothing.
void useAll(Trial& trial) {
  for (const auto& function : trial.functions()) {
    const std::size_t count = mostArguments(*function);
    trial.call(*function, std::vector<Value>(count, Value::ofText(u"event")));
  }
}

void givesDescriptorsBack(Trial& trial) {
  const auto plugin = trial.opened();
  if (plugin == nullptr) { return; }
  const auto round = [&] {
    if (const auto started = plugin->start(); !started) { trial.fail(started.error().message); }
    useAll(trial);
    if (const Status done = plugin->shutdown(); !done) { trial.fail(done.error().message); }
  };
  // What is kept from the first time on is kept once.
  round();
  const std::size_t before = descriptors();
  for (int i = 0; i < 30; ++i) {
    trial.step(fmt::format("round {}", i + 1));
    round();
  }
  trial.expect(descriptors() <= before + 1,
               fmt::format("thirty rounds of start-up, calls and shutdown leave {} descriptors open, one left {}.",
                           descriptors(), before));
}

void givesMemoryBack(Trial& trial) {
  constexpr std::size_t kAllowed = 8'192;
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  const auto calls = [&](int count) {
    for (int i = 0; i < count; ++i) {
      trial.step(fmt::format("all functions, time {}", i + 1));
      useAll(trial);
    }
  };
  calls(300);
  const std::size_t before = residentMemory();
  calls(3'000);
  const std::size_t after = residentMemory();
  trial.expect(after <= before + kAllowed, fmt::format("3,000 times all functions take {} KiB that are not given back.",
                                                       after - std::min(before, after)));
}

void startsNoThreads(Trial& trial) {
  const std::size_t before = threads();
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  trial.expect(threads() == before, fmt::format("start-up leaves {} threads running.", threads() - before));
  useAll(trial);
  trial.expect(threads() == before, fmt::format("calls leave {} threads running.", threads() - before));
}

void endsItsThreads(Trial& trial) {
  const std::size_t before = threads();
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  useAll(trial);
  if (const Status done = plugin->shutdown(); !done) { trial.fail(done.error().message); }
  trial.expect(threads() <= before, fmt::format("{} threads are running after shutdown.", threads() - before));
}

/// Anything that the signal does.
void* actionOf(int signal) {
  struct sigaction action {};
  ::sigaction(signal, nullptr, &action);
  return (action.sa_flags & SA_SIGINFO) != 0 ? reinterpret_cast<void*>(action.sa_sigaction)
                                             : reinterpret_cast<void*>(action.sa_handler);
}

void leavesSignalsAlone(Trial& trial) {
  constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGCHLD, SIGSEGV, SIGABRT, SIGALRM, SIGUSR1, SIGUSR2};
  std::vector<void*> before;
  for (const int signal : kSignals) { before.push_back(actionOf(signal)); }
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  useAll(trial);
  for (std::size_t i = 0; i < before.size(); ++i) {
    trial.expect(actionOf(kSignals[i]) == before[i], fmt::format("it changes what signal {} does.", kSignals[i]));
  }
}

void leavesTheProcessAsItIs(Trial& trial) {
  std::error_code error;
  const fs::path folder = fs::current_path(error);
  const mode_t mask = ::umask(022);
  ::umask(mask);
  const std::string locale = std::setlocale(LC_ALL, nullptr);
  const auto plugin = trial.started();
  if (plugin == nullptr) { return; }
  useAll(trial);
  trial.expect(fs::current_path(error) == folder, "it goes to another working folder.");
  const mode_t now = ::umask(mask);
  trial.expect(now == mask, "it changes the mode that new files get (umask).");
  trial.expect(locale == std::setlocale(LC_ALL, nullptr),
               fmt::format("it changes the process's locale to {}.", std::setlocale(LC_ALL, nullptr)));
}

/// Standard output is the host's.
void printsNothing(Trial& trial) {
  const fs::path file = trial.folder() / "printed";
  const int kept = ::dup(STDOUT_FILENO);
  const int into = ::open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  ::dup2(into, STDOUT_FILENO);
  if (const auto plugin = trial.started(); plugin != nullptr) { useAll(trial); }
  ::dup2(kept, STDOUT_FILENO);
  ::close(kept);
  ::close(into);
  std::error_code error;
  trial.expect(fs::file_size(file, error) == 0, "it writes on the standard output, which is the host's.");
}

}  // namespace

std::vector<Check> keepingChecks() {
  return {
      {"keep-descriptors", "Files and sockets are closed again.", Level::kUsual, givesDescriptorsBack},
      {"keep-memory", "Calls give back the memory that they take.", Level::kUsual, givesMemoryBack},
      {"keep-no-threads", "No thread is started.", Level::kStrict, startsNoThreads},
      {"keep-threads-end", "No thread is running after shutdown.", Level::kBasic, endsItsThreads},
      {"keep-signals", "Signals do what they did before.", Level::kUsual, leavesSignalsAlone},
      {"keep-process", "Working folder, umask and locale of the process stay.", Level::kUsual, leavesTheProcessAsItIs},
      {"keep-quiet", "Nothing is written on the standard output.", Level::kUsual, printsNothing},
  };
}

}  // namespace orlocal::host::check
