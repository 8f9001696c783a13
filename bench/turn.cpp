#include <atomic>
#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>
#include <sqlite3.h>

#include "floors.h"
#include "measurements.h"
#include "store/calendar_store.h"
#include "store/import.h"

namespace orlocal::bench {
namespace {

/// Somebody else who wants to save, over and over: from the first time that the turn is not free to the last.
class Waiting {
 public:
  explicit Waiting(const std::filesystem::path& file) {
    if (sqlite3_open(file.c_str(), &m_database) != SQLITE_OK) { throw std::runtime_error("no store to wait for"); }
    m_thread = std::thread([this] { wait(); });
  }
  ~Waiting() {
    if (m_thread.joinable()) { m_thread.join(); }
    sqlite3_close(m_database);
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  double seconds() {
    m_stop = true;
    m_thread.join();
    return std::chrono::duration<double>(m_last - m_first).count();
  }

 private:
  using Clock = std::chrono::steady_clock;

  void wait() {
    while (!m_stop) {
      const auto now = Clock::now();
      if (sqlite3_exec(m_database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr) == SQLITE_OK) {
        sqlite3_exec(m_database, "ROLLBACK", nullptr, nullptr, nullptr);
      } else {
        if (m_first == Clock::time_point()) { m_first = now; }
        m_last = now;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  sqlite3* m_database = nullptr;
  std::atomic<bool> m_stop{false};
  Clock::time_point m_first, m_last;
  std::thread m_thread;
};

/// How long the import keeps the turn to write.
double turnOf(const std::filesystem::path& file, const std::string& text, std::size_t expected,
              std::size_t store::ImportReport::*counted) {
  store::StoreOptions options;
  options.file = file;
  auto opened = store::CalendarStore::open(std::move(options));
  if (!opened) { throw std::runtime_error(opened.error().message); }
  Waiting waiting(file);
  const auto report = store::importCalendarText(**opened, text, "measured.ics");
  const double held = waiting.seconds();
  if (!report) { throw std::runtime_error(report.error().message); }
  if ((*report).*counted != expected) { throw std::runtime_error("the measured import did something else"); }
  return held;
}

void removeStore(const std::filesystem::path& file) {
  for (const char* suffix : {"", "-wal", "-shm", "-bell"}) { std::filesystem::remove(file.string() + suffix); }
}

std::string withOtherTitles(std::string text) {
  for (std::size_t at = 0; (at = text.find("\nSUMMARY:", at)) != std::string::npos; at += 12) {
    text.insert(at + 9, "X ");
  }
  return text;
}

std::string withOtherUids(std::string text) {
  for (std::size_t at = 0; (at = text.find("\nUID:", at)) != std::string::npos; at += 8) { text.insert(at + 5, "x-"); }
  return text;
}

}  // namespace

void measureTurns(Report& report, const Setting& setting, const std::filesystem::path& ics, std::size_t events) {
  std::stringstream read;
  read << std::ifstream(ics, std::ios::binary).rdbuf();
  const std::string text = read.str(), retitled = withOtherTitles(text), others = withOtherUids(text);
  const std::filesystem::path file = setting.folder / "turn.db";
  const std::vector<FloorRow> rows(events, {0, 3600, "a title", "a place", "", "0123456789@example.org"});
  const auto floor = [&] { return seconds([&] { Floor::build(setting.folder / "turn.floor", rows); }); };
  using Counted = store::ImportReport;
  const struct {
    const char* name;
    bool intoAStore;
    const std::string& text;
    std::size_t Counted::*counted;
  } kinds[] = {
      {"turn held by an import: all new", false, text, &Counted::added},
      {"turn held by an import: all new, beside as many", true, others, &Counted::added},
      {"turn held by an import: all known, unchanged", true, text, &Counted::unchanged},
      {"turn held by an import: all known, changed", true, retitled, &Counted::updated},
  };
  for (const auto& kind : kinds) {
    Row row = compare(
        kind.name, setting.rounds > 3 ? 3 : 1,
        [&] {
          removeStore(file);
          if (kind.intoAStore) { turnOf(file, text, events, &Counted::added); }
          return turnOf(file, kind.text, events, kind.counted);
        },
        floor);
    row.events = row.rows = events;
    report.add(std::move(row));
  }
}

}  // namespace orlocal::bench
