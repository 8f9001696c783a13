#include "measure.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace orlocal::bench {

Spread summarize(std::vector<double> values) {
  if (values.empty()) { return {}; }
  std::sort(values.begin(), values.end());
  return {values.front(), values[values.size() / 2], values.back()};
}

Row rowOf(const Rounds& subject, const std::vector<Rounds>& floors) {
  const auto sideOf = [&](const Rounds& rounds) {
    std::vector<double> amounts, ratios;
    for (std::size_t i = 0; i < rounds.outcomes.size(); ++i) {
      const double amount = rounds.outcomes[i].amount;
      amounts.push_back(amount);
      ratios.push_back(amount > 0 ? subject.outcomes.at(i).amount / amount : 0);
    }
    return Side{rounds.name, rounds.outcomes.back().rows, summarize(std::move(amounts)), summarize(std::move(ratios))};
  };
  Row row;
  row.subject = sideOf(subject);
  for (const Rounds& floor : floors) { row.floors.push_back(sideOf(floor)); }
  return row;
}

Row compare(int rounds, const Contender& subject, const std::vector<Contender>& floors) {
  Rounds ours{subject.name, {}};
  std::vector<Rounds> theirs;
  for (const Contender& floor : floors) { theirs.push_back({floor.name, {}}); }
  for (int round = rounds > 1 ? -1 : 0; round < rounds; ++round) {
    const auto run = [round](const Contender& contender, Rounds& kept) {
      const Outcome outcome = contender.run();
      if (round >= 0) { kept.outcomes.push_back(outcome); }
    };
    run(subject, ours);
    for (std::size_t i = 0; i < floors.size(); ++i) { run(floors[i], theirs[i]); }
  }
  return rowOf(ours, theirs);
}

double seconds(const std::function<void()>& work) {
  const auto begun = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

}  // namespace orlocal::bench
