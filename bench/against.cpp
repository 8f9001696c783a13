#include "against.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

#include <fmt/format.h>

#include "tables.h"

namespace orlocal::bench {
namespace {

constexpr double kLeastChange = 0.05, kLeastInstructions = 0.02;

/// One thing that both runs have: the ratio to a floor, or an amount that has none.
struct Figure {
  Spread spread;
  bool moreIsBetter = false;
};

/// What, in how large a store, for how many rows, beside what: other work is not compared.
using Name = std::tuple<std::string, std::size_t, std::size_t, std::string>;

std::map<Name, Figure> figuresOf(const Results& results) {
  std::map<Name, Figure> figures;
  for (const Row& row : results.rows) {
    const bool rate = row.unit == Unit::kPerSecond;
    if (row.floors.empty()) { figures[{row.name, row.events, row.subject.rows, ""}] = {row.subject.amount, rate}; }
    for (const Side& floor : row.floors) {
      // Measured once, it has no range that could tell noise.
      if (floor.ratio.low == floor.ratio.high) { continue; }
      figures[{row.name, row.events, row.subject.rows, floor.name}] = {floor.ratio, rate};
    }
  }
  return figures;
}

bool differ(const Spread& before, const Spread& now) {
  const bool apart = before.high < now.low || now.high < before.low;
  return apart && std::abs(now.median - before.median) > kLeastChange * before.median;
}

const char* verdict(bool more, bool moreIsBetter) { return more == moreIsBetter ? "better" : "WORSE"; }

std::string instructionChanges(const Results& before, const Results& now) {
  std::string lines;
  for (const InstructionCount& count : now.instructions) {
    const auto earlier = std::find_if(
        before.instructions.begin(), before.instructions.end(),
        [&](const InstructionCount& other) { return other.task == count.task && other.events == count.events; });
    if (earlier == before.instructions.end() || earlier->instructions == 0) { continue; }
    const double factor = static_cast<double>(count.instructions) / static_cast<double>(earlier->instructions);
    lines += fmt::format("{:6}  instructions, {}: {} before, {} now ({:+.1f} %)\n",
                         std::abs(factor - 1) <= kLeastInstructions ? "same" : verdict(factor > 1, false), count.task,
                         earlier->instructions, count.instructions, (factor - 1) * 100);
  }
  return lines;
}

}  // namespace

std::string ruleOfChange() {
  return fmt::format(
      "Something changed when the ranges (lowest to highest) of its ratios to a floor do not meet, and their medians "
      "differ by more than {:.0f} %; without a floor its amounts count. A ratio that was measured once is not judged. "
      "Instructions changed when they differ by more "
      "than {:.0f} %.",
      kLeastChange * 100, kLeastInstructions * 100);
}

std::string changesSince(const Results& before, const Results& now) {
  const auto earlier = figuresOf(before), later = figuresOf(now);
  std::string lines;
  std::size_t alike = 0, unknown = 0;
  for (const auto& [name, figure] : later) {
    const auto known = earlier.find(name);
    if (known == earlier.end()) {
      ++unknown;
      continue;
    }
    const Spread& was = known->second.spread;
    if (!differ(was, figure.spread)) {
      ++alike;
      continue;
    }
    const auto& [what, events, rows, beside] = name;
    lines += fmt::format("{:6}  {}, {} events{}: {:.2f} ({:.2f} to {:.2f}) before, {:.2f} ({:.2f} to {:.2f}) now\n",
                         verdict(figure.spread.median > was.median, figure.moreIsBetter), what, events,
                         beside.empty() ? "" : ", beside " + beside, was.median, was.low, was.high,
                         figure.spread.median, figure.spread.low, figure.spread.high);
  }
  lines += instructionChanges(before, now);
  return fmt::format(
      "Against the run of {}: {} figures are alike, {} are new, {} are gone.\n{}", before.date, alike, unknown,
      std::count_if(earlier.begin(), earlier.end(), [&](const auto& figure) { return !later.contains(figure.first); }),
      lines);
}

}  // namespace orlocal::bench
