#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace orlocal::bench {

/// Something that is due at a moment, whatever happened before: who is late stays late, and is counted from when it
/// was due.
struct Job {
  std::chrono::duration<double> due{0};  ///< since the schedule's start
  std::function<void()> work;
};

/// What became of a job, in seconds.
struct Done {
  double late = 0;      ///< from when it was due until a thread took it up
  double latency = 0;   ///< from when it was due until it was done
  std::string failure;  ///< what it threw; empty when it went well
};

/// Does the jobs, in the order in which they are due, on so many threads; returns what became of each.
std::vector<Done> runJobs(std::vector<Job> jobs, std::size_t threads);

/// The value that so many of a hundred do not pass; 0 of none.
double percentile(std::vector<double> values, double part);

}  // namespace orlocal::bench
