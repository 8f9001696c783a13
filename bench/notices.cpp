// From the commit of one process to the script start in another, and what listening costs when nothing happens.
#include <array>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sqlite3.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "files.h"
#include "host/fmwrapper/registry.h"
#include "host/plugin/update_script.h"
#include "parts.h"
#include "processes.h"
#include "solution.h"
#include "store/calendar_store.h"

namespace orlocal::bench {
namespace {

constexpr int kWakeUps = 40;
constexpr int kIdleSeconds = 10;

/// Nanoseconds of a clock that all processes share.
std::int64_t nanoseconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
}

/// When the process's last commit was done: on disk, seen by others, its lock let go.
std::int64_t g_committed = 0;
sqlite3* g_database = nullptr;

int noteCommit(void*, sqlite3* database, const char*, int pages) {
  g_committed = nanoseconds();
  // This stands in the place of SQLite's own hook, which does the same.
  constexpr int kPagesBetweenCheckpoints = 1000;
  if (pages >= kPagesBetweenCheckpoints) {
    sqlite3_wal_checkpoint_v2(database, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  }
  return SQLITE_OK;
}

int noteDatabase(sqlite3* database, char**, const sqlite3_api_routines*) {
  g_database = database;
  return SQLITE_OK;
}

template <class T>
T orThrow(Result<T> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  return *std::move(result);
}

/// Saves new events, and says when each was committed.
class Saver {
 public:
  explicit Saver(const std::filesystem::path& file) {
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&noteDatabase));
    store::StoreOptions options;
    options.file = file;
    options.viewer = store::Zone::ofUser();
    m_store = orThrow(store::CalendarStore::open(std::move(options)));
    sqlite3_wal_hook(g_database, noteCommit, nullptr);
  }

  std::int64_t save() {
    store::Item event;
    event.calendar = orThrow(m_store->defaultCalendar(store::CalendarKind::kEvents))->id;
    event.title = "Saved elsewhere";
    event.start = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 5, 9, 0, 0), ""};
    event.end = store::CalendarTime{store::CalendarTime::Kind::kUtc, store::LocalTime(2026, 11, 5, 10, 0, 0), ""};
    g_committed = 0;
    store::ItemEdit edit;
    edit.values = std::move(event);
    if (!m_store->saveEvent(edit, std::nullopt, store::Span::kThis)) { throw std::runtime_error("no save"); }
    return g_committed;
  }

 private:
  std::unique_ptr<store::CalendarStore> m_store;
};

/// Another process, which does a thing when told and says when it did it: the moment just before others can notice.
class Partner {
 public:
  using Deed = std::function<std::int64_t()>;

  /// `prepare` runs in the other process.
  explicit Partner(const std::function<Deed()>& prepare) {
    std::array<int, 2> orders{};
    std::array<int, 2> answers{};
    if (pipe2(orders.data(), O_CLOEXEC) != 0 || pipe2(answers.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("no pipe for another process");
    }
    m_child = fork();
    if (m_child < 0) { throw std::runtime_error("no other process"); }
    if (m_child == 0) {
      close(orders[1]);
      close(answers[0]);
      const Deed deed = prepare();
      char order = 0;
      while (read(orders[0], &order, 1) == 1) {
        // So that the one who waits is asleep again.
        usleep(2000);
        const std::int64_t when = deed();
        if (write(answers[1], &when, sizeof when) != sizeof when) { break; }
      }
      _exit(0);
    }
    close(orders[0]);
    close(answers[1]);
    m_orders = orders[1];
    m_answers = answers[0];
  }
  ~Partner() {
    close(m_orders);
    close(m_answers);
    waitpid(m_child, nullptr, 0);
  }
  Partner(const Partner&) = delete;
  Partner& operator=(const Partner&) = delete;

  void order() const {
    if (write(m_orders, "x", 1) != 1) { throw std::runtime_error("the other process is gone"); }
  }
  std::int64_t answer() const {
    std::int64_t when = 0;
    if (read(m_answers, &when, sizeof when) != sizeof when || when == 0) {
      throw std::runtime_error("the other process failed");
    }
    return when;
  }

 private:
  pid_t m_child = -1;
  int m_orders = -1;
  int m_answers = -1;
};

void sleepUntilReadable(int descriptor, int milliseconds = -1) {
  pollfd any{.fd = descriptor, .events = POLLIN, .revents = 0};
  while (poll(&any, 1, milliseconds) < 0 && errno == EINTR) {}
}

/// The median of the seconds from the deed of `partner` to the end of `wait`, which says when it woke.
Outcome wakeUp(const Partner& partner, const std::function<std::int64_t()>& wait) {
  std::vector<double> taken;
  for (int i = 0; i < kWakeUps; ++i) {
    partner.order();
    const std::int64_t woken = wait();
    taken.push_back(static_cast<double>(woken - partner.answer()) * 1e-9);
  }
  return {summarize(std::move(taken)).median, 1};
}

/// A host with the plug-in, which has registered a script.
class Listener {
 public:
  Listener(const Setting& setting, const std::filesystem::path& file) : m_plugin(startPlugin(setting.plugin)) {
    host::Registry::instance().setScriptHook([this](const host::ScriptStart&) {
      m_started = nanoseconds();
      return fmx::ErrorCode{0};
    });
    const auto registered = host::registerUpdateScript(*m_plugin, "Solution", "Calendar changed");
    if (!registered) { throw std::runtime_error(registered.error().message); }
    m_signal = orThrow(store::ChangeSignal::listen(file));
    idle();
  }
  ~Listener() { host::Registry::instance().setScriptHook(nullptr); }
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  /// Sleeps until a script starts; says when.
  std::int64_t waitForStart() {
    m_started = 0;
    int patience = -1;
    while (m_started == 0) {
      sleepUntilReadable(m_signal->descriptor(), patience);
      m_signal->drain();
      idle();
      // The plug-in is woken for itself, and may be a moment later than we are.
      patience = 1;
    }
    return m_started;
  }

  void serveFor(std::int64_t nanosecondsLong) {
    const std::int64_t end = nanoseconds() + nanosecondsLong;
    for (std::int64_t left = nanosecondsLong; left > 0; left = end - nanoseconds()) {
      sleepUntilReadable(m_signal->descriptor(), static_cast<int>(left / 1'000'000 + 1));
      m_signal->drain();
      idle();
    }
  }

 private:
  void idle() {
    if (const auto done = m_plugin->idle(); !done) { throw std::runtime_error(done.error().message); }
  }

  std::unique_ptr<host::Plugin> m_plugin;
  std::unique_ptr<store::ChangeSignal> m_signal;
  std::int64_t m_started = 0;
};

}  // namespace

void measureNotices(Report& report, const Setting& setting) {
  const auto file = setting.folder / "notices.db";
  const auto touched = setting.folder / "touched";
  close(open(touched.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
  const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  const int notices = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
  if (event < 0 || notices < 0 || inotify_add_watch(notices, touched.c_str(), IN_MODIFY) < 0) {
    throw std::runtime_error("the system has no wake-ups left");
  }
  // These processes begin before the plug-in does.
  const Partner saver([&] { return [saving = std::make_shared<Saver>(file)] { return saving->save(); }; });
  const Partner raiser([&] {
    return [event] {
      const std::int64_t before = nanoseconds();
      eventfd_write(event, 1);
      return before;
    };
  });
  const Partner toucher([&] {
    return [touched] {
      const int descriptor = open(touched.c_str(), O_WRONLY | O_CLOEXEC);
      const std::int64_t before = nanoseconds();
      if (pwrite(descriptor, "\n", 1, 0) != 1) { return std::int64_t{0}; }
      close(descriptor);
      return before;
    };
  });
  // Makes the store before the plug-in opens it, so that only one does.
  saver.order();
  saver.answer();
  useStore(file);
  Listener listener(setting, file);

  const auto bare = [](int descriptor) {
    sleepUntilReadable(descriptor);
    const std::int64_t woken = nanoseconds();
    std::array<char, 4096> ignored;
    while (read(descriptor, ignored.data(), ignored.size()) > 0) {}
    return woken;
  };
  const auto toScriptStart = [&] { return wakeUp(saver, [&] { return listener.waitForStart(); }); };
  Row row = compare(setting.rounds, {"", toScriptStart},
                    {{"bare file notice", [&] { return wakeUp(toucher, [&] { return bare(notices); }); }},
                     {"bare eventfd", [&] { return wakeUp(raiser, [&] { return bare(event); }); }}});
  row.name = "commit of another process to script start";
  row.aim = 10;
  report.add(std::move(row));
  close(event);
  close(notices);

  const int idleSeconds = setting.smoke ? 1 : kIdleSeconds;
  const double before = processorSeconds();
  listener.serveFor(idleSeconds * std::int64_t{1'000'000'000});
  report.note(fmt::format("A listener to which nothing happens uses {:.2f} ms of processor time in {} seconds.",
                          (processorSeconds() - before) * 1e3, idleSeconds));
}

}  // namespace orlocal::bench
