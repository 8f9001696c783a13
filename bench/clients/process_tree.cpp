#include "process_tree.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

namespace orlocal::bench {
namespace {

constexpr double kKiBPerMiB = 1024;

struct Process {
  pid_t parent = 0;
  double seconds = 0;
};

/// The fields behind the name, which may hold anything; proc(5).
Process read(const std::filesystem::path& stat) {
  std::ifstream file(stat);
  std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const std::size_t name = text.rfind(')');
  if (name == text.npos) { return {}; }
  std::istringstream fields(text.substr(name + 1));
  std::string skipped;
  Process process;
  fields >> skipped >> process.parent;
  for (int i = 0; i < 9; ++i) { fields >> skipped; }
  // Of the process, and of children that ended and were waited for.
  for (int i = 0; i < 4; ++i) {
    double ticks = 0;
    fields >> ticks;
    process.seconds += ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
  }
  return process;
}

std::map<pid_t, Process> tree(pid_t root) {
  std::map<pid_t, Process> all;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (name.find_first_not_of("0123456789") == name.npos) {
      all.emplace(std::stoi(name), read(entry.path() / "stat"));
    }
  }
  const auto below = [&](pid_t pid) {
    for (auto at = all.find(pid); at != all.end(); at = all.find(at->second.parent)) {
      if (at->first == root) { return true; }
    }
    return false;
  };
  std::map<pid_t, Process> found;
  for (const auto& [pid, process] : all) {
    if (below(pid)) { found.emplace(pid, process); }
  }
  return found;
}

}  // namespace

double processorSecondsOf(pid_t root) {
  double seconds = 0;
  for (const auto& [pid, process] : tree(root)) { seconds += process.seconds; }
  return seconds;
}

double mebibytesOf(pid_t root) {
  double kibibytes = 0;
  for (const auto& [pid, process] : tree(root)) {
    std::ifstream rollup("/proc/" + std::to_string(pid) + "/smaps_rollup");
    for (std::string word; rollup >> word;) {
      if (word != "Pss:") { continue; }
      double share = 0;
      rollup >> share;
      kibibytes += share;
      break;
    }
  }
  return kibibytes / kKiBPerMiB;
}

double ownProcessorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double ownPeakMebibytes() {
  // Not what getrusage has: that begins with the peak of who started this program.
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) { return std::stod(line.substr(6)) / kKiBPerMiB; }
  }
  throw std::runtime_error("/proc/self/status has no VmHWM");
}

}  // namespace orlocal::bench
