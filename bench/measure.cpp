#include "measure.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

namespace orlocal::bench {

Times summarize(std::vector<double> seconds) {
  if (seconds.empty()) { return {}; }
  std::sort(seconds.begin(), seconds.end());
  return {seconds.front(), seconds[seconds.size() / 2], seconds.back()};
}

Row compare(std::string name, int rounds, const std::function<double()>& subject,
            const std::function<double()>& floor) {
  std::vector<double> ours;
  std::vector<double> floors;
  subject();
  floor();
  for (int i = 0; i < rounds; ++i) {
    ours.push_back(subject());
    floors.push_back(floor());
  }
  Row row;
  row.name = std::move(name);
  row.subject = summarize(std::move(ours));
  row.floor = summarize(std::move(floors));
  return row;
}

double seconds(const std::function<void()>& work) {
  const auto begun = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

double inChild(const std::function<double()>& work) {
  int ends[2];
  if (pipe(ends) != 0) { throw std::runtime_error("no pipe for a measuring child"); }
  const pid_t child = fork();
  if (child < 0) { throw std::runtime_error("no process for a measuring child"); }
  if (child == 0) {
    const double answer = work();
    const bool told = write(ends[1], &answer, sizeof answer) == static_cast<ssize_t>(sizeof answer);
    _exit(told ? 0 : 1);
  }
  close(ends[1]);
  double answer = 0;
  const bool heard = read(ends[0], &answer, sizeof answer) == static_cast<ssize_t>(sizeof answer);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (!heard || status != 0) { throw std::runtime_error("a measuring child failed"); }
  return answer;
}

double peakResidentKiB() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) { return std::strtod(line.c_str() + 6, nullptr); }
  }
  return 0;
}

}  // namespace orlocal::bench
