#include <chrono>
#include <map>
#include <random>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "durability/saving_process.h"
#include "store/edits/edited_items.h"

namespace orlocal::test {
namespace {

/// Saves, changes and removes events for as long as it lives, and tells each acknowledged step: "S identifier title",
/// "U identifier title", "D identifier".
void keepSaving(const std::filesystem::path& file, int round, const SavingProcess::Tell& tell) {
  auto store = openStore(file);
  for (int i = 0;; ++i) {
    const std::string title = std::to_string(round) + "." + std::to_string(i);
    store::Item event = newEvent(*store, title);
    if (auto saved = saveEvent(*store, event, std::nullopt, store::Span::kThis); !saved) {
      throw std::runtime_error(saved.error().message);
    }
    tell("S " + event.identifier + " " + title);
    if (i % 3 == 1) {
      event.title = title + "+";
      if (auto saved = saveEvent(*store, event, std::nullopt, store::Span::kThis); !saved) {
        throw std::runtime_error(saved.error().message);
      }
      tell("U " + event.identifier + " " + *event.title);
    }
    if (i % 3 == 2) {
      if (auto removed = store->removeEvent(event, std::nullopt, store::Span::kThis); !removed) {
        throw std::runtime_error(removed.error().message);
      }
      tell("D " + event.identifier);
    }
  }
}

/// What the acknowledged steps leave: identifier and titles that may stand there.
class Expected {
 public:
  void take(const std::string& line) {
    const std::string identifier = line.substr(2, line.find(' ', 2) - 2);
    if (line[0] == 'D') {
      m_titles.erase(identifier);
      m_removed.insert(identifier);
    } else {
      m_titles[identifier] = line.substr(line.find(' ', 2) + 1);
    }
  }

  void check(store::CalendarStore& store) const {
    for (const auto& [identifier, title] : m_titles) {
      const auto event = store.event(identifier);
      ASSERT_TRUE(event) << event.error().message;
      // The step after the last acknowledged one may have reached the disk without anybody hearing of it.
      if (!*event) {
        ADD_FAILURE_AT(__FILE__, __LINE__) << "lost: " << identifier << " " << title;
        continue;
      }
      const std::string found = (*event)->title.value_or("");
      EXPECT_TRUE(found == title || found == title + "+") << identifier << ": " << found << " is not " << title;
      EXPECT_TRUE((*event)->start.has_value() && (*event)->end.has_value()) << identifier << " is not whole";
    }
    for (const auto& identifier : m_removed) {
      const auto event = store.event(identifier);
      ASSERT_TRUE(event) << event.error().message;
      EXPECT_FALSE(*event) << identifier << " came back";
    }
  }

  /// The last step of a killed process may be a removal that was done and not told: forget that one event.
  void forgetLast() {
    if (!m_last.empty()) { m_titles.erase(m_last); }
  }
  void remember(const std::string& line) { m_last = line.substr(2, line.find(' ', 2) - 2); }

  std::size_t kept() const { return m_titles.size(); }

 private:
  std::map<std::string, std::string> m_titles;
  std::set<std::string> m_removed;
  std::string m_last;
};

TEST(KilledWhileSaving, EveryAcknowledgedSaveIsThereAndTheFileIsSound) {
  constexpr int kKills = 200;
  // On a busy machine most processes are killed before their first save: there have to be more of them, then.
  constexpr int kMostKills = 10 * kKills;
  constexpr std::size_t kSaves = kKills / 2;
  TemporaryStore folder;
  openStore(folder.file());  // made once, so that the kills hit saving and not making
  Expected expected;
  std::mt19937 random(20261121);
  std::size_t acknowledged = 0;
  for (int round = 0; round < kKills || (acknowledged <= kSaves && round < kMostKills); ++round) {
    SavingProcess process([&](const SavingProcess::Tell& tell) { keepSaving(folder.file(), round, tell); });
    std::this_thread::sleep_for(std::chrono::microseconds(1500 + random() % 20'000));
    process.kill();
    const auto lines = process.finish();
    for (const auto& line : lines) { expected.take(line); }
    acknowledged += lines.size();
    if (!lines.empty()) {
      expected.remember(lines.back());
      if (lines.back()[0] == 'S') { expected.forgetLast(); }
    }
    if (round % 20 == 19) {
      EXPECT_EQ(integrityOf(folder.file()), "ok");
      auto store = openStore(folder.file());
      expected.check(*store);
    }
    if (HasFatalFailure()) { return; }
  }
  EXPECT_GT(acknowledged, kSaves) << "too few saves to mean anything";
  EXPECT_GT(expected.kept(), 0U);
}

TEST(KilledWhileMaking, AStoreIsEitherWholeOrMadeAnew) {
  std::mt19937 random(7);
  for (int round = 0; round < 60; ++round) {
    TemporaryStore folder;
    SavingProcess process([&](const SavingProcess::Tell& tell) {
      openStore(folder.file());
      tell("made");
    });
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 12'000));
    process.kill();
    process.finish();
    auto store = openStore(folder.file());
    const auto calendar = store->defaultCalendar(store::CalendarKind::kEvents);
    ASSERT_TRUE(calendar) << calendar.error().message;
    ASSERT_TRUE(*calendar);
    EXPECT_EQ((*calendar)->title, "Calendar");
    const auto all = store->calendars(store::CalendarKind::kEvents);
    ASSERT_TRUE(all);
    EXPECT_EQ(all->size(), 1U);
  }
}

}  // namespace
}  // namespace orlocal::test
