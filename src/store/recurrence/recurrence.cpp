#include "store/recurrence/recurrence.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/recurrence/series_data.h"
#include "store/time/steady_clock.h"

namespace orlocal::store {

bool ExpansionBudget::checkTime() {
  const bool stopped = m_stop != nullptr && m_stop->load(std::memory_order_relaxed);
  if (stopped || std::chrono::steady_clock::now() > m_deadline) { m_steps = 0; }
  return m_steps != 0;
}

namespace {

using std::chrono::microseconds;
using std::chrono::seconds;

/// What one month may hold of a series.
constexpr std::int64_t kMostInMonth = 50'000;
constexpr LocalSeconds kMonth = 31 * kSecondsPerDay;
}  // namespace

Series::Series(std::unique_ptr<const Data> data) : m_data(std::move(data)) {}
Series::Series(Series&&) noexcept = default;
Series& Series::operator=(Series&&) noexcept = default;
Series::~Series() = default;

std::int64_t Series::mostInMonth() const {
  const Data& data = *m_data;
  std::int64_t most = 0;
  for (const Data::Rule& rule : data.rules) {
    // Without the room that is left for clock changes around an end that is a moment.
    const LocalSeconds last = rule.until ? std::min(rule.last, clampedLocal(data.zone, *rule.until) + 3600) : rule.last;
    most += std::min(rule.most, rule.rule.mostInMonth(last));
  }
  // Added ones: the most that come within a month of one of them.
  std::int64_t added = 0;
  for (std::size_t begin = 0, end = 0; end < data.added.size(); ++end) {
    while (data.added[end] - data.added[begin] >= kMonth) { ++begin; }
    added = std::max(added, static_cast<std::int64_t>(end - begin + 1));
  }
  // Long ones reach into the months after theirs.
  const LocalSeconds length =
      data.allDay() ? data.dayCount * kSecondsPerDay : std::chrono::floor<seconds>(data.length).count();
  return most * (length / kMonth + 1) + added;
}

Status Series::checkDensity() const {
  if (mostInMonth() <= kMostInMonth) { return {}; }
  return failure(ErrorCode::kTooLarge,
                 tr("{} has more than 50,000 occurrences in a month, too many to be shown; give its rule a "
                    "longer interval or an earlier end",
                    m_data->name));
}

Result<std::optional<Series::Instance>> Series::at(Moment start, ExpansionBudget& budget) const {
  std::optional<Instance> found;
  ORLOCAL_CHECK(expand(start, start + microseconds(1), budget, [&](const Instance& instance) {
    if (instance.start == start) { found = instance; }
    return !found;
  }));
  return found;
}

Result<std::optional<Series::Instance>> Series::first(ExpansionBudget& budget) const {
  const Data& data = *m_data;
  // Nothing but an added time comes before the start.
  if (data.added.empty() || data.added.front() >= data.first) {
    const auto excluded = data.isExcluded(data.first, data.firstMoment, budget);
    if (!excluded) { return data.overBudget(); }
    if (!*excluded) { return data.instance(data.first, data.firstMoment); }
  }
  std::optional<Instance> found;
  ORLOCAL_CHECK(expand(Moment::min(), Moment::max(), budget, [&](const Instance& instance) {
    found = instance;
    return false;
  }));
  return found;
}

Series::Bounds Series::bounds() const {
  const Data& data = *m_data;
  Bounds bounds{data.firstMoment, std::nullopt};
  if (!data.added.empty()) { bounds.start = std::min(bounds.start, data.momentAt(data.added.front())); }
  const auto goesOn = [](const Data::Rule& rule) { return rule.endless || rule.last == kLastLocalSecond; };
  if (std::any_of(data.rules.begin(), data.rules.end(), goesOn)) { return bounds; }
  const Moment last = data.end() - microseconds(1);
  bounds.end = data.allDay() ? data.momentAt(localSeconds(data.zone.toLocal(last)) + data.dayCount * kSecondsPerDay)
                             : last + data.length;
  return bounds;
}

bool Series::followsViewer() const {
  return m_data->start.kind == CalendarTime::Kind::kDate || m_data->start.kind == CalendarTime::Kind::kFloating;
}

Result<std::int64_t> Series::countBefore(Moment start, std::size_t index, ExpansionBudget& budget) const {
  const Data& data = *m_data;
  if (index >= data.rules.size()) { return failure(ErrorCode::kInvalid, tr("{} has no such rule", data.name)); }
  const Data::Rule& rule = data.rules[index];
  if (start <= data.firstMoment) { return 0; }
  const LocalSeconds around = clampedLocal(data.zone, start);
  const LocalSeconds sure = std::min(around - kClockSlack, rule.last + 1);
  const auto counted = rule.rule.count(sure, budget);
  if (!counted) { return data.overBudget(); }
  const bool makesStart = rule.rule.isScaled() ? rule.rule.makes(data.first, budget) : rule.makesStart;
  std::int64_t total = *counted + (makesStart ? 0 : 1);
  const bool done =
      data.walk(rule, std::max(sure, data.first), around + kClockSlack, budget, [&](LocalSeconds, Moment at) {
        if (at < start) { ++total; }
        return true;
      });
  if (!done) { return data.overBudget(); }
  return total;
}

Moment Series::originalStart(const CalendarTime& recurrenceId) const {
  return m_data->momentAt(m_data->localOf(recurrenceId));
}

CalendarTime Series::recurrenceId(Moment originalStart) const {
  CalendarTime time = m_data->start;
  time.local = m_data->zone.toLocal(originalStart);
  if (m_data->allDay()) { time.local = LocalTime(LocalDay(time.local)); }
  return time;
}

}  // namespace orlocal::store
