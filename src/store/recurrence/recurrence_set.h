#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

#include "store/recurrence/recurrence_rule.h"

namespace orlocal::store {

/// The positions of a mask's bits, in order.
template <class Mask>
struct BitList {
  std::array<std::uint8_t, 64> values{};
  int size = 0;

  void fill(Mask mask) {
    size = 0;
    for (Mask rest = mask; rest != 0; rest &= rest - 1) {
      values[static_cast<std::size_t>(size++)] = static_cast<std::uint8_t>(std::countr_zero(rest));
    }
  }
  int operator[](std::int64_t index) const { return values[static_cast<std::size_t>(index)]; }
};

/// What one period makes: days times hours times minutes times seconds, addressed by position without being listed.
struct CompiledRule::Set {
  std::array<DayNumber, 366> days;  // the first dayCount are set
  int dayCount = 0;
  BitList<std::uint32_t> hours;
  BitList<std::uint64_t> minutes, seconds;
  std::vector<std::int64_t> picked;

  std::int64_t perDay() const { return std::int64_t{hours.size} * minutes.size * seconds.size; }
  std::int64_t size() const { return dayCount * perDay(); }
  void add(DayNumber day) { days[static_cast<std::size_t>(dayCount++)] = day; }
  void addMonth(std::uint32_t mask, DayNumber first) {
    for (; mask != 0; mask &= mask - 1) { add(first + std::countr_zero(mask) - 1); }
  }
  LocalSeconds at(std::int64_t index) const {
    const std::int64_t inDay = index % perDay();
    const std::int64_t inHour = inDay % (std::int64_t{minutes.size} * seconds.size);
    return days[static_cast<std::size_t>(index / perDay())] * kSecondsPerDay +
           hours[inDay / (std::int64_t{minutes.size} * seconds.size)] * 3600 + minutes[inHour / seconds.size] * 60 +
           seconds[inHour % seconds.size];
  }
  /// BYSETPOS: positions from the front and from the back, in order, each once.
  const std::vector<std::int64_t>& pick(const std::vector<int>& positions) {
    picked.clear();
    for (int position : positions) {
      const std::int64_t index = position > 0 ? position - 1 : size() + position;
      if (index >= 0 && index < size()) { picked.push_back(index); }
    }
    std::sort(picked.begin(), picked.end());
    picked.erase(std::unique(picked.begin(), picked.end()), picked.end());
    return picked;
  }
};

/// The times that a rule makes in one period, in order.
struct CompiledRule::Times {
  const Set& set;
  const std::vector<std::int64_t>* picked;  ///< null: all of the set

  std::int64_t size() const { return picked != nullptr ? static_cast<std::int64_t>(picked->size()) : set.size(); }
  LocalSeconds at(std::int64_t i) const {
    return set.at(picked != nullptr ? (*picked)[static_cast<std::size_t>(i)] : i);
  }
  /// How many lie before `time`.
  std::int64_t before(LocalSeconds time) const {
    std::int64_t low = 0;
    for (std::int64_t high = size(); low < high;) {
      const std::int64_t middle = low + (high - low) / 2;
      if (at(middle) < time) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  }
};

template <class Visit>
bool CompiledRule::walkPeriods(LocalSeconds from, LocalSeconds to, ExpansionBudget& budget, const Visit& visit) const {
  Set set;
  set.hours.fill(m_hours);
  set.minutes.fill(m_minutes);
  set.seconds.fill(m_seconds);
  const bool positions = m_rare && !m_rare->positions.empty();
  for (std::int64_t period = periodAt(from); periodStart(period) < to;) {
    if (!budget.step(m_cost)) { return false; }
    period = fill(period, set);
    if (!visit(Times{set, positions ? &set.pick(m_rare->positions) : nullptr})) { return true; }
  }
  return true;
}

}  // namespace orlocal::store
