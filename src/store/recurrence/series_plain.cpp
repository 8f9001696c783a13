#include <algorithm>

#include "store/recurrence/series_data.h"
#include "store/time/steady_clock.h"

// Whether a series tells its days one by one, and which those are.
namespace orlocal::store {

std::optional<PlainSeries> Series::plain() const {
  const Data& data = *m_data;
  if (data.rules.size() != 1 || !data.exceptionRules.empty() || !data.added.empty()) { return std::nullopt; }
  const Data::Rule& rule = data.rules.front();
  const auto days = rule.rule.dayPattern();
  if (!days || data.zone.skipsDay()) { return std::nullopt; }
  PlainSeries plain;
  plain.zone = data.zone;
  plain.allDay = data.allDay();
  plain.days = *days;
  plain.timeOfDay = data.allDay() ? 0 : rule.rule.timeOfDay();
  plain.length =
      data.allDay() ? data.dayCount * kSecondsPerDay : std::chrono::floor<std::chrono::seconds>(data.length).count();
  const auto isExcluded = [&](DayNumber day, Moment at) {
    return std::binary_search(data.excludedDays.begin(), data.excludedDays.end(), day) ||
           std::binary_search(data.excluded.begin(), data.excluded.end(), at);
  };
  if (!rule.makesStart && !isExcluded(dayOf(data.first), data.firstMoment)) { plain.start = data.first; }

  const auto momentOn = [&](DayNumber day) { return data.momentAt(day * kSecondsPerDay + plain.timeOfDay); };
  plain.firstDay = dayOf(data.first + kSecondsPerDay - 1 - plain.timeOfDay);
  // The very last second there is belongs to no rule that goes on.
  const LocalSeconds last = rule.last == kLastLocalSecond ? rule.last - 1 : rule.last;
  plain.lastDay = dayOf(last - plain.timeOfDay);
  while (rule.until && plain.lastDay >= plain.firstDay && momentOn(plain.lastDay) > *rule.until) { --plain.lastDay; }

  plain.excluded = data.excludedDays;
  for (const Moment at : data.excluded) {
    // Where the clock changes at midnight the day on it may be the one before.
    const DayNumber near = dayOf(clampedLocal(data.zone, at));
    for (const DayNumber day : {near - 1, near}) {
      if (momentOn(day) == at) { plain.excluded.push_back(day); }
    }
  }
  std::sort(plain.excluded.begin(), plain.excluded.end());
  plain.excluded.erase(std::unique(plain.excluded.begin(), plain.excluded.end()), plain.excluded.end());
  return plain;
}

}  // namespace orlocal::store
