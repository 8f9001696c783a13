#pragma once

#include <memory>
#include <vector>

#include "host/commands/alarms/alarm_follow.h"
#include "store/file/change_signal.h"

namespace orlocal::host {

/// The system's clock: it wakes when the machine wakes, and when somebody sets it.
class SystemAlarmClock : public AlarmClock {
 public:
  /// `signal` is borrowed; `others` are descriptors that wake when they can be read.
  static Result<std::unique_ptr<SystemAlarmClock>> make(store::ChangeSignal& signal, std::vector<int> others);
  ~SystemAlarmClock() override;
  SystemAlarmClock(const SystemAlarmClock&) = delete;
  SystemAlarmClock& operator=(const SystemAlarmClock&) = delete;

  Result<Woken> sleepUntil(store::Moment moment) override;

 private:
  SystemAlarmClock(store::ChangeSignal& signal, int timer) : m_signal(signal), m_timer(timer) {}

  store::ChangeSignal& m_signal;
  int m_timer;
  std::vector<int> m_descriptors;
};

}  // namespace orlocal::host
