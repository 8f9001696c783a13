#pragma once

#include <functional>
#include <memory>

#include "base/result.h"
#include "store/model/model.h"
#include "store/time/civil_days.h"

namespace orlocal::store {

class ExpansionBudget;

/// A rule that counts in another calendar than the Gregorian one, or that moves the days which a month does not have
/// (RFC 7529), tied to its first start. It knows wall-clock time only and makes nothing after the year 2582. Any
/// thread.
///
/// Other calendars have no arithmetic to jump by: what was found once, from the start on, is kept.
class ScaledRule {
 public:
  /// Whether the arithmetic of the Gregorian calendar does not do: weeks and days are the same in all.
  static bool isNeededFor(const RecurrenceRule& rule);
  /// Fails with `kUnsupported` and the reason when such a rule cannot be followed.
  static Status check(const RecurrenceRule& rule);

  /// `rule` was checked. `allDay` leaves out the parts of the day.
  ScaledRule(const RecurrenceRule& rule, LocalSeconds start, bool allDay);
  ~ScaledRule();

  /// As `CompiledRule::walk`.
  bool walk(LocalSeconds from, LocalSeconds to, ExpansionBudget& budget,
            const std::function<bool(LocalSeconds)>& visit) const;

 private:
  struct Found;
  const LocalSeconds m_start;
  const std::unique_ptr<Found> m_found;
};

}  // namespace orlocal::store
