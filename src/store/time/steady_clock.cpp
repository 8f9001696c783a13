#include "store/time/steady_clock.h"

namespace orlocal::store {

// Within this much of a change each time is asked for by itself: no clock changes by more.
void SteadyClock::look(LocalSeconds local) {
  constexpr std::chrono::seconds kNear(26 * 3600);
  const Moment at = m_zone.toMoment(localTime(local));
  const auto next = m_zone.changeAfter(at - kNear);
  m_steady = !next || next->at > at + kNear;
  m_offset = m_zone.offsetSeconds(at);
  m_from = local;
  if (!m_steady) {
    m_to = local + 3600;
  } else if (!next) {
    m_to = kLastLocalSecond + 1;
  } else {
    m_to = std::chrono::floor<std::chrono::seconds>(next->at).time_since_epoch().count() + m_offset -
           std::chrono::seconds(kNear).count();
  }
}

}  // namespace orlocal::store
