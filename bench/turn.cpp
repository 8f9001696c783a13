#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include <sqlite3.h>

#include "files.h"
#include "floors.h"
#include "parts.h"
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

using Counted = store::ImportReport;

/// How long the import keeps the turn to write.
double turnOf(const std::filesystem::path& file, const std::string& text, std::size_t expected,
              std::size_t Counted::*counted) {
  const auto opened = openStore(file);
  Waiting waiting(file);
  const auto report = store::importCalendarText(*opened, text, "measured.ics");
  const double held = waiting.seconds();
  if (!report) { throw std::runtime_error(report.error().message); }
  if ((*report).*counted != expected) { throw std::runtime_error("the measured import did something else"); }
  return held;
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

void measureTurnsOf(Report& report, const Setting& setting, std::size_t events) {
  const std::string text = contentOf(calendarFile(setting, events));
  const std::string retitled = withOtherTitles(text), others = withOtherUids(text);
  const std::filesystem::path file = setting.folder / "turn.db";
  const Contender floor{"as many rows inserted", [&] {
                          const FloorRow row{0, 3600, "a title", "a place", "", "0123456789@example.org"};
                          return Outcome{seconds([&] {
                                           FloorWriter writer(setting.folder / "turn.floor");
                                           for (std::size_t i = 0; i < events; ++i) { writer.add(row); }
                                           writer.finish();
                                         }),
                                         events};
                        }};
  const struct {
    const char* name;
    bool intoAStore;
    const std::string& text;
    std::size_t Counted::*counted;
  } kinds[] = {
      {"import holds the turn, all new", false, text, &Counted::added},
      {"import holds the turn, among others", true, others, &Counted::added},
      {"import holds the turn, all unchanged", true, text, &Counted::unchanged},
      {"import holds the turn, all changed", true, retitled, &Counted::updated},
  };
  for (const auto& kind : kinds) {
    const auto held = [&] {
      removeStore(file);
      if (kind.intoAStore) { turnOf(file, text, events, &Counted::added); }
      return Outcome{turnOf(file, kind.text, events, kind.counted), events};
    };
    Row row = compare(setting.fewRoundsFor(events), {"", held}, {floor});
    row.name = kind.name;
    row.events = events;
    report.add(std::move(row));
  }
}

}  // namespace

void measureTurns(Report& report, const Setting& setting) {
  constexpr std::size_t kMost = 100'000;
  for (const std::size_t events : setting.sizes) {
    if (events <= kMost) { measureTurnsOf(report, setting, events); }
  }
}

}  // namespace orlocal::bench
