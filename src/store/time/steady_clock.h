#pragma once

#include "store/time/civil_days.h"
#include "store/time/zone.h"

namespace orlocal::store {

/// Within this much of a change of a zone's clock a time on it may lie on the other side of a moment: no change skips
/// or repeats more than a day (Samoa skipped one in 2011); with a little to spare.
constexpr LocalSeconds kClockSlack = kSecondsPerDay + 7200;

/// On the wall clock; moments that are no date count as far away.
LocalSeconds clampedLocal(const Zone& zone, Moment moment);
/// No time of the wall clock before the first, nor after the second, is at `moment`: the clock at `moment`, or some way
/// from it where the clock changes nearby.
LocalSeconds earliestLocal(const Zone& zone, Moment moment);
LocalSeconds latestLocal(const Zone& zone, Moment moment);

/// A zone's clock for who reads many times that lie near each other: between two changes of the clock a time is its
/// moment by subtraction. Gives what `Zone::toMoment` gives. One thread.
class SteadyClock {
 public:
  explicit SteadyClock(Zone zone) : m_zone(zone) {}

  Moment toMoment(LocalSeconds local) {
    if (local < m_from || local >= m_to) { look(local); }
    return m_steady ? Moment(std::chrono::seconds(local - m_offset)) : m_zone.toMoment(localTime(local));
  }

 private:
  void look(LocalSeconds local);

  Zone m_zone;
  LocalSeconds m_from = 0, m_to = 0;  ///< what was looked at: [from, to)
  bool m_steady = false;              ///< whether the clock does not change there
  LocalSeconds m_offset = 0;
};

}  // namespace orlocal::store
