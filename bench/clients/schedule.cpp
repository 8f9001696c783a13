#include "schedule.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <exception>
#include <thread>

namespace orlocal::bench {

std::vector<Done> runJobs(std::vector<Job> jobs, std::size_t threads) {
  std::stable_sort(jobs.begin(), jobs.end(), [](const Job& left, const Job& right) { return left.due < right.due; });
  std::vector<Done> done(jobs.size());
  const auto begun = std::chrono::steady_clock::now();
  const auto passed = [begun] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun); };
  std::atomic<std::size_t> next = 0;
  const auto work = [&] {
    for (std::size_t at = next++; at < jobs.size(); at = next++) {
      const Job& job = jobs[at];
      std::this_thread::sleep_for(job.due - passed());
      done[at].late = (passed() - job.due).count();
      try {
        job.work();
      } catch (const std::exception& problem) { done[at].failure = problem.what(); }
      done[at].latency = (passed() - job.due).count();
    }
  };
  std::vector<std::jthread> workers;
  for (std::size_t i = 0; i < std::min(threads, jobs.size()); ++i) { workers.emplace_back(work); }
  workers.clear();
  return done;
}

double percentile(std::vector<double> values, double part) {
  if (values.empty()) { return 0; }
  std::sort(values.begin(), values.end());
  const auto rank = static_cast<std::size_t>(std::ceil(part / 100 * static_cast<double>(values.size())));
  return values[std::max<std::size_t>(rank, 1) - 1];
}

}  // namespace orlocal::bench
