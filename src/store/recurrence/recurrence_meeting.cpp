#include <algorithm>
#include <bit>
#include <cstdlib>
#include <numeric>

#include "store/recurrence/recurrence_rule.h"
#include "store/recurrence/recurrence_set.h"

// Whether a rule comes at all, and how often, by arithmetic: "30 February" or "week 53 in June" would be looked for to
// the year 9999.
namespace orlocal::store {

namespace {

// Within these years each kind of year comes once: common and leap years that begin on each day of the week, with each
// of the neighbours that they can have. Weeks and days of other years are as in one of them.
constexpr int kFirstYear = 2000, kYears = 28;

}  // namespace

DayNumber CompiledRule::nextDay(DayNumber day) const {
  if (m_months == 0) { return day + 1; }
  const auto date = dateOf(day + 1);
  int year = static_cast<int>(date.year()), month = static_cast<int>(static_cast<unsigned>(date.month()));
  if ((m_months >> month & 1) != 0) { return day + 1; }
  while ((m_months >> month & 1) == 0) {
    if (month++ < 12) { continue; }
    month = 1;
    ++year;
  }
  return dayNumber(year, month, 1);
}

std::uint64_t CompiledRule::costOfPeriod() const {
  const std::uint64_t ordinals = hasOrdinals() ? m_rare->ordinals.size() / 8 : 0;
  const std::uint64_t picked = m_rare ? m_rare->positions.size() / 8 : 0;
  switch (m_frequency) {
    case Frequency::kYearly: {
      const bool dayByDay = rareDays() || (hasWeekDays() && !hasMonthDays() && m_months == 0);
      return (dayByDay ? 200 : 12) * (1 + ordinals) + picked;
    }
    case Frequency::kMonthly:
      return (rareDays() ? 30 : 1) + ordinals + picked;
    case Frequency::kWeekly:
      return (m_filtersDays ? 4 : 1) + picked;
    default:
      return (m_filtersDays ? 3 : 1) + picked;
  }
}

std::optional<bool> CompiledRule::hasDays(ExpansionBudget& budget) const {
  if (!m_filtersDays && !hasOrdinals() && !(m_rare && !m_rare->positions.empty())) { return true; }
  Set set;
  set.hours.fill(m_hours);
  set.minutes.fill(m_minutes);
  set.seconds.fill(m_seconds);
  // A period each of the rule's own size, from which its positions pick.
  const auto any = [&] {
    if (m_rare && !m_rare->positions.empty()) { return !set.pick(m_rare->positions).empty(); }
    return set.size() > 0;
  };
  const DayNumber first = dayNumber(kFirstYear, 1, 1), last = dayNumber(kFirstYear + kYears, 1, 1);
  switch (m_frequency) {
    case Frequency::kYearly:
      for (int year = kFirstYear; year < kFirstYear + kYears; ++year) {
        if (!budget.step(m_cost)) { return std::nullopt; }
        set.dayCount = 0;
        fillYear(year, set);
        if (any()) { return true; }
      }
      return false;
    case Frequency::kMonthly: {
      // With an interval that divides years evenly, only some months are met.
      const std::int64_t apart = std::gcd(m_interval, std::int64_t{12});
      for (std::int64_t month = m_base % apart; month < kYears * 12; month += apart) {
        if (!budget.step(m_cost)) { return std::nullopt; }
        const int year = kFirstYear + static_cast<int>(month / 12), inYear = static_cast<int>(month % 12) + 1;
        const DayNumber begin = dayNumber(year, inYear, 1);
        set.dayCount = 0;
        set.addMonth(monthDays(year, inYear, begin), begin);
        if (any()) { return true; }
      }
      return false;
    }
    case Frequency::kWeekly:
      for (DayNumber week = first - (weekDayOf(first) - m_weekStart + 7) % 7; week < last; week += 7) {
        if (!budget.step(m_cost)) { return std::nullopt; }
        set.dayCount = 0;
        for (int i = 0; i < 7; ++i) {
          if ((m_weekDays >> ((m_weekStart + i) % 7) & 1) != 0 && (!m_filtersDays || passes(week + i, false))) {
            set.add(week + i);
          }
        }
        if (any()) { return true; }
      }
      return false;
    default: {
      // Days that lie whole weeks apart are always the same day of the week.
      const bool sameWeekDay = m_frequency == Frequency::kDaily && m_interval % 7 == 0;
      const int weekDay = weekDayOf(dayOf(m_start));
      for (DayNumber day = first; day < last; day = nextDay(day)) {
        if (!budget.step(m_cost)) { return std::nullopt; }
        if (sameWeekDay && weekDayOf(day) != weekDay) { continue; }
        set.dayCount = 0;
        if (!m_filtersDays || passes(day, false)) { set.add(day); }
        if (set.dayCount > 0 && (subDaily() || any())) { return true; }
      }
      return false;
    }
  }
}

/// Periods shorter than a day come at times of day that lie as far apart as interval and day have in common.
std::int64_t CompiledRule::timesInCycle() const {
  const std::int64_t apart = std::gcd(m_interval * unit(), kSecondsPerDay);
  const std::int64_t begin = m_base % apart;
  const auto meets = [&](std::int64_t time) { return (time - begin) % apart == 0; };
  const std::int64_t perMinute = std::popcount(m_seconds), perHour = std::popcount(m_minutes) * perMinute;
  std::int64_t times = 0;
  for (std::int64_t hour = 0; hour < 24; ++hour) {
    if ((m_hours >> hour & 1) == 0) { continue; }
    if (m_frequency == Frequency::kHourly) {
      times += meets(hour * 3600) ? perHour : 0;
      continue;
    }
    for (std::int64_t minute = 0; minute < 60; ++minute) {
      if ((m_minutes >> minute & 1) == 0) { continue; }
      if (m_frequency == Frequency::kMinutely) {
        times += meets(hour * 3600 + minute * 60) ? perMinute : 0;
        continue;
      }
      for (std::int64_t second = 0; second < 60; ++second) {
        times += (m_seconds >> second & 1) != 0 && meets(hour * 3600 + minute * 60 + second) ? 1 : 0;
      }
    }
  }
  return times;
}

bool CompiledRule::hasTimes() const {
  // The interval may meet none of the hours that the rule names.
  return m_perDay != 0 && (!subDaily() || timesInCycle() > 0);
}

std::optional<CompiledRule::Cycle> CompiledRule::cycle(ExpansionBudget& budget) const {
  if (m_uniform != 0) { return Cycle{1, m_uniform}; }
  const bool otherDays = m_months != 0 || hasMonthDays() || m_rare;
  if (m_frequency > Frequency::kDaily || otherDays) { return Cycle(); }
  if (!budget.step(m_frequency == Frequency::kSecondly ? 2'000 : 50)) { return std::nullopt; }
  // In so many days each of the times of day is met once; and in seven times as many, on each day of the week.
  const std::int64_t step = m_interval * (subDaily() ? unit() : kSecondsPerDay);
  const std::int64_t apart = std::gcd(step, kSecondsPerDay);
  Cycle made{kSecondsPerDay / apart, subDaily() ? timesInCycle() : m_perDay};
  if (m_weekDays != 0) {
    const bool meetAll = step / apart % 7 != 0;
    made.periods *= 7;
    made.times *= meetAll ? std::popcount(m_weekDays) : 0;
  }
  return made;
}

/// Whether its positions pick anything of a period shorter than a day; those have all the same size.
bool CompiledRule::hasPositions() const {
  if (!m_rare || m_rare->positions.empty()) { return true; }
  std::int64_t size = 1;
  if (m_frequency <= Frequency::kHourly && m_frequency >= Frequency::kMinutely) { size = std::popcount(m_seconds); }
  if (m_frequency == Frequency::kHourly) { size *= std::popcount(m_minutes); }
  return std::any_of(m_rare->positions.begin(), m_rare->positions.end(),
                     [&](int position) { return std::abs(position) <= size; });
}

std::optional<bool> CompiledRule::mayMeet(ExpansionBudget& budget) const {
  if (m_scaled) { return true; }
  if (!hasTimes() || (subDaily() && !hasPositions())) { return false; }
  return hasDays(budget);
}

std::optional<std::int64_t> CompiledRule::count(LocalSeconds before, ExpansionBudget& budget) const {
  before = std::min(before, kLastLocalSecond + 1);
  if (before <= m_start) { return 0; }
  std::int64_t counted = 0;
  const auto add = [&](LocalSeconds from, LocalSeconds to) {
    if (m_scaled) {
      return m_scaled->walk(from, to, budget, [&](LocalSeconds) { return ++counted, true; });
    }
    return walkPeriods(from, to, budget, [&](const Times& times) {
      counted += times.before(to) - times.before(from);
      return true;
    });
  };
  LocalSeconds from = m_start;
  const auto same = cycle(budget);
  if (!same) { return std::nullopt; }
  if (const std::int64_t period = periodAt(before - 1); same->times != 0 && period > same->periods) {
    // The first period may be cut by the start, the last one by `before`; the ones between are full.
    if (!add(m_start, periodStart(1))) { return std::nullopt; }
    const std::int64_t full = (period - 1) / same->periods;
    counted += full * same->times;
    from = periodStart(1 + full * same->periods);
  }
  return add(from, before) ? std::optional(counted) : std::nullopt;
}

std::optional<LocalSeconds> CompiledRule::nth(std::int64_t n, ExpansionBudget& budget) const {
  LocalSeconds from = m_start, found = kLastLocalSecond;
  if (m_scaled) {
    const bool done = m_scaled->walk(from, kLastLocalSecond + 1, budget, [&](LocalSeconds time) {
      if (--n > 0) { return true; }
      found = time;
      return false;
    });
    return done ? std::optional(found) : std::nullopt;
  }
  const auto same = cycle(budget);
  if (!same) { return std::nullopt; }
  if (same->times != 0) {
    const auto first = count(periodStart(1), budget);
    if (!first) { return std::nullopt; }
    if (n > *first) {
      const std::int64_t full = (n - *first - 1) / same->times;
      // A period is a second at least, and nothing starts before the year 0.
      if (full > 2 * kLastLocalSecond / (same->periods * m_interval)) { return kLastLocalSecond; }
      n -= *first + full * same->times;
      from = periodStart(1 + full * same->periods);
    }
  }
  const bool done = walkPeriods(from, kLastLocalSecond + 1, budget, [&](const Times& times) {
    const std::int64_t first = times.before(from), here = times.size() - first;
    if (n <= here) { found = std::min(times.at(first + n - 1), kLastLocalSecond); }
    n -= here;
    return n > 0;
  });
  return done ? std::optional(found) : std::nullopt;
}

}  // namespace orlocal::store
