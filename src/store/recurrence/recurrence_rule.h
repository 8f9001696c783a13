#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "base/result.h"
#include "store/model/model.h"
#include "store/recurrence/day_pattern.h"
#include "store/recurrence/recurrence.h"
#include "store/recurrence/recurrence_scale.h"
#include "store/time/civil_days.h"

namespace orlocal::store {

/// One recurrence rule (RFC 5545, 3.3.10) tied to its first start, as masks and a few rare lists. It knows wall-clock
/// time only; COUNT and UNTIL are its user's business. The first start is not made to belong to it.
class CompiledRule {
 public:
  /// Fails with the reason when no rule can be made of it. `allDay` leaves out the parts of the day.
  static Result<CompiledRule> make(const RecurrenceRule& rule, LocalSeconds start, bool allDay);

  /// Visits what the rule makes in [max(from, start), to), in order, until `visit` returns false. Jumps to `from`.
  /// False when the budget ran out.
  bool walk(LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
            const std::function<bool(LocalSeconds)>& visit) const;

  /// Whether it makes this time; false also when the budget ran out.
  bool makes(LocalSeconds time, ExpansionBudget& budget) const {
    bool made = false;
    walk(time, time + 1, budget, [&](LocalSeconds) { return made = true, false; });
    return made;
  }
  /// Whether it counts in another calendar: then its times are found one after the other.
  bool isScaled() const { return m_scaled != nullptr; }

  /// How many it makes in [start, before); none when the budget ran out. Arithmetic for the plain shapes.
  std::optional<std::int64_t> count(LocalSeconds before, ExpansionBudget& budget) const;
  /// Whether its parts leave any time at all, as far as arithmetic can tell: false is certain, and what is left to be
  /// walked in vain is little. None when the budget ran out.
  std::optional<bool> mayMeet(ExpansionBudget& budget) const;
  /// The n-th (from 1) that it makes; the last second there is when there are fewer. None when the budget ran out.
  std::optional<LocalSeconds> nth(std::int64_t n, ExpansionBudget& budget) const;

  /// How many it makes at most in [start, last] within any 31 days, without looking at which days they are.
  std::int64_t mostInMonth(LocalSeconds last) const;

  /// Whether it may come more than once on one day.
  bool severalADay() const { return m_perDay > 1; }
  /// At most so many come on one day.
  std::int64_t perDay() const { return m_perDay; }
  /// Its days, where they can be told from a day alone; those before its start are not among them, whatever that says.
  std::optional<DayPattern> dayPattern() const;
  /// Seconds after midnight of the first that may come on a day.
  LocalSeconds timeOfDay() const;

 private:
  using Frequency = RecurrenceRule::Frequency;
  struct Set;
  struct Times;
  struct Rare {
    std::vector<int> yearDays, weekNumbers, positions;
    std::vector<RecurrenceRule::WeekDay> ordinals;
  };

  bool subDaily() const { return m_frequency < Frequency::kDaily; }
  std::int64_t unit() const;
  std::int64_t periodAt(LocalSeconds time) const;
  LocalSeconds periodStart(std::int64_t period) const;
  /// Visits the times of each period that touches [from, to), also those outside of it, until `visit` returns false.
  /// Not of a scaled rule. False when the budget ran out.
  template <class Visit>
  bool walkPeriods(LocalSeconds from, LocalSeconds to, ExpansionBudget& budget, const Visit& visit) const;
  /// Fills in the period's set; the next period worth a look is returned.
  std::int64_t fill(std::int64_t period, Set& set) const;
  std::int64_t fillSubDaily(std::int64_t period, Set& set) const;
  std::uint32_t monthDays(int year, int month, DayNumber first) const;
  void fillYear(int year, Set& set) const;
  bool passes(DayNumber day, bool ordinalsInYear) const;
  /// The first day after `day` that does not lie in a month which the rule leaves out.
  DayNumber nextDay(DayNumber day) const;
  std::optional<bool> hasDays(ExpansionBudget& budget) const;
  bool hasTimes() const;
  /// How many times of day a rule below a day makes until its periods begin at the same times of day again.
  std::int64_t timesInCycle() const;
  bool hasPositions() const;
  bool rareDays() const { return m_rare && (!m_rare->yearDays.empty() || !m_rare->weekNumbers.empty()); }
  /// What filling one period costs, in steps.
  std::uint64_t costOfPeriod() const;
  bool weekDayFits(DayNumber day, bool ordinalsInYear) const;
  bool hasWeekDays() const { return m_weekDays != 0 || hasOrdinals(); }
  bool hasOrdinals() const { return m_rare && !m_rare->ordinals.empty(); }
  bool hasMonthDays() const { return (m_monthDays | m_monthDaysFromEnd) != 0; }
  /// How many each full period makes, when that is always the same; 0 otherwise.
  std::int64_t uniformSize() const;
  /// So many periods in a row, wherever they begin, make the same number of times.
  struct Cycle {
    std::int64_t periods = 1;
    std::int64_t times = 0;  ///< 0: there is no such cycle
  };
  std::optional<Cycle> cycle(ExpansionBudget& budget) const;

  Frequency m_frequency = Frequency::kDaily;
  std::uint8_t m_weekDays = 0;
  std::uint8_t m_weekStart = 1;
  bool m_filtersDays = false;
  std::uint16_t m_months = 0;
  std::uint32_t m_hours = 0;
  std::uint32_t m_monthDays = 0, m_monthDaysFromEnd = 0;
  std::uint64_t m_minutes = 0, m_seconds = 0;
  std::int64_t m_interval = 1;
  LocalSeconds m_start = 0;
  std::int64_t m_base = 0;  ///< of period 0: its second, day, month or year
  std::int64_t m_perDay = 1;
  std::int64_t m_uniform = 0;
  std::uint64_t m_cost = 1;  ///< of a period
  std::shared_ptr<const Rare> m_rare;
  std::shared_ptr<const ScaledRule> m_scaled;  ///< makes the times instead
};

}  // namespace orlocal::store
