#pragma once

#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <sys/types.h>

#include "host/commands/alarms/alarm_follow.h"
#include "store/time/zone.h"

namespace orlocal::host {

/// Runs a command for each alarm, several at once, so that one that hangs does not keep others from ringing; one that
/// takes too long is ended. What fails is told once and not tried again.
class AlarmRuns : public AlarmTeller {
 public:
  struct Limits {
    std::size_t atOnce = 16;
    std::chrono::seconds longest = std::chrono::minutes(10);
    std::chrono::seconds toEnd{10};  ///< from being asked to end until being ended
  };
  /// A word {} of the command stands for the identifier of the alarm's event or reminder. `err` is borrowed.
  static Result<std::unique_ptr<AlarmRuns>> make(std::vector<std::string> command, const store::Zone& viewer,
                                                 std::ostream& err, const Limits& limits);
  ~AlarmRuns() override;
  AlarmRuns(const AlarmRuns&) = delete;
  AlarmRuns& operator=(const AlarmRuns&) = delete;

  std::size_t room() override;
  void tell(const AlarmNews& news) override;
  void tellMissed(const MissedAlarms& missed) override;
  void tellTrouble(const std::string& sentence) override;

  /// Can be read when `room` may have become more, or something is to be ended.
  int descriptor() const { return m_poll; }
  std::size_t running() const { return m_runs.size(); }
  bool anyFailed() const { return m_failed; }
  /// Takes note of those that have ended, and ends those that take too long.
  void collect();

 private:
  struct Run {
    int handle;  ///< becomes readable when it ends
    std::string about;
    std::chrono::steady_clock::time_point limit;
    bool asked = false;  ///< to end
  };
  AlarmRuns(std::vector<std::string> command, const store::Zone& viewer, std::ostream& err, const Limits& limits)
      : m_command(std::move(command)), m_viewer(viewer), m_err(err), m_limits(limits) {}

  void fail(const std::string& how, const std::string& about);
  void setTimer() const;

  std::vector<std::string> m_command;
  store::Zone m_viewer;
  std::ostream& m_err;
  Limits m_limits;
  std::map<pid_t, Run> m_runs;
  int m_poll = -1, m_timer = -1;
  bool m_failed = false;
};

/// "3 alarms between … and … were missed while nobody watched."
std::string missedText(const MissedAlarms& missed, const store::Zone& viewer);

}  // namespace orlocal::host
