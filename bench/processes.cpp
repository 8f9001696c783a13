#include "processes.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "measure.h"

namespace orlocal::bench {
namespace {

struct Pipe {
  Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) { throw std::runtime_error("no pipe for a measuring process"); }
  }
  ~Pipe() {
    closeReading();
    closeWriting();
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;

  void closeReading() { closeEnd(0); }
  void closeWriting() { closeEnd(1); }
  bool tell(const void* data, std::size_t size) const {
    return write(ends[1], data, size) == static_cast<ssize_t>(size);
  }
  bool hear(void* data, std::size_t size) const { return read(ends[0], data, size) == static_cast<ssize_t>(size); }

 private:
  void closeEnd(std::size_t end) {
    if (ends[end] >= 0) { close(std::exchange(ends[end], -1)); }
  }

  std::array<int, 2> ends{};
};

/// A child that does `work`, and never comes back from it.
pid_t forked(const std::function<bool()>& work) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) { throw std::runtime_error("no measuring process"); }
  if (child != 0) { return child; }
  bool done = false;
  try {
    done = work();
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "orlocal_bench, in a process of its own: %s\n", problem.what());
  }
  _exit(done ? 0 : 1);
}

bool endedWell(pid_t child) {
  int status = 0;
  return waitpid(child, &status, 0) == child && status == 0;
}

Tally repeat(const Step& step, double secondsLong) {
  using Clock = std::chrono::steady_clock;
  std::vector<double> taken;
  const double processorBefore = processorSeconds();
  const auto begun = Clock::now();
  double elapsed = 0;
  while (elapsed < secondsLong) {
    step();
    const double now = std::chrono::duration<double>(Clock::now() - begun).count();
    taken.push_back(now - elapsed);
    elapsed = now;
  }
  Tally tally;
  tally.steps = taken.size();
  tally.perSecond = static_cast<double>(tally.steps) / elapsed;
  tally.processor = (processorSeconds() - processorBefore) / static_cast<double>(tally.steps);
  tally.median = summarize(std::move(taken)).median;
  return tally;
}

}  // namespace

void inChild(const std::function<void(void*)>& work, void* answer, std::size_t size) {
  Pipe answers;
  const pid_t child = forked([&] {
    work(answer);
    return answers.tell(answer, size);
  });
  answers.closeWriting();
  const bool heard = answers.hear(answer, size);
  if (!endedWell(child) || !heard) { throw std::runtime_error("a measuring process failed"); }
}

std::vector<Tally> runTogether(const std::vector<Worker>& workers, double secondsLong) {
  struct Message {
    std::size_t worker;
    Tally tally;
  };
  Pipe ready, begin, tallies;
  std::vector<pid_t> children;
  for (std::size_t i = 0; i < workers.size(); ++i) {
    children.push_back(forked([&, i] {
      begin.closeWriting();
      const Step step = workers[i]();
      char none = 'r';
      if (!ready.tell(&none, 1)) { return false; }
      ready.closeWriting();  // so that the parent does not wait for those that failed
      begin.hear(&none, 1);  // until nobody holds the other end any more
      const Message message{i, repeat(step, secondsLong)};
      return tallies.tell(&message, sizeof message);
    }));
  }
  ready.closeWriting();
  tallies.closeWriting();
  bool well = true;
  for (std::size_t i = 0; i < children.size(); ++i) {
    char none = 0;
    well = ready.hear(&none, 1) && well;
  }
  begin.closeWriting();
  // What is this short a pipe takes in one piece, so that they do not mix.
  std::vector<Tally> heard(workers.size());
  for (Message message; tallies.hear(&message, sizeof message);) { heard[message.worker] = message.tally; }
  for (const pid_t child : children) { well = endedWell(child) && well; }
  if (!well) { throw std::runtime_error("one of several processes failed"); }
  return heard;
}

double processorSeconds() {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

double peakResidentKiB() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) { return std::strtod(line.c_str() + 6, nullptr); }
  }
  return 0;
}

}  // namespace orlocal::bench
