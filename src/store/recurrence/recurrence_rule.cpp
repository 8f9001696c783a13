#include "store/recurrence/recurrence_rule.h"

#include <algorithm>
#include <bit>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/recurrence/recurrence_set.h"

namespace orlocal::store {

namespace {

Result<void> checkRange(const std::vector<int>& values, int low, int high, bool negativeToo, const char* part) {
  for (int value : values) {
    const int magnitude = negativeToo && value < 0 ? -value : value;
    if (magnitude < low || magnitude > high) {
      return failure(ErrorCode::kInvalid, tr("{} of the rule has {}, which is out of range", part, value));
    }
  }
  return {};
}

Result<void> check(const RecurrenceRule& rule) {
  if (rule.interval < 1) { return failure(ErrorCode::kInvalid, tr("INTERVAL of the rule is below 1")); }
  if (rule.count && *rule.count < 1) { return failure(ErrorCode::kInvalid, tr("COUNT of the rule is below 1")); }
  for (const auto& day : rule.byDay) {
    if (day.day < 0 || day.day > 6 || day.ordinal < -53 || day.ordinal > 53) {
      return failure(ErrorCode::kInvalid, tr("BYDAY of the rule is out of range"));
    }
  }
  Result<void> status = checkRange(rule.bySecond, 0, 60, false, "BYSECOND");
  if (status) { status = checkRange(rule.byMinute, 0, 59, false, "BYMINUTE"); }
  if (status) { status = checkRange(rule.byHour, 0, 23, false, "BYHOUR"); }
  if (status) { status = checkRange(rule.byMonthDay, 1, 31, true, "BYMONTHDAY"); }
  // Years of other calendars have up to thirteen months.
  const bool scaled = !rule.scale.empty();
  if (status) { status = checkRange(rule.byYearDay, 1, scaled ? 385 : 366, true, "BYYEARDAY"); }
  if (status) { status = checkRange(rule.byWeekNumber, 1, scaled ? 55 : 53, true, "BYWEEKNO"); }
  if (status) { status = checkRange(rule.byMonth, 1, scaled ? 13 : 12, false, "BYMONTH"); }
  if (status) { status = checkRange(rule.byLeapMonth, 1, 13, false, "BYMONTH"); }
  if (status) { status = checkRange(rule.bySetPosition, 1, 366, true, "BYSETPOS"); }
  return status;
}

/// Each once: a list may name a value as often as it likes.
template <class T>
std::vector<T> distinct(std::vector<T> values) {
  std::sort(values.begin(), values.end());
  values.erase(std::unique(values.begin(), values.end()), values.end());
  return values;
}

template <class Mask>
Mask maskOf(const std::vector<int>& values, int orElse) {
  Mask mask = 0;
  for (int value : values) { mask |= static_cast<Mask>(Mask{1} << value); }
  return mask != 0 ? mask : static_cast<Mask>(Mask{1} << orElse);
}

/// When steps of `interval` through circles of `size` places meet the same ones in each circle: leaves only these in
/// the mask, makes the interval one of circles, and says so. `place` is where the steps begin.
template <class Mask>
bool closeCircle(Mask& mask, int size, int place, std::int64_t& interval) {
  const bool within = size % interval == 0;
  if (!within && interval % size != 0) { return false; }
  const int step = within ? static_cast<int>(interval) : size;
  Mask met = 0;
  for (int at = place % step; at < size; at += step) { met |= static_cast<Mask>(Mask{1} << at); }
  mask &= met;
  interval = within ? 1 : interval / size;
  return true;
}

}  // namespace

Result<CompiledRule> CompiledRule::make(const RecurrenceRule& rule, LocalSeconds start, bool allDay) {
  ORLOCAL_CHECK(check(rule));
  CompiledRule made;
  made.m_frequency = rule.frequency;
  made.m_interval = rule.interval;
  made.m_start = start;
  made.m_weekStart = static_cast<std::uint8_t>(rule.weekStart.value_or(1));
  if (allDay && made.subDaily()) {
    return failure(ErrorCode::kInvalid,
                   tr("the rule repeats by hours, minutes or seconds, which whole days cannot do"));
  }

  const int second = static_cast<int>(start - floorDiv(start, 60) * 60);
  const int minute = static_cast<int>(floorDiv(start, 60) - floorDiv(start, 3600) * 60);
  const int hour = static_cast<int>(floorDiv(start, 3600) - floorDiv(start, kSecondsPerDay) * 24);
  std::vector<int> seconds = rule.bySecond;
  for (int& value : seconds) {
    value = std::min(value, 59);  // a leap second shows as the one before it
  }
  const std::vector<int> none;
  const bool hourly = made.m_frequency == Frequency::kHourly;
  made.m_hours = maskOf<std::uint32_t>(allDay ? none : rule.byHour, hour);
  made.m_minutes = maskOf<std::uint64_t>(allDay ? none : rule.byMinute, minute);
  made.m_seconds = maskOf<std::uint64_t>(allDay ? none : seconds, second);
  constexpr std::uint64_t kAllSixty = (std::uint64_t{1} << 60) - 1;
  if (made.subDaily() && rule.byHour.empty()) { made.m_hours = (1U << 24) - 1; }
  if (made.subDaily() && !hourly && rule.byMinute.empty()) { made.m_minutes = kAllSixty; }
  if (made.m_frequency == Frequency::kSecondly && rule.bySecond.empty()) { made.m_seconds = kAllSixty; }

  for (int month : rule.byMonth) { made.m_months |= static_cast<std::uint16_t>(1U << month); }
  for (int day : rule.byMonthDay) { (day > 0 ? made.m_monthDays : made.m_monthDaysFromEnd) |= 1U << std::abs(day); }
  Rare rare{distinct(rule.byYearDay), distinct(rule.byWeekNumber), distinct(rule.bySetPosition), {}};
  const bool ordinalsCount = made.m_frequency >= Frequency::kMonthly;
  for (const auto& day : rule.byDay) {
    if (day.ordinal == 0 || !ordinalsCount) {
      made.m_weekDays |= static_cast<std::uint8_t>(1U << day.day);
    } else {
      rare.ordinals.push_back(day);
    }
  }
  rare.ordinals = distinct(std::move(rare.ordinals));
  // What comes at the same times each day is a daily rule with these times, and every Monday a weekly one: so both are
  // counted by arithmetic, and walked without looking at what lies between.
  if (rare.positions.empty()) {
    if (made.m_frequency == Frequency::kSecondly && closeCircle(made.m_seconds, 60, second, made.m_interval)) {
      made.m_frequency = Frequency::kMinutely;
    }
    if (made.m_frequency == Frequency::kMinutely && closeCircle(made.m_minutes, 60, minute, made.m_interval)) {
      made.m_frequency = Frequency::kHourly;
    }
    if (made.m_frequency == Frequency::kHourly && closeCircle(made.m_hours, 24, hour, made.m_interval)) {
      made.m_frequency = Frequency::kDaily;
    }
    const bool otherDays =
        made.m_months != 0 || made.hasMonthDays() || !rare.yearDays.empty() || !rare.weekNumbers.empty();
    if (made.m_frequency == Frequency::kDaily && made.m_interval == 1 && made.m_weekDays != 0 && !otherDays) {
      made.m_frequency = Frequency::kWeekly;
    }
  }
  const DayNumber firstDay = dayOf(start);
  if (made.m_frequency == Frequency::kWeekly && made.m_weekDays == 0) {
    made.m_weekDays = static_cast<std::uint8_t>(1U << weekDayOf(firstDay));
  }
  // "Week 20" alone means the weekday of the first start in it.
  if (made.m_frequency == Frequency::kYearly && !rare.weekNumbers.empty() && rule.byDay.empty() &&
      rule.byMonthDay.empty() && rule.byYearDay.empty()) {
    made.m_weekDays = static_cast<std::uint8_t>(1U << weekDayOf(firstDay));
  }
  const bool plainWeekly = made.m_frequency == Frequency::kWeekly;
  made.m_filtersDays = made.m_months != 0 || made.hasMonthDays() || !rare.yearDays.empty() ||
                       !rare.weekNumbers.empty() || (made.m_weekDays != 0 && !plainWeekly);
  if (!rare.yearDays.empty() || !rare.weekNumbers.empty() || !rare.positions.empty() || !rare.ordinals.empty()) {
    made.m_rare = std::make_shared<const Rare>(std::move(rare));
  }

  const auto date = dateOf(firstDay);
  switch (made.m_frequency) {
    case Frequency::kYearly:
      made.m_base = static_cast<int>(date.year());
      break;
    case Frequency::kMonthly:
      made.m_base = static_cast<int>(date.year()) * 12 + static_cast<int>(static_cast<unsigned>(date.month())) - 1;
      break;
    case Frequency::kWeekly:
      made.m_base = firstDay - (weekDayOf(firstDay) - made.m_weekStart + 7) % 7;
      break;
    case Frequency::kDaily:
      made.m_base = firstDay;
      break;
    default:
      made.m_base = floorDiv(start, made.unit()) * made.unit();
      break;
  }
  made.m_perDay =
      std::int64_t{std::popcount(made.m_hours)} * std::popcount(made.m_minutes) * std::popcount(made.m_seconds);
  made.m_uniform = made.uniformSize();
  made.m_cost = made.costOfPeriod();
  if (ScaledRule::isNeededFor(rule)) {
    ORLOCAL_CHECK(ScaledRule::check(rule));
    made.m_uniform = 0;
    made.m_scaled = std::make_shared<const ScaledRule>(rule, start, allDay);
  }
  return made;
}

std::int64_t CompiledRule::unit() const {
  switch (m_frequency) {
    case Frequency::kSecondly:
      return 1;
    case Frequency::kMinutely:
      return 60;
    case Frequency::kHourly:
      return 3600;
    case Frequency::kWeekly:
      return 7;
    default:
      return 1;
  }
}

std::int64_t CompiledRule::periodAt(LocalSeconds time) const {
  if (time <= m_start) { return 0; }
  const DayNumber day = dayOf(time);
  std::int64_t distance = 0;
  switch (m_frequency) {
    case Frequency::kYearly:
      distance = static_cast<int>(dateOf(day).year()) - m_base;
      break;
    case Frequency::kMonthly: {
      const auto date = dateOf(day);
      distance =
          static_cast<int>(date.year()) * 12 + static_cast<int>(static_cast<unsigned>(date.month())) - 1 - m_base;
      break;
    }
    case Frequency::kWeekly:
    case Frequency::kDaily:
      distance = (day - m_base) / unit();
      break;
    default:
      distance = (time - m_base) / unit();
      break;
  }
  return distance / m_interval;
}

LocalSeconds CompiledRule::periodStart(std::int64_t period) const {
  const std::int64_t at = m_base + period * m_interval * unit();
  switch (m_frequency) {
    case Frequency::kYearly:
      return at > 9999 ? kLastLocalSecond + 1 : dayNumber(static_cast<int>(at), 1, 1) * kSecondsPerDay;
    case Frequency::kMonthly:
      if (at >= 10000 * 12) { return kLastLocalSecond + 1; }
      return dayNumber(static_cast<int>(at / 12), static_cast<int>(at % 12) + 1, 1) * kSecondsPerDay;
    case Frequency::kWeekly:
    case Frequency::kDaily:
      return at > dayOf(kLastLocalSecond) ? kLastLocalSecond + 1 : at * kSecondsPerDay;
    default:
      return at;
  }
}

std::int64_t CompiledRule::fillSubDaily(std::int64_t period, Set& set) const {
  const LocalSeconds at = m_base + period * m_interval * unit();
  const DayNumber day = dayOf(at);
  const int inDay = static_cast<int>(at - day * kSecondsPerDay);
  // The first period that does not begin before `time`.
  const auto periodFrom = [&](LocalSeconds time) {
    const std::int64_t step = m_interval * unit();
    return std::max(period + 1, (time - m_base + step - 1) / step);
  };
  if (m_filtersDays && !passes(day, false)) { return periodFrom(nextDay(day) * kSecondsPerDay); }
  if ((m_hours >> (inDay / 3600) & 1) == 0) { return periodFrom(at - inDay % 3600 + 3600); }
  const int minute = inDay / 60 % 60;
  if (m_frequency != Frequency::kHourly && (m_minutes >> minute & 1) == 0) { return periodFrom(at - inDay % 60 + 60); }
  if (m_frequency == Frequency::kSecondly && (m_seconds >> (inDay % 60) & 1) == 0) { return period + 1; }
  set.add(day);
  set.hours.fill(1U << (inDay / 3600));
  if (m_frequency != Frequency::kHourly) { set.minutes.fill(std::uint64_t{1} << minute); }
  if (m_frequency == Frequency::kSecondly) { set.seconds.fill(std::uint64_t{1} << (inDay % 60)); }
  return period + 1;
}

std::int64_t CompiledRule::fill(std::int64_t period, Set& set) const {
  set.dayCount = 0;
  const std::int64_t at = m_base + period * m_interval * unit();
  switch (m_frequency) {
    case Frequency::kYearly:
      fillYear(static_cast<int>(at), set);
      break;
    case Frequency::kMonthly: {
      const int year = static_cast<int>(at / 12), month = static_cast<int>(at % 12) + 1;
      const DayNumber first = dayNumber(year, month, 1);
      set.addMonth(monthDays(year, month, first), first);
      break;
    }
    case Frequency::kWeekly:
      for (int i = 0; i < 7; ++i) {
        if ((m_weekDays >> ((m_weekStart + i) % 7) & 1) != 0 && (!m_filtersDays || passes(at + i, false))) {
          set.add(at + i);
        }
      }
      break;
    case Frequency::kDaily:
      if (!m_filtersDays || passes(at, false)) {
        set.add(at);
        break;
      }
      return std::max(period + 1, (nextDay(at) - m_base + m_interval - 1) / m_interval);
    default:
      return fillSubDaily(period, set);
  }
  return period + 1;
}

bool CompiledRule::walk(LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
                        const std::function<bool(LocalSeconds)>& visit) const {
  from = std::max(from, m_start);
  to = std::min(to, kLastLocalSecond + 1);
  if (m_scaled) { return m_scaled->walk(from, to, budget, visit); }
  bool enough = true;
  const bool walked = walkPeriods(from, to, budget, [&](const Times& times) {
    // A dense period is entered where `from` lies, not walked up to it.
    bool another = false;
    for (std::int64_t i = times.before(from); i < times.size(); ++i) {
      const LocalSeconds time = times.at(i);
      if (time >= to) { return false; }
      enough = !std::exchange(another, true) || budget.step();
      if (!enough || !visit(time)) { return false; }
    }
    return true;
  });
  return walked && enough;
}

std::int64_t CompiledRule::mostInMonth(LocalSeconds last) const {
  constexpr std::int64_t kDays = 31;
  // Per period of the rule's own size, then how many of those fit into a month or into what there is of the rule.
  std::int64_t each = m_perDay, unitSeconds = kSecondsPerDay;
  switch (m_frequency) {
    case Frequency::kSecondly:
      each = unitSeconds = 1;
      break;
    case Frequency::kMinutely:
      each = std::popcount(m_seconds);
      unitSeconds = 60;
      break;
    case Frequency::kHourly:
      each = std::int64_t{std::popcount(m_minutes)} * std::popcount(m_seconds);
      unitSeconds = 3600;
      break;
    case Frequency::kDaily:
      break;
    case Frequency::kWeekly:
      each *= std::popcount(m_weekDays);
      unitSeconds *= 7;
      break;
    default: {
      const int named = std::popcount(m_monthDays) + std::popcount(m_monthDaysFromEnd);
      const bool oneDay =
          named == 0 && !hasWeekDays() && (!m_rare || (m_rare->yearDays.empty() && m_rare->weekNumbers.empty()));
      each *= oneDay ? 1 : named != 0 ? named : kDays;
      unitSeconds *= kDays;
      break;
    }
  }
  if (m_rare && !m_rare->positions.empty()) {
    each = std::min(each, static_cast<std::int64_t>(m_rare->positions.size()));
  }
  const std::int64_t step = unitSeconds * (m_frequency < Frequency::kMonthly ? m_interval : 1);
  const std::int64_t reach = std::min(std::max<LocalSeconds>(last - m_start, 0), kDays * kSecondsPerDay - 1);
  const std::int64_t perMinute = std::popcount(m_seconds), perHour = std::popcount(m_minutes) * perMinute;
  return std::min({(reach / step + 1) * each, (reach / kSecondsPerDay + 1) * m_perDay, (reach / 3600 + 1) * perHour,
                   (reach / 60 + 1) * perMinute});
}

}  // namespace orlocal::store
