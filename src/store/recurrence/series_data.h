#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "base/translation.h"
#include "store/recurrence/recurrence.h"
#include "store/recurrence/recurrence_rule.h"

namespace orlocal::store {

/// What a series is made of. For the sources of `Series` alone.
struct Series::Data {
  struct Rule {
    CompiledRule rule;
    LocalSeconds last = kLastLocalSecond;  ///< nothing starts after it
    std::optional<Moment> until;
    bool endless = true;
    bool makesStart = false;
    std::int64_t most = std::numeric_limits<std::int64_t>::max();  ///< COUNT
  };

  std::string name;
  Zone zone;
  CalendarTime start;
  LocalSeconds first = 0;
  Moment firstMoment;
  std::chrono::microseconds length{0};  ///< of timed items
  std::int64_t dayCount = 0;            ///< of whole days
  std::vector<Rule> rules;
  std::vector<Rule> exceptionRules;
  std::vector<LocalSeconds> added;      ///< sorted
  std::vector<Moment> excluded;         ///< sorted
  std::vector<DayNumber> excludedDays;  ///< sorted
  bool sorted = true;                   ///< one source that never goes back in time

  bool allDay() const { return start.kind == CalendarTime::Kind::kDate; }
  Moment momentAt(LocalSeconds local) const { return zone.toMoment(localTime(local)); }

  Instance instance(LocalSeconds local, Moment at) const {
    if (allDay()) { return {localTime(local), at, momentAt(local + dayCount * kSecondsPerDay)}; }
    return {localTime(local), at, at + length};
  }
  /// None when the budget ran out.
  std::optional<bool> isExcluded(LocalSeconds local, Moment at, ExpansionBudget& budget) const {
    if (!excludedDays.empty() && std::binary_search(excludedDays.begin(), excludedDays.end(), dayOf(local))) {
      return true;
    }
    bool found = !excluded.empty() && std::binary_search(excluded.begin(), excluded.end(), at);
    for (const Rule& rule : exceptionRules) {
      if (found) { break; }
      const auto take = [&](LocalSeconds, Moment) { return !(found = true); };
      if (!walk(rule, local, local + 1, budget, take)) { return std::nullopt; }
    }
    return found;
  }
  Failed overBudget() const {
    return failure(ErrorCode::kBudget,
                   tr("{} repeats in a way that takes too long to follow; give it a simpler rule or remove it", name));
  }

  LocalSeconds dateOf(const CalendarTime& time) const { return dayOf(localSeconds(time.local)) * kSecondsPerDay; }
  /// Where on the series' wall clock a time of another kind or zone lies.
  LocalSeconds localOf(const CalendarTime& time) const {
    if (allDay()) { return dateOf(time); }
    if (time.kind == start.kind && time.zone == start.zone) { return localSeconds(time.local); }
    if (time.kind == CalendarTime::Kind::kFloating) { return localSeconds(time.local); }
    // A date among date-times means the series' hour on that day.
    if (time.kind == CalendarTime::Kind::kDate) { return dateOf(time) + first - dayOf(first) * kSecondsPerDay; }
    return localSeconds(zone.toLocal(momentOf(time, zone)));
  }

  /// `begin` is from when the rule runs; `ofSeries` that it is the series' start, which counts also where no rule makes
  /// it.
  Result<Rule> ruleOf(const RecurrenceRule& from, LocalSeconds begin, bool ofSeries, ExpansionBudget& budget) const;
  void exclude(const CalendarTime& time);
  bool walk(const Rule& rule, LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
            const std::function<bool(LocalSeconds, Moment)>& visit) const;
  bool stream(Moment from, Moment to, ExpansionBudget& budget,
              const std::function<bool(LocalSeconds, Moment)>& visit) const;
  bool gather(Moment from, Moment to, ExpansionBudget& budget,
              const std::function<bool(LocalSeconds, Moment)>& visit) const;
  Moment latestUpTo(LocalSeconds local) const;
  Moment end() const;
};

}  // namespace orlocal::store
