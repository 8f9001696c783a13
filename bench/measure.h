#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace orlocal::bench {

/// Seconds of one thing measured several times.
struct Times {
  double low = 0, median = 0, high = 0;
};

Times summarize(std::vector<double> seconds);

/// One row of the report: what was measured, beside its floor from the same run.
struct Row {
  std::string name;
  std::size_t events = 0;  ///< size of the store
  std::size_t rows = 0;    ///< occurrences or calls that both sides worked on
  Times subject;           ///< seconds for all of `rows`
  Times floor;             ///< likewise
  double aim = 0;          ///< subject by floor that we want to stay below; 0 is none
  double ratio() const { return floor.median > 0 ? subject.median / floor.median : 0; }
};

/// Runs `subject` and `floor` in turn, `rounds` times each after one round that does not count; each returns its
/// seconds. Taking turns keeps the ratio steady when the machine's speed drifts.
Row compare(std::string name, int rounds, const std::function<double()>& subject, const std::function<double()>& floor);

/// Seconds that `work` takes.
double seconds(const std::function<void()>& work);

/// Runs `work` in a forked child, so that it starts with nothing warmed up in the process, and returns its number.
/// Throws when the child does not answer.
double inChild(const std::function<double()>& work);

/// The process's peak of resident memory in KiB (VmHWM of /proc/self/status).
double peakResidentKiB();

}  // namespace orlocal::bench
