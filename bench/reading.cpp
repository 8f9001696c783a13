// A month and stretches of about a thousand occurrences, in stores that grow: a query is to cost what its answer costs.
#include <algorithm>
#include <vector>

#include "files.h"
#include "floors.h"
#include "parts.h"
#include "questions.h"

namespace orlocal::bench {
namespace {

using store::LocalTime;

constexpr std::int64_t kOccurrences = 1'000;
constexpr int kStretches = 40;

/// Of equal length between two times, spread evenly.
std::vector<Range> stretchesWithin(const Range& range, std::int64_t length) {
  std::vector<Range> stretches;
  for (int i = 0; i < kStretches; ++i) {
    const LocalTime begin = range.from + (range.to - range.from - length) * i / kStretches;
    stretches.push_back({begin, begin + length});
  }
  return stretches;
}

/// Seconds in which about a thousand occurrences begin.
std::int64_t stretchLength(const Range& month, std::size_t inMonth) {
  return (month.to - month.from) * kOccurrences / std::max(kOccurrences, static_cast<std::int64_t>(inMonth));
}

/// The average of one of them, in a process that has answered `month`.
Outcome afterMonth(const Ask& ask, const Range& month, const std::vector<Range>& stretches) {
  ask(month);
  std::size_t rows = 0;
  const double all = seconds([&] {
    for (const Range& stretch : stretches) { rows += ask(stretch); }
  });
  return {all / kStretches, rows / kStretches};
}

}  // namespace

void measureReading(Report& report, const Setting& setting) {
  const Range month = monthOf2026(11);
  for (const std::size_t events : setting.sizes) {
    const auto add = [&](const char* name, double aim, double growthAim, const Asking& asking) {
      Row row = compareAnswers(setting, events, asking);
      row.name = name;
      row.aim = aim;
      row.growthAim = growthAim;
      report.add(std::move(row));
    };
    const auto timed = [](const Ask& ask, const Range& range) {
      Outcome outcome;
      outcome.amount = seconds([&] { outcome.rows = ask(range); });
      return outcome;
    };
    add("open and first month, cold", 3, 0, [&](const Ask& ask) { return timed(ask, month); });
    add("warm month", 2, 0, [&](const Ask& ask) {
      // Another month between, so that no answer is kept.
      for (const int other : {9, 11, 9}) { ask(monthOf2026(other)); }
      return timed(ask, month);
    });

    const std::size_t inMonth =
        Floor(floorFile(setting, events)).timesWithin(utcSeconds(month.from), utcSeconds(month.to));
    const std::int64_t length = stretchLength(month, inMonth);
    const auto known = stretchesWithin(month, length);
    const auto fresh = stretchesWithin({LocalTime(2026, 1, 1), LocalTime(2026, 10, 1)}, length);
    add("stretch of a month that was answered", 0, 1.3, [&](const Ask& ask) { return afterMonth(ask, month, known); });
    add("stretch never asked for", 0, 0, [&](const Ask& ask) { return afterMonth(ask, month, fresh); });
  }
}

}  // namespace orlocal::bench
