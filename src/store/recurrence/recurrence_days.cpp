#include <algorithm>
#include <bit>

#include "store/recurrence/recurrence_rule.h"
#include "store/recurrence/recurrence_set.h"

// Which days a period of a rule has (RFC 5545, 3.3.10, the table of expanding and limiting parts).
namespace orlocal::store {

namespace {

std::uint32_t reversed(std::uint32_t fromEnd, int length) {
  std::uint32_t days = 0;
  for (std::uint32_t rest = fromEnd; rest != 0; rest &= rest - 1) {
    const int back = std::countr_zero(rest);  // 1 is the last day
    if (back <= length) { days |= 1U << (length - back + 1); }
  }
  return days;
}

bool contains(const std::vector<int>& values, int value) {  // sorted
  return std::binary_search(values.begin(), values.end(), value);
}

}  // namespace

bool CompiledRule::weekDayFits(DayNumber day, bool ordinalsInYear) const {
  if (!hasWeekDays()) { return true; }
  const int weekDay = weekDayOf(day);
  if ((m_weekDays >> weekDay & 1) != 0) { return true; }
  if (!hasOrdinals()) { return false; }
  const auto date = dateOf(day);
  const int year = static_cast<int>(date.year());
  const int month = static_cast<int>(static_cast<unsigned>(date.month()));
  const int length = ordinalsInYear ? yearLength(year) : monthLength(year, month);
  const int place = ordinalsInYear ? static_cast<int>(day - dayNumber(year, 1, 1))
                                   : static_cast<int>(static_cast<unsigned>(date.day())) - 1;
  // Any seven days in a row have each weekday once, so the place alone says which one of its weekday a day is.
  return std::any_of(m_rare->ordinals.begin(), m_rare->ordinals.end(), [&](const RecurrenceRule::WeekDay& wanted) {
    if (wanted.day != weekDay) { return false; }
    return wanted.ordinal > 0 ? place / 7 + 1 == wanted.ordinal : -((length - 1 - place) / 7 + 1) == wanted.ordinal;
  });
}

bool CompiledRule::passes(DayNumber day, bool ordinalsInYear) const {
  const auto date = dateOf(day);
  const int year = static_cast<int>(date.year());
  const int month = static_cast<int>(static_cast<unsigned>(date.month()));
  if (m_months != 0 && (m_months >> month & 1) == 0) { return false; }
  if (hasMonthDays()) {
    const int inMonth = static_cast<int>(static_cast<unsigned>(date.day()));
    const int back = monthLength(year, month) - inMonth + 1;
    if ((m_monthDays >> inMonth & 1) == 0 && (m_monthDaysFromEnd >> back & 1) == 0) { return false; }
  }
  if (m_rare && !m_rare->yearDays.empty()) {
    const int inYear = static_cast<int>(day - dayNumber(year, 1, 1)) + 1;
    if (!contains(m_rare->yearDays, inYear) && !contains(m_rare->yearDays, inYear - yearLength(year) - 1)) {
      return false;
    }
  }
  if (m_rare && !m_rare->weekNumbers.empty()) {
    const WeekNumber week = weekNumberOf(day, m_weekStart);
    if (!contains(m_rare->weekNumbers, week.fromFront) && !contains(m_rare->weekNumbers, week.fromBack)) {
      return false;
    }
  }
  return weekDayFits(day, ordinalsInYear);
}

/// Bit n is the n-th of the month.
std::uint32_t CompiledRule::monthDays(int year, int month, DayNumber first) const {
  if (m_months != 0 && (m_months >> month & 1) == 0) { return 0; }
  const int length = monthLength(year, month);
  const std::uint32_t all = (length == 31 ? 0xFFFFFFFEU : (2U << length) - 2U);
  const int firstWeekDay = weekDayOf(first);
  std::uint32_t days = 0;
  if (hasMonthDays()) {
    days = (m_monthDays | reversed(m_monthDaysFromEnd, length)) & all;
  } else if (!hasWeekDays()) {
    const int day = static_cast<int>(static_cast<unsigned>(dateOf(dayOf(m_start)).day()));
    days = (1U << day) & all;  // the 31st: months that have none are left out, not moved
  }
  if (hasWeekDays()) {
    std::uint32_t fitting = 0;
    for (int weekDay = 0; weekDay < 7; ++weekDay) {
      if ((m_weekDays >> weekDay & 1) != 0) {
        for (int day = (weekDay - firstWeekDay + 7) % 7 + 1; day <= length; day += 7) { fitting |= 1U << day; }
      }
    }
    if (hasOrdinals()) {
      for (const auto& wanted : m_rare->ordinals) {
        const int earliest = (wanted.day - firstWeekDay + 7) % 7 + 1;
        const int last = earliest + (length - earliest) / 7 * 7;
        const int day = wanted.ordinal > 0 ? earliest + (wanted.ordinal - 1) * 7 : last + (wanted.ordinal + 1) * 7;
        if (day >= 1 && day <= length) { fitting |= 1U << day; }
      }
    }
    // Beside days of the month the weekdays limit, alone they expand: Friday the 13th is not every Friday.
    days = hasMonthDays() ? days & fitting : fitting;
  }
  if (rareDays()) {
    for (std::uint32_t rest = days; rest != 0; rest &= rest - 1) {
      if (const int day = std::countr_zero(rest); !passes(first + day - 1, false)) { days &= ~(1U << day); }
    }
  }
  return days;
}

void CompiledRule::fillYear(int year, Set& set) const {
  const bool byMonths = m_months != 0 || hasMonthDays() || !hasWeekDays();
  // "The 20th Monday" counts in the months that are named, and in the year when none are.
  const bool ordinalsInYear = hasOrdinals() && m_months == 0;
  if (!byMonths || rareDays() || ordinalsInYear) {
    // Also by week numbers only days of this very year: week 1 may begin in December, and its days there are met with
    // the year that they lie in. So no day belongs to two periods, and periods follow each other in order.
    const DayNumber first = dayNumber(year, 1, 1);
    for (int i = 0; i < yearLength(year); ++i) {
      if (passes(first + i, ordinalsInYear)) { set.add(first + i); }
    }
    return;
  }
  const int startMonth = static_cast<int>(static_cast<unsigned>(dateOf(dayOf(m_start)).month()));
  std::uint32_t months = m_months;
  // A day of the month alone is that day of every month; with no day at all the start's own comes back each year.
  if (months == 0) { months = hasMonthDays() ? 0x1FFEU : 1U << startMonth; }
  for (; months != 0; months &= months - 1) {
    const int month = std::countr_zero(months);
    const DayNumber first = dayNumber(year, month, 1);
    set.addMonth(monthDays(year, month, first), first);
  }
}

// `count` and `nth` multiply it by periods that nobody looks at, so it is exact or 0: whatever depends on how long a
// month or year is, or on where the weekdays lie in it, is 0 and gets walked.
std::int64_t CompiledRule::uniformSize() const {
  if (rareDays() || (m_rare && !m_rare->positions.empty())) { return 0; }
  const auto date = dateOf(dayOf(m_start));
  const auto startDay = static_cast<unsigned>(date.day());
  // Days of the month that every month has.
  const auto inEveryMonth = [&]() -> int {
    if (hasMonthDays() && hasWeekDays()) { return 0; }
    if (hasMonthDays()) {
      // The 15th and the 14th from the end are one day in a February of 28 days.
      const bool both = m_monthDays != 0 && m_monthDaysFromEnd != 0;
      const bool fit = ((m_monthDays | m_monthDaysFromEnd) >> 29) == 0;
      return fit && !both ? std::popcount(m_monthDays | m_monthDaysFromEnd) : 0;
    }
    if (hasWeekDays()) {
      // Months have four or five of a weekday, so the first from the front and the fourth from the back may be one day.
      if (m_weekDays != 0 || m_rare->ordinals.size() != 1) { return 0; }
      return std::abs(m_rare->ordinals.front().ordinal) <= 4 ? 1 : 0;
    }
    return startDay <= 28 ? 1 : 0;
  };
  switch (m_frequency) {
    case Frequency::kYearly:
      if (hasOrdinals() && m_months == 0) { return 0; }
      if (m_months == 0 && hasWeekDays()) { return 0; }
      return m_perDay * inEveryMonth() * (m_months != 0 ? std::popcount(m_months) : hasMonthDays() ? 12 : 1);
    case Frequency::kMonthly:
      return m_months != 0 ? 0 : m_perDay * inEveryMonth();
    case Frequency::kWeekly:
      return m_filtersDays ? 0 : m_perDay * std::popcount(m_weekDays);
    case Frequency::kDaily:
      return m_filtersDays ? 0 : m_perDay;
    default: {
      // The period is shorter than what such a part chooses from: some periods would be full and others empty.
      constexpr std::uint64_t kAllSixty = (std::uint64_t{1} << 60) - 1;
      if (m_filtersDays || m_hours != (1U << 24) - 1) { return 0; }
      if (m_frequency == Frequency::kHourly) {
        return std::int64_t{std::popcount(m_minutes)} * std::popcount(m_seconds);
      }
      if (m_minutes != kAllSixty) { return 0; }
      if (m_frequency == Frequency::kMinutely) { return std::popcount(m_seconds); }
      return m_seconds == kAllSixty ? 1 : 0;
    }
  }
}

}  // namespace orlocal::store
