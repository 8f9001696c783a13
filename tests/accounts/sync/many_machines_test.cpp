#include <algorithm>
#include <random>
#include <set>

#include <gmock/gmock.h>

#include "accounts/sync/field_lines.h"
#include "accounts/sync/server_text.h"
#include "accounts/sync/sync_fixture.h"
#include "store/icalendar/item_text.h"

namespace orlocal::accounts {
namespace {

/// Several machines that edit the same calendar at once, on a network that fails, beside a server that does.
///
/// Each value that anybody writes is unique and remembers which value its writer saw in its place. In the end every
/// value must stand somewhere, or be one that its writer's successors have seen, or lie among the conflicts: nothing is
/// lost without a word.
class ManyMachines : public testing::TestWithParam<std::tuple<int, int, int>> {
 protected:
  using Field = std::optional<std::string> store::Item::*;
  static constexpr Field kFields[] = {&store::Item::title, &store::Item::location, &store::Item::notes};

  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-machines-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    Quirks& quirks = m_server.quirks;
    switch (std::get<1>(GetParam()) % 4) {
      case 0:
        quirks.rewritesTexts = quirks.givesNoEtagInPut = true;
        break;
      case 1:
        quirks.hasNoSync = quirks.relativeHrefs = true;
        break;
      case 2:
        quirks.badToken = Quirks::BadToken::kListsAll;
        quirks.missingItem = Quirks::MissingItem::kIsLeftOut;
        quirks.syncPage = 3;
        break;
      default:
        break;
    }
    MemoryServer::Calendar calendar;
    calendar.displayName = "Team";
    m_team = m_server.addCalendar("team", calendar);
    for (int i = 0; i < std::get<0>(GetParam()); ++i) {
      m_machines.push_back(std::make_unique<Machine>(m_server, options(i)));
      EXPECT_FALSE(m_machines.back()->sync().failure);
    }
  }
  void TearDown() override {
    m_machines.clear();
    std::filesystem::remove_all(m_folder);
  }

  store::StoreOptions options(int machine) const {
    store::StoreOptions options;
    options.file = m_folder / std::to_string(machine) / "calendar.db";
    options.viewer = store::berlinZone();
    return options;
  }
  int pick(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }

  std::string newValue(const std::optional<std::string>& seen) {
    const std::string value = "v" + std::to_string(++m_values) + ".";
    m_seenBy[value] = seen.value_or("");
    return value;
  }

  /// Somebody has seen its values, and removed it.
  void giveUp(const store::Item& item) {
    for (const Field field : kFields) { m_given.insert((item.*field).value_or("")); }
  }

  void doSomething(Machine& machine) {
    std::vector<store::Item> items;
    for (const auto& [title, item] : machine.items("Team")) { items.push_back(item); }
    const int what = pick(0, 9);
    if (items.empty() || what < 3) {
      store::Item item;
      item.title = newValue(std::nullopt);
      item.start = store::berlin("2026-11-02 09:00");
      item.end = store::berlin("2026-11-02 10:00");
      item.calendar = machine.calendar("Team").id;
      if (pick(0, 3) == 0) {
        item.recurrence.rules = {store::rule(store::RecurrenceRule::Frequency::kDaily, pick(2, 6))};
      }
      machine.save(item);
      return;
    }
    store::Item item = items[static_cast<std::size_t>(pick(0, static_cast<int>(items.size()) - 1))];
    if (what == 3) {
      giveUp(item);
      EXPECT_TRUE(machine.people->removeEvent(item, std::nullopt, store::Span::kAll));
      return;
    }
    if (!item.recurrence.empty() && pick(0, 1) == 0) { return changeOccurrence(machine, item); }
    const Field field = kFields[pick(0, 2)];
    item.*field = newValue(item.*field);
    machine.save(item);
  }

  /// One occurrence gets other words or goes, or the series ends before it or is split there. No value is written: what
  /// stands where is compared in the end.
  void changeOccurrence(Machine& machine, const store::Item& series) {
    const auto at = store::at("2026-11-0" + std::to_string(pick(2, 6)) + " 09:00");
    const auto occurrence = machine.people->occurrenceAt(series, at);
    if (!occurrence || !*occurrence) { return; }
    const auto opened = *machine.people->item((*occurrence)->item);
    if (pick(0, 2) == 0) {
      const auto span =
          pick(0, 2) == 0 && at != store::at("2026-11-02 09:00") ? store::Span::kFuture : store::Span::kThis;
      EXPECT_TRUE(machine.people->removeEvent(*opened, *occurrence, span));
      if (machine.people->item(series.id)->get() == nullptr) { giveUp(series); }  // it was the last one
      return;
    }
    store::ItemEdit edit;
    edit.opened = opened;
    edit.values = *opened;
    edit.values.url = "http://example.org/" + std::to_string(pick(0, 99));
    edit.set.add(store::ItemField::kUrl);
    const bool splits = pick(0, 2) == 0 && at != store::at("2026-11-02 09:00");
    const auto saved = machine.people->saveEvent(edit, *occurrence, splits ? store::Span::kFuture : store::Span::kThis);
    EXPECT_TRUE(saved) << saved.error().message;
  }

  void goWrong() {
    if (pick(0, 2) != 0) { return; }
    using When = MemoryServer::Fault::When;
    MemoryServer::Fault fault;
    fault.when = std::array{When::kBefore, When::kWithin, When::kAfter}[static_cast<std::size_t>(pick(0, 2))];
    fault.status = std::array{0, 0, 500, 503, 429}[static_cast<std::size_t>(pick(0, 4))];
    fault.nth = static_cast<std::size_t>(pick(1, 6));
    m_server.failNext(fault);
  }

  using Items = std::map<std::string, store::WholeItem>;  ///< by UID
  Items itemsOf(Machine& machine) {
    Items items;
    const auto visited = machine.people->forEachItem(
        machine.calendar("Team").id, [&](const store::Item& main, const std::vector<store::Item>& changed) {
          items[main.uid] = {main, changed};
          return Status();
        });
    EXPECT_TRUE(visited);
    return items;
  }
  Items itemsThere() {
    Items items;
    for (const auto& [name, item] : m_server.calendarAt(m_team).items) {
      const ServerText read = ServerText::read(item.text, name);
      EXPECT_TRUE(read.item()) << item.text;
      if (read.item()) { items[read.uid()] = *read.item(); }
    }
    return items;
  }
  static void expectEqual(const Items& here, const Items& there) {
    EXPECT_EQ(here.size(), there.size());
    for (const auto& [uid, item] : here) {
      const auto other = there.find(uid);
      if (other == there.end()) {
        ADD_FAILURE() << uid << " is not on the server: " << store::itemText(item);
      } else {
        EXPECT_TRUE(saysTheSame(item, other->second)) << store::itemText(item) << store::itemText(other->second);
      }
    }
  }

  /// Whether the item is one that waits for a decision, and thus stands on one machine alone.
  void settleRemovals() {
    for (auto& machine : m_machines) {
      for (const store::Conflict& conflict : machine->conflicts()) {
        if (conflict.mine) { keepValues(*conflict.mine); }
        if (!conflict.theirs && conflict.item) {
          const auto item = *machine->people->item(*conflict.item);
          if (item == nullptr) { continue; }
          giveUp(*item);
          auto writer = std::move(*machine->people->startWriting());
          EXPECT_TRUE(writer->remove(*conflict.item));
          EXPECT_TRUE(writer->commit());
        }
      }
    }
  }
  void keepValues(const std::string& text) {
    for (std::size_t at = 0; (at = text.find(":v", at)) != std::string::npos; ++at) {
      m_given.insert(text.substr(at + 1, text.find('.', at) - at));
    }
  }

  void expectNothingLost() {
    for (const auto& [name, item] : m_server.calendarAt(m_team).items) { keepValues(item.text); }
    std::vector<std::string> open(m_given.begin(), m_given.end());
    std::set<std::string> reached;
    while (!open.empty()) {
      const std::string value = open.back();
      open.pop_back();
      if (value.empty() || !reached.insert(value).second) { continue; }
      open.push_back(m_seenBy[value]);
    }
    for (const auto& [value, seen] : m_seenBy) {
      if (!value.empty()) { EXPECT_TRUE(reached.contains(value)) << value << " is lost"; }
    }
  }

  std::filesystem::path m_folder;
  MemoryServer m_server;
  std::string m_team;
  std::vector<std::unique_ptr<Machine>> m_machines;
  std::mt19937 m_random{static_cast<std::uint32_t>(std::get<1>(GetParam()))};
  int m_values = 0;
  std::map<std::string, std::string> m_seenBy;  ///< the value that was replaced by it
  std::set<std::string> m_given;  ///< values that stand, were removed by who saw them, or lie in conflicts
};

TEST_P(ManyMachines, EndEqualAndLoseNothing) {
  const int rounds = std::get<2>(GetParam());
  for (int round = 0; round < rounds; ++round) {
    const int which = pick(0, static_cast<int>(m_machines.size()) - 1);
    Machine& machine = *m_machines[static_cast<std::size_t>(which)];
    for (int i = pick(0, 3); i > 0; --i) { doSomething(machine); }
    if (pick(0, 2) == 0) { continue; }
    goWrong();
    machine.sync();
    if (pick(0, 9) == 0) { machine.restart(options(which)); }
  }
  m_server.failNext({});  // used up by the next request, so that none is left
  for (int i = 0; i < 12; ++i) {
    for (auto& machine : m_machines) { machine->sync(); }
  }
  settleRemovals();
  for (int i = 0; i < 2; ++i) {
    for (auto& machine : m_machines) {
      const SyncReport report = machine->sync();
      EXPECT_FALSE(report.failure) << report.failure->message;
    }
  }
  for (auto& machine : m_machines) { expectEqual(itemsOf(*machine), itemsThere()); }
  expectNothingLost();
}

// Machines, seed, rounds.
INSTANTIATE_TEST_SUITE_P(Two, ManyMachines,
                         testing::Combine(testing::Values(2), testing::Range(1, 13), testing::Values(50)));
INSTANTIATE_TEST_SUITE_P(Five, ManyMachines,
                         testing::Combine(testing::Values(5), testing::Range(1, 9), testing::Values(50)));
INSTANTIATE_TEST_SUITE_P(ForLong, ManyMachines,
                         testing::Combine(testing::Values(2, 5), testing::Values(101), testing::Values(1'000)));

}  // namespace
}  // namespace orlocal::accounts
