#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace orlocal::bench {

/// One thing measured several times.
struct Spread {
  double low = 0, median = 0, high = 0;
};

Spread summarize(std::vector<double> values);

/// What numbers count. Of a rate more is better, of all others less.
enum class Unit { kSeconds, kPerSecond, kMebibytes };

/// What one run did, and what it took.
struct Outcome {
  double amount = 0;
  std::size_t rows = 0;  ///< occurrences, saves, calls: what the amount was for
};

/// What takes part in a comparison; each run may do its work anew.
struct Contender {
  std::string name;
  std::function<Outcome()> run;
};

/// One contender's results.
struct Side {
  std::string name;
  std::size_t rows = 0;
  Spread amount;
  Spread ratio;  ///< of a floor: what the subject took by what this took, round by round
};

/// One row of the report: what was measured, beside its floors from the same run.
struct Row {
  std::string name;
  std::size_t events = 0;  ///< size of the store; 0 where that does not matter
  Unit unit = Unit::kSeconds;
  double aim = 0;  ///< what the ratio to the first floor, or the amount where there is none, shall not pass; 0 is none
  double growthAim = 0;  ///< the same for the cost of one row beside that in the store that growth is measured from
  Side subject;
  std::vector<Side> floors;
};

/// What a contender did, round by round.
struct Rounds {
  std::string name;
  std::vector<Outcome> outcomes;
};

/// All have as many rounds. The row's own name is the caller's to fill in.
Row rowOf(const Rounds& subject, const std::vector<Rounds>& floors);

/// Runs all in turn, `rounds` times each, after one round that does not count unless there is only one. Taking turns
/// keeps the ratio steady when the machine's speed drifts.
Row compare(int rounds, const Contender& subject, const std::vector<Contender>& floors);

/// Seconds that `work` takes.
double seconds(const std::function<void()>& work);

}  // namespace orlocal::bench
