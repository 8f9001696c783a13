#include "host/commands/alarms/alarm_runs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <ostream>
#include <utility>

#include <fmt/format.h>
#include <sys/epoll.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "host/commands/alarms/alarm_text.h"
#include "host/commands/command_line/child_process.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using std::chrono::steady_clock;

constexpr std::string_view kItem = "{}";

bool listenTo(int poll, int descriptor) {
  epoll_event event{};
  event.events = EPOLLIN;
  event.data.fd = descriptor;
  return ::epoll_ctl(poll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

/// Readable when the process ends; -1 where the system gives none.
int handleOf(pid_t process) { return static_cast<int>(::syscall(SYS_pidfd_open, process, 0)); }

}  // namespace

std::string missedText(const MissedAlarms& missed, const store::Zone& viewer) {
  const auto at = [&](store::Moment moment) {
    const store::LocalTime local = viewer.toLocal(moment);
    return shortDay(store::LocalDay(local)) + " " + clockTime(local);
  };
  return trn("{} alarm between {} and {} was missed, as nobody watched for alarms then.",
             "{} alarms between {} and {} were missed, as nobody watched for alarms then.", missed.count, missed.count,
             at(missed.from), at(missed.to));
}

Result<std::unique_ptr<AlarmRuns>> AlarmRuns::make(std::vector<std::string> command, const store::Zone& viewer,
                                                   std::ostream& err, const Limits& limits) {
  std::unique_ptr<AlarmRuns> runs(new AlarmRuns(std::move(command), viewer, err, limits));
  runs->m_poll = ::epoll_create1(EPOLL_CLOEXEC);
  runs->m_timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
  if (runs->m_poll < 0 || runs->m_timer < 0 || !listenTo(runs->m_poll, runs->m_timer)) {
    return failure(ErrorCode::kIo, tr("Commands for alarms cannot be followed: {}", systemReason(errno)));
  }
  return runs;
}

AlarmRuns::~AlarmRuns() {
  // Those that still run end by themselves.
  for (const auto& [process, run] : m_runs) { ::close(run.handle); }
  if (m_timer >= 0) { ::close(m_timer); }
  if (m_poll >= 0) { ::close(m_poll); }
}

std::size_t AlarmRuns::room() {
  collect();
  return m_limits.atOnce - std::min(m_limits.atOnce, m_runs.size());
}

void AlarmRuns::tell(const AlarmNews& news) {
  std::vector<std::string> words = m_command;
  std::replace(words.begin(), words.end(), std::string(kItem), news.identifier());
  const nlohmann::json json = alarmNewsJson(news, m_viewer);
  const std::string input = json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
  const std::string about = alarmNewsInWords(news, m_viewer);
  const auto process = startVisibly(words, input, alarmVariables(json));
  if (!process) {
    fail(process.error().message, about);
    return;
  }
  const int handle = handleOf(*process);
  if (handle < 0 || !listenTo(m_poll, handle)) {
    fail(tr("cannot be followed: {}", systemReason(errno)), about);
    if (handle >= 0) { ::close(handle); }
    return;
  }
  m_runs.emplace(*process, Run{handle, about, steady_clock::now() + m_limits.longest});
  setTimer();
}

void AlarmRuns::tellMissed(const MissedAlarms& missed) { host::tellTrouble(m_err, missedText(missed, m_viewer)); }

void AlarmRuns::tellTrouble(const std::string& sentence) { host::tellTrouble(m_err, sentence); }

void AlarmRuns::collect() {
  const auto now = steady_clock::now();
  for (auto run = m_runs.begin(); run != m_runs.end();) {
    if (const auto result = endOf(run->first)) {
      if (!result->succeeded()) { fail(result->ending, run->second.about); }
      ::close(run->second.handle);
      run = m_runs.erase(run);
      continue;
    }
    Run& its = run->second;
    if (now >= its.limit) {
      if (!its.asked) { fail(tr("took more than {} s and is ended", m_limits.longest.count()), its.about); }
      ::kill(run->first, its.asked ? SIGKILL : SIGTERM);
      its.asked = true;
      its.limit = now + m_limits.toEnd;
    }
    ++run;
  }
  setTimer();
}

void AlarmRuns::fail(const std::string& how, const std::string& about) {
  m_failed = true;
  host::tellTrouble(m_err, fmt::format("{} {} ({})", m_command.front(), how, about));
}

void AlarmRuns::setTimer() const {
  std::uint64_t rung = 0;
  static_cast<void>(!::read(m_timer, &rung, sizeof rung));
  itimerspec wanted{};
  if (!m_runs.empty()) {
    const auto next = std::min_element(m_runs.begin(), m_runs.end(),
                                       [](const auto& a, const auto& b) { return a.second.limit < b.second.limit; });
    const auto left =
        std::max<std::chrono::nanoseconds>(next->second.limit - steady_clock::now(), std::chrono::milliseconds(1));
    wanted.it_value.tv_sec = static_cast<time_t>(left.count() / 1'000'000'000);
    wanted.it_value.tv_nsec = static_cast<long>(left.count() % 1'000'000'000);
  }
  ::timerfd_settime(m_timer, 0, &wanted, nullptr);
}

}  // namespace orlocal::host
