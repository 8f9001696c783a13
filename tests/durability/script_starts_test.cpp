#include <array>
#include <chrono>
#include <memory>
#include <random>
#include <set>
#include <stdexcept>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sqlite3.h>
#include <unistd.h>

#include "durability/saving_process.h"
#include "host/fmwrapper/registry.h"
#include "host/plugin/update_script.h"
#include "store/edits/edited_items.h"
#include "store/edits/item_writer.h"

namespace orlocal::test {
namespace {

using namespace std::chrono_literals;
using testing::SizeIs;

constexpr std::size_t kWriters = 4;
constexpr std::size_t kSubscriptions = 2;

/// Where processes wait for each other: all go on once it is opened.
class Gate {
 public:
  Gate() {
    if (::pipe2(m_ends.data(), O_CLOEXEC) != 0) { throw std::runtime_error("no pipe"); }
  }
  ~Gate() {
    ::close(m_ends[0]);
    ::close(m_ends[1]);
  }
  Gate(const Gate&) = delete;
  Gate& operator=(const Gate&) = delete;

  void open(std::size_t waiting) const {
    const std::string tokens(waiting, '.');
    if (::write(m_ends[1], tokens.data(), tokens.size()) < 0) { throw std::runtime_error("the gate is stuck"); }
  }
  void wait() const {
    char token = 0;
    if (::read(m_ends[0], &token, 1) != 1) { throw std::runtime_error("the gate fell down"); }
  }

 private:
  std::array<int, 2> m_ends{};
};

template <class T>
T orThrow(Result<T> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  if constexpr (!std::is_void_v<T>) { return *std::move(result); }
}

/// One that inserts, changes and removes events of its own, one or several in a commit, and tells after each commit
/// with what a script must start.
class BusyWriter {
 public:
  BusyWriter(const std::filesystem::path& file, std::size_t number)
      : m_store(openStore(file)), m_number(number), m_random(static_cast<std::uint32_t>(number)) {}

  void commit(const SavingProcess::Tell& tell) {
    const auto dice = m_random() % 10;
    if (m_events.size() < 3 || dice < 3) {
      m_events.push_back(saved(newEvent(*m_store, nextTitle())));
      tell("New " + m_events.back().identifier);
    } else if (dice < 6) {
      store::Item& event = any();
      event.title = nextTitle();
      event = saved(event);
      tell("Updated " + event.identifier);
    } else if (dice < 8) {
      const std::size_t place = m_random() % m_events.size();
      orThrow(m_store->removeEvent(m_events[place], std::nullopt, store::Span::kThis));
      tell("Deleted " + m_events[place].identifier);
      m_events.erase(m_events.begin() + static_cast<std::ptrdiff_t>(place));
    } else {
      tell(dice == 8 ? several(2) : several(0));
    }
    // A reminder, of which no script may hear.
    if (dice == 0) { saveReminder(); }
  }

 private:
  std::string nextTitle() { return std::to_string(m_number) + "." + std::to_string(++m_titles); }
  store::Item& any() { return m_events[m_random() % m_events.size()]; }

  store::Item saved(store::Item event) {
    orThrow(store::saveEvent(*m_store, event, std::nullopt, store::Span::kThis));
    return event;
  }

  void saveReminder() {
    store::Item reminder;
    reminder.kind = store::ItemKind::kReminder;
    reminder.calendar = orThrow(m_store->defaultCalendar(store::CalendarKind::kReminders))->id;
    orThrow(store::saveReminder(*m_store, reminder));
  }

  /// Two known events and `inserted` new ones in one commit, the known ones first.
  std::string several(std::size_t inserted) {
    std::vector<store::Item> items{m_events[0], m_events[1]};
    for (auto& item : items) { item.title = nextTitle(); }
    for (std::size_t i = 0; i < inserted; ++i) {
      items.push_back(newEvent(*m_store, nextTitle()));
      items.back().uid = *items.back().title + "@writers.example";
    }
    auto writer = orThrow(m_store->startWriting());
    std::vector<store::Item> none;
    for (auto& item : items) { orThrow(writer->put(item.calendar, item, none)); }
    orThrow(writer->commit());
    m_events[0] = items[0];
    m_events[1] = items[1];
    m_events.insert(m_events.end(), items.begin() + 2, items.end());
    return inserted > 0 ? "New " + items[2].identifier : "Updated " + items[0].identifier;
  }

  std::unique_ptr<store::CalendarStore> m_store;
  std::size_t m_number;
  std::mt19937 m_random;
  std::size_t m_titles = 0;
  std::vector<store::Item> m_events;
};

/// A host with the built plug-in that has registered its script several times. Tells each start once all have come, or
/// once it has waited for too long.
class ListeningHost {
 public:
  ListeningHost(const std::filesystem::path& file, std::size_t starts) : m_starts(starts) {
    ::setenv("ORLOCAL_STORE", file.c_str(), 1);
    auto loaded = host::Plugin::load(ORLOCAL_PLUGIN);
    if (!loaded) { throw std::runtime_error(loaded.error().message); }
    m_plugin = std::move(*loaded);
    host::Registry::instance().setScriptHook([this](const host::ScriptStart& start) {
      m_told.push_back(start.parameter->utf8());
      return fmx::ErrorCode{0};
    });
    for (std::size_t i = 0; i < kSubscriptions; ++i) {
      const auto registered = host::registerUpdateScript(*m_plugin, "Solution", "Calendar changed");
      if (!registered) { throw std::runtime_error(registered.error().message); }
    }
    m_signal = orThrow(store::ChangeSignal::listen(file));
  }

  void listen(const SavingProcess::Tell& tell) {
    const auto deadline = std::chrono::steady_clock::now() + 240s;
    while (m_told.size() < m_starts && std::chrono::steady_clock::now() < deadline) {
      pollfd change{.fd = m_signal->descriptor(), .events = POLLIN, .revents = 0};
      ::poll(&change, 1, 20);
      m_signal->drain();
      idle();
    }
    // Whatever comes in addition is too much.
    for (int i = 0; i < 20; ++i) {
      ::poll(nullptr, 0, 10);
      idle();
    }
    for (const auto& parameter : m_told) { tell(parameter); }
  }

 private:
  void idle() {
    if (const auto done = m_plugin->idle(); !done) { throw std::runtime_error(done.error().message); }
  }

  std::size_t m_starts;
  std::unique_ptr<host::Plugin> m_plugin;
  std::unique_ptr<store::ChangeSignal> m_signal;
  std::vector<std::string> m_told;
};

/// What scripts must start with for the commits that touched events, in the order of committing, as the file has it.
std::vector<std::string> parametersOfCommits(const std::filesystem::path& file) {
  sqlite3* database = nullptr;
  sqlite3_stmt* rows = nullptr;
  // Of each commit the first row of the least operation: inserted 0, updated 1, deleted 2.
  const char* const kSql =
      "SELECT operation, hex(uuid) FROM changes AS c WHERE subject = 0 AND seq = (SELECT seq FROM changes WHERE "
      "commit_no = c.commit_no AND subject = 0 ORDER BY operation, seq LIMIT 1) ORDER BY seq";
  std::vector<std::string> parameters;
  if (sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK &&
      sqlite3_prepare_v2(database, kSql, -1, &rows, nullptr) == SQLITE_OK) {
    while (sqlite3_step(rows) == SQLITE_ROW) {
      constexpr std::array kWords = {"New ", "Updated ", "Deleted "};
      std::string uuid = reinterpret_cast<const char*>(sqlite3_column_text(rows, 1));
      for (const std::size_t place : {8U, 13U, 18U, 23U}) { uuid.insert(place, 1, '-'); }
      parameters.push_back(kWords.at(static_cast<std::size_t>(sqlite3_column_int(rows, 0))) + uuid);
    }
  }
  sqlite3_finalize(rows);
  sqlite3_close(database);
  return parameters;
}

struct Load {
  const char* name;
  std::size_t commits;  ///< of each writer
  bool asleep;          ///< whether the host sleeps until all of them have ended
};

class ScriptStarts : public testing::TestWithParam<Load> {};

TEST_P(ScriptStarts, AreOneForEachCommitAndSubscriptionInTheOrderOfCommitting) {
  const std::size_t commits = GetParam().commits;
  const TemporaryStore folder;
  openStore(folder.file());
  const Gate begin;
  const Gate finished;
  std::vector<std::unique_ptr<SavingProcess>> writers;
  for (std::size_t number = 0; number < kWriters; ++number) {
    writers.push_back(std::make_unique<SavingProcess>([&, number](const SavingProcess::Tell& tell) {
      BusyWriter writer(folder.file(), number);
      begin.wait();
      for (std::size_t i = 0; i < commits; ++i) { writer.commit(tell); }
      finished.open(1);
    }));
  }
  SavingProcess host([&](const SavingProcess::Tell& tell) {
    ListeningHost listening(folder.file(), kWriters * commits * kSubscriptions);
    begin.open(kWriters);
    if (GetParam().asleep) {
      for (std::size_t i = 0; i < kWriters; ++i) { finished.wait(); }
    }
    listening.listen(tell);
  });
  const std::vector<std::string> started = host.finish();
  EXPECT_TRUE(host.succeeded());

  const std::vector<std::string> committed = parametersOfCommits(folder.file());
  ASSERT_THAT(committed, SizeIs(kWriters * commits));
  std::vector<std::string> expected;
  for (const auto& parameter : committed) { expected.insert(expected.end(), kSubscriptions, parameter); }
  ASSERT_THAT(started, SizeIs(expected.size()));
  for (std::size_t i = 0; i < expected.size(); ++i) { ASSERT_EQ(started[i], expected[i]) << "start " << i; }

  // And the file's order is that in which each writer did its work.
  for (auto& writer : writers) {
    const std::vector<std::string> told = writer->finish();
    EXPECT_TRUE(writer->succeeded());
    const std::set<std::string> its(told.begin(), told.end());
    std::vector<std::string> inOrder;
    for (const auto& parameter : committed) {
      if (its.contains(parameter)) { inOrder.push_back(parameter); }
    }
    EXPECT_EQ(inOrder, told);
  }
}

INSTANTIATE_TEST_SUITE_P(Hosts, ScriptStarts,
                         testing::Values(Load{"Awake", 500, false}, Load{"AsleepMeanwhile", 100, true}),
                         [](const auto& load) { return load.param.name; });

}  // namespace
}  // namespace orlocal::test
