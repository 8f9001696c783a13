#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <vector>

#include "store/time/civil_days.h"

namespace orlocal::store {

/// A date taken apart, once for the many patterns that are asked about it.
struct DayParts {
  explicit DayParts(DayNumber day);

  DayNumber number;
  int year, month, inMonth, monthLength;
  int weekDay;  ///< 0 Sunday to 6 Saturday
};

/// The days of a rule that comes at most once on a day, told from a day alone: nothing is expanded. Most rules are of
/// this kind; `CompiledRule::dayPattern` gives it for those that are. 32 bytes.
///
/// Each pattern stands in a few of `kSlots` slots (a weekday, a day of the month, a date of the year, every day), and a
/// day that it takes shares exactly one of them. So who keeps many patterns by their slots finds those of a day without
/// looking at the others.
class DayPattern {
 public:
  static constexpr int kSlots = 1 + 7 + 31 + 12 * 31;
  /// Every slot that a day has: one of each kind.
  static std::array<int, 4> slotsOf(const DayParts& day);

  /// That takes every day.
  DayPattern() = default;
  /// That takes this date of every year.
  static DayPattern onDateOf(DayNumber day);

  /// Whether the rule comes on `day`, which does not lie before its first one.
  bool takes(const DayParts& day) const;
  /// The slots that it stands in, each once.
  std::vector<int> slots() const;

  /// In no order of meaning.
  friend auto operator<=>(const DayPattern&, const DayPattern&) = default;

 private:
  friend class CompiledRule;
  enum class Unit : std::uint8_t { kDay, kWeek, kMonth, kYear };

  bool takesPeriod(const DayParts& day) const;

  // Each mask leaves days out; one that is 0 leaves none out.
  Unit m_unit = Unit::kDay;
  std::uint8_t m_weekDays = 0;    ///< bit 0 is Sunday
  std::uint16_t m_months = 0;     ///< bit 1 is January
  std::int32_t m_interval = 1;    ///< in units
  std::int32_t m_base = 0;        ///< of the first period: its day, month (of the year 0) or year; 0 when each counts
  std::uint32_t m_monthDays = 0;  ///< bit 1 is the first
  std::uint32_t m_monthDaysFromEnd = 0;  ///< bit 1 is the last
  std::uint64_t m_ordinals = 0;          ///< weekdays of a month, beside `m_weekDays`: see `ordinalBit`
};

}  // namespace orlocal::store
