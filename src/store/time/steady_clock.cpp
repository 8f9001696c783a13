#include "store/time/steady_clock.h"

namespace orlocal::store {
namespace {

using std::chrono::seconds;

constexpr seconds kNear(kClockSlack);

/// How far from the wall clock at `moment` a time can lie that is on its other side as a moment: nothing, unless the
/// clock changes nearby.
LocalSeconds clockSlack(const Zone& zone, Moment moment) {
  if (moment < Moment::min() + kNear || moment > Moment::max() - kNear) { return kClockSlack; }
  const int offset = zone.offsetSeconds(moment);
  const bool steady = zone.offsetSeconds(moment - kNear) == offset && zone.offsetSeconds(moment + kNear) == offset;
  return steady ? 1 : kClockSlack;
}

}  // namespace

LocalSeconds clampedLocal(const Zone& zone, Moment moment) {
  constexpr LocalSeconds kFirst = -static_cast<LocalSeconds>(1'000'000'000'000);
  const auto whole = std::chrono::floor<seconds>(moment).time_since_epoch().count();
  if (whole < kFirst) { return kFirst; }
  if (whole > kLastLocalSecond + kClockSlack) { return kLastLocalSecond + kClockSlack; }
  return localSeconds(zone.toLocal(moment));
}

LocalSeconds earliestLocal(const Zone& zone, Moment moment) {
  return clampedLocal(zone, moment) - clockSlack(zone, moment);
}

LocalSeconds latestLocal(const Zone& zone, Moment moment) {
  return clampedLocal(zone, moment) + clockSlack(zone, moment);
}

// Near a change each time is asked for by itself.
void SteadyClock::look(LocalSeconds local) {
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
    m_to = std::chrono::floor<seconds>(next->at).time_since_epoch().count() + m_offset - kClockSlack;
  }
}

}  // namespace orlocal::store
