#include "host/commands/alarms/alarm_watch.h"

#include <array>
#include <limits>
#include <memory>
#include <ostream>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/alarms/alarm_follow.h"
#include "host/commands/alarms/alarm_runs.h"
#include "host/commands/alarms/alarm_text.h"
#include "host/commands/alarms/system_alarm_clock.h"
#include "host/commands/command_line/change_wait.h"
#include "host/commands/command_line/interruption.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/day_words.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

/// A line for each.
class AlarmPrinter : public AlarmTeller {
 public:
  AlarmPrinter(CommandContext& context, const store::Zone& viewer) : m_context(context), m_viewer(viewer) {}

  // What is written nowhere stays untold, for the next one; that something was lost is said when the command ends.
  std::size_t room() override { return isOver() ? 0 : std::numeric_limits<std::size_t>::max(); }
  bool isOver() const override { return !m_context.streams.out; }
  void tell(const AlarmNews& news) override {
    if (m_context.options.json) {
      print(alarmNewsJson(news, m_viewer));
    } else {
      m_context.streams.out << alarmNewsLine(news, m_viewer, store::now()) << std::endl;
    }
  }
  void tellMissed(const MissedAlarms& missed) override {
    if (m_context.options.json) {
      print({{"missed", missed.count},
             {"from", isoMoment(missed.from, m_viewer)},
             {"to", isoMoment(missed.to, m_viewer)}});
    } else {
      m_context.streams.out << missedText(missed, m_viewer) << std::endl;
    }
  }
  void tellTrouble(const std::string& sentence) override { host::tellTrouble(m_context.streams.err, sentence); }

 private:
  void print(const nlohmann::json& json) {
    m_context.streams.out << json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
  }

  CommandContext& m_context;
  const store::Zone& m_viewer;
};

/// What is due now, then the end.
Result<ExitStatus> tellOnce(AlarmFollower& follower, AlarmRuns* runs) {
  ORLOCAL_CHECK(follower.begin());
  for (;;) {
    ORLOCAL_CHECK(follower.turn());
    if (runs == nullptr || runs->running() == 0) { break; }
    const std::array descriptors{runs->descriptor()};
    ORLOCAL_TRY(const Woken woken, waitForAnyOf(descriptors));
    if (woken == Woken::kByInterruption) { break; }
  }
  ORLOCAL_CHECK(follower.end());
  return runs != nullptr && runs->anyFailed() ? ExitStatus::kFailed : ExitStatus::kDone;
}

}  // namespace

Result<ExitStatus> watchAlarms(const AlarmWatchWords& words, CommandContext& context) {
  const Interruption interruption;
  ORLOCAL_TRY(const auto store, openOrMakeUserStore());
  const store::Zone viewer = store::Zone::ofUser();
  std::ostream& err = context.streams.err;
  AlarmPrinter printer(context, viewer);
  std::unique_ptr<AlarmRuns> runs;
  if (!words.command.empty()) { ORLOCAL_TRY(runs, AlarmRuns::make(words.command, viewer, err, AlarmRuns::Limits())); }
  AlarmFollower follower(*store, viewer, runs != nullptr ? static_cast<AlarmTeller&>(*runs) : printer);
  if (words.once) { return tellOnce(follower, runs.get()); }
  ORLOCAL_TRY(const auto signal, store->listen());
  ORLOCAL_TRY(const auto clock,
              SystemAlarmClock::make(*signal, runs != nullptr ? std::vector{runs->descriptor()} : std::vector<int>()));
  // Then it looks every two seconds.
  if (signal->trouble()) { tellTrouble(err, signal->trouble()->message); }
  err << tr("orlocal: watching for alarms; Ctrl-C ends it\n") << std::flush;
  ORLOCAL_CHECK(follower.follow(*clock));
  if (runs != nullptr) {
    runs->collect();
    if (runs->running() > 0) {
      tellTrouble(err, tr("{} of the commands still run; they end by themselves.", runs->running()));
    }
  }
  return ExitStatus::kDone;
}

}  // namespace orlocal::host
