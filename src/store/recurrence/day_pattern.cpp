#include "store/recurrence/day_pattern.h"

#include <bit>

#include "store/recurrence/recurrence_rule.h"
#include "store/recurrence/recurrence_set.h"

namespace orlocal::store {
namespace {

/// First to fifth from the front, last to fourth from the back.
constexpr int kMostFromFront = 5, kMostFromBack = 4;
// Where each kind of slots begins.
constexpr int kEveryDaySlot = 0, kWeekDaySlots = 1, kMonthDaySlots = 8, kYearDaySlots = 39;
constexpr int kDaysOfMonth = 31;

/// A weekday's ordinal in the month as one bit of 63.
constexpr std::uint64_t ordinalBit(int weekDay, int ordinal) {
  const int place = ordinal > 0 ? ordinal - 1 : kMostFromFront - ordinal - 1;
  return std::uint64_t{1} << (weekDay * (kMostFromFront + kMostFromBack) + place);
}

std::uint64_t ordinalsOf(const DayParts& day) {
  const int fromFront = (day.inMonth - 1) / 7 + 1;
  const int fromBack = (day.monthLength - day.inMonth) / 7 + 1;
  const std::uint64_t front = ordinalBit(day.weekDay, fromFront);
  return fromBack <= kMostFromBack ? front | ordinalBit(day.weekDay, -fromBack) : front;
}

}  // namespace

DayParts::DayParts(DayNumber day) : number(day), weekDay(weekDayOf(day)) {
  const auto date = dateOf(day);
  year = static_cast<int>(date.year());
  month = static_cast<int>(static_cast<unsigned>(date.month()));
  inMonth = static_cast<int>(static_cast<unsigned>(date.day()));
  monthLength = orlocal::monthLength(year, month);
}

DayPattern DayPattern::onDateOf(DayNumber day) {
  const DayParts parts(day);
  DayPattern pattern;
  pattern.m_months = static_cast<std::uint16_t>(1U << parts.month);
  pattern.m_monthDays = 1U << parts.inMonth;
  return pattern;
}

bool DayPattern::takesPeriod(const DayParts& day) const {
  if (m_interval == 1) { return true; }
  switch (m_unit) {
    case Unit::kDay:
      return (day.number - m_base) % m_interval == 0;
    case Unit::kWeek:
      return (day.number - m_base) / 7 % m_interval == 0;
    case Unit::kMonth:
      return (day.year * 12 + day.month - 1 - m_base) % m_interval == 0;
    case Unit::kYear:
      return (day.year - m_base) % m_interval == 0;
  }
  return false;
}

bool DayPattern::takes(const DayParts& day) const {
  if (m_months != 0 && (m_months >> day.month & 1) == 0) { return false; }
  if ((m_monthDays | m_monthDaysFromEnd) != 0 && (m_monthDays >> day.inMonth & 1) == 0 &&
      (m_monthDaysFromEnd >> (day.monthLength - day.inMonth + 1) & 1) == 0) {
    return false;
  }
  if ((m_weekDays != 0 || m_ordinals != 0) && (m_weekDays >> day.weekDay & 1) == 0 &&
      (m_ordinals & ordinalsOf(day)) == 0) {
    return false;
  }
  return takesPeriod(day);
}

std::array<int, 4> DayPattern::slotsOf(const DayParts& day) {
  return {kEveryDaySlot, kWeekDaySlots + day.weekDay, kMonthDaySlots + day.inMonth - 1,
          kYearDaySlots + (day.month - 1) * kDaysOfMonth + day.inMonth - 1};
}

std::vector<int> DayPattern::slots() const {
  std::vector<int> slots;
  if ((m_monthDays | m_monthDaysFromEnd) != 0) {
    // The last day of a month is the 28th to the 31st, and so on.
    std::uint64_t days = m_monthDays;
    for (std::uint32_t rest = m_monthDaysFromEnd; rest != 0; rest &= rest - 1) {
      const int fromEnd = std::countr_zero(rest);
      for (int length = 28; length <= kDaysOfMonth; ++length) {
        if (length >= fromEnd) { days |= std::uint64_t{1} << (length - fromEnd + 1); }
      }
    }
    for (; days != 0; days &= days - 1) {
      const int day = std::countr_zero(days);
      if (m_months == 0) { slots.push_back(kMonthDaySlots + day - 1); }
      for (std::uint32_t rest = m_months; rest != 0; rest &= rest - 1) {
        slots.push_back(kYearDaySlots + (std::countr_zero(rest) - 1) * kDaysOfMonth + day - 1);
      }
    }
    return slots;
  }
  if (m_weekDays == 0 && m_ordinals == 0) { return {kEveryDaySlot}; }
  for (int weekDay = 0; weekDay < 7; ++weekDay) {
    const std::uint64_t ordinals = m_ordinals >> (weekDay * (kMostFromFront + kMostFromBack));
    if ((m_weekDays >> weekDay & 1) != 0 || (ordinals & (ordinalBit(1, 1) - 1)) != 0) {
      slots.push_back(kWeekDaySlots + weekDay);
    }
  }
  return slots;
}

std::optional<DayPattern> CompiledRule::dayPattern() const {
  const bool counted = m_rare && (!m_rare->positions.empty() || rareDays());
  if (m_scaled || m_perDay != 1 || subDaily() || counted || m_interval > INT32_MAX) { return std::nullopt; }
  DayPattern pattern;
  if (hasOrdinals()) {
    // Without months they count in the year.
    if (m_frequency == Frequency::kYearly && m_months == 0) { return std::nullopt; }
    for (const auto& wanted : m_rare->ordinals) {
      if (wanted.ordinal > kMostFromFront || wanted.ordinal < -kMostFromBack) { return std::nullopt; }
      pattern.m_ordinals |= ordinalBit(wanted.day, wanted.ordinal);
    }
  }
  pattern.m_unit = m_frequency == Frequency::kDaily     ? DayPattern::Unit::kDay
                   : m_frequency == Frequency::kWeekly  ? DayPattern::Unit::kWeek
                   : m_frequency == Frequency::kMonthly ? DayPattern::Unit::kMonth
                                                        : DayPattern::Unit::kYear;
  pattern.m_interval = static_cast<std::int32_t>(m_interval);
  pattern.m_base = m_interval == 1 ? 0 : static_cast<std::int32_t>(m_base);
  pattern.m_weekDays = m_weekDays;
  pattern.m_months = m_months;
  pattern.m_monthDays = m_monthDays;
  pattern.m_monthDaysFromEnd = m_monthDaysFromEnd;
  // With no day at all the start's own comes back: each month, or each year.
  if (m_frequency >= Frequency::kMonthly && !hasMonthDays() && !hasWeekDays()) {
    const DayPattern start = DayPattern::onDateOf(dayOf(m_start));
    pattern.m_monthDays = start.m_monthDays;
    if (m_frequency == Frequency::kYearly && m_months == 0) { pattern.m_months = start.m_months; }
  }
  return pattern;
}

LocalSeconds CompiledRule::timeOfDay() const {
  return std::countr_zero(m_hours) * 3600 + std::countr_zero(m_minutes) * 60 + std::countr_zero(m_seconds);
}

}  // namespace orlocal::store
