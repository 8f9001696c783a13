#include "host/commands/alarms/system_alarm_clock.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <utility>

#include <sys/timerfd.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/time/clock.h"

namespace orlocal::host {

Result<std::unique_ptr<SystemAlarmClock>> SystemAlarmClock::make(store::ChangeSignal& signal, std::vector<int> others) {
  const int timer = ::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK);
  if (timer < 0) { return failure(ErrorCode::kIo, tr("No timer for alarms: {}", systemReason(errno))); }
  std::unique_ptr<SystemAlarmClock> clock(new SystemAlarmClock(signal, timer));
  clock->m_descriptors = std::move(others);
  clock->m_descriptors.push_back(signal.descriptor());
  clock->m_descriptors.push_back(timer);
  return clock;
}

SystemAlarmClock::~SystemAlarmClock() { ::close(m_timer); }

Result<Woken> SystemAlarmClock::sleepUntil(store::Moment moment) {
  using std::chrono::nanoseconds;
  using std::chrono::system_clock;
  // Ours may be pinned to another time than the system's.
  const nanoseconds at = (system_clock::now() + (moment - store::now())).time_since_epoch();
  itimerspec wanted{};
  // Nothing at all would switch it off.
  const nanoseconds first = std::max(at, nanoseconds(1));
  wanted.it_value.tv_sec = static_cast<time_t>(first.count() / 1'000'000'000);
  wanted.it_value.tv_nsec = static_cast<long>(first.count() % 1'000'000'000);
  if (::timerfd_settime(m_timer, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &wanted, nullptr) != 0 &&
      errno != ECANCELED) {
    return failure(ErrorCode::kIo, tr("The timer for alarms cannot be set: {}", systemReason(errno)));
  }
  ORLOCAL_TRY(const Woken woken, waitForAnyOf(m_descriptors));
  if (woken != Woken::kByInterruption) { m_signal.drain(); }
  // It fails when the clock was set; either way it waits anew.
  std::uint64_t rung = 0;
  static_cast<void>(!::read(m_timer, &rung, sizeof rung));
  return woken;
}

}  // namespace orlocal::host
