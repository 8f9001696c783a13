// Several processes on one store. They share the machine's threads, too: where there are more of them than of those, a
// query also waits for its turn on one, so its processor time, which knows no waiting, stands beside.
#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

#include <fmt/format.h>

#include "files.h"
#include "floors.h"
#include "new_event.h"
#include "parts.h"
#include "processes.h"
#include "questions.h"
#include "solution.h"

namespace orlocal::bench {
namespace {

/// A week that was not asked for just before, until October: what writers save lies in November.
Range week(int number) {
  constexpr int kWeeks = 40;
  const store::LocalTime from(cctz::civil_day(2026, 1, 1) + 7 * (number % kWeeks));
  return {from, from + 7 * 86'400};
}

Worker reader(const Setting& setting, int first) {
  return [&setting, first]() -> Step {
    const std::shared_ptr<host::Plugin> plugin = startPlugin(setting.plugin);
    const Ask ask = askPlugin();
    for (int i = 0; i < 5; ++i) { ask(week(first + i)); }
    return [plugin, ask, next = first]() mutable { ask(week(++next)); };
  };
}

Worker writer(const Setting& setting) {
  return [&setting]() -> Step {
    const std::shared_ptr<host::Plugin> plugin = startPlugin(setting.plugin);
    const Step save = [plugin, next = 0]() mutable {
      fillNewEvent(++next);
      saveEvent(u"this");
    };
    save();
    return save;
  };
}

Worker plainReader(const std::filesystem::path& file, int first) {
  return [file, first]() -> Step {
    const auto floor = std::make_shared<Floor>(file);
    const auto ask = [floor](const Range& range) { floor->rowsWithin(utcSeconds(range.from), utcSeconds(range.to)); };
    for (int i = 0; i < 5; ++i) { ask(week(first + i)); }
    return [ask, next = first]() mutable { ask(week(++next)); };
  };
}

Worker plainWriter(const std::filesystem::path& file) {
  return [file]() -> Step {
    const auto floor = std::make_shared<InsertFloor>(file);
    floor->insert();
    return [floor] { floor->insert(); };
  };
}

/// The largest store of up to 10,000 events.
std::size_t middling(const std::vector<std::size_t>& sizes) {
  const auto above = std::upper_bound(sizes.begin(), sizes.end(), std::size_t{10'000});
  return above == sizes.begin() ? sizes.front() : *std::prev(above);
}

class Sharing {
 public:
  Sharing(Report& report, const Setting& setting)
      : m_report(report), m_setting(setting), m_events(middling(setting.sizes)), m_seconds(setting.smoke ? 0.1 : 1) {}

  void readersAndWriter() {
    constexpr int kReaders = 8;
    // Of one reader and of the writer, each alone and among the others, round by round.
    std::vector<Tally> readAlone, readAmong, wroteAlone, wroteAmong;
    for (int round = 0; round < rounds(); ++round) {
      freshStore();
      readAlone.push_back(runTogether({reader(m_setting, 0)}, m_seconds).front());
      wroteAlone.push_back(runTogether({writer(m_setting)}, m_seconds).front());
      freshStore();
      std::vector<Worker> all{writer(m_setting)};
      for (int i = 0; i < kReaders; ++i) { all.push_back(reader(m_setting, 5 * i)); }
      const auto tallies = runTogether(all, m_seconds);
      wroteAmong.push_back(tallies[0]);
      readAmong.push_back(tallies[1]);
    }
    addBeside("query of a week, 8 readers and a writer", 1.2, readAmong, "the same reader alone", readAlone);
    addBeside("commit, 8 readers and a writer", 1.5, wroteAmong, "the same writer alone", wroteAlone);
    m_report.note(fmt::format(
        "Eight readers and a writer are nine processes on {} hardware threads: a query or commit among them also waits "
        "for its turn on a thread. Its processor time does not.",
        m_report.results().threads));
  }

  void growingCrowds() {
    freshStore();
    const auto floor = floorFile(m_setting, m_events);
    const auto inserts = m_setting.folder / "shared.floor";
    for (const int processes : {1, 2, 4, 8}) {
      addRates(
          fmt::format("queries of a week, {}", countOf(processes)), "plain rows, as many processes", processes,
          [&](int i) { return reader(m_setting, 5 * i); }, [&](int i) { return plainReader(floor, 5 * i); });
    }
    for (const int processes : {1, 2, 4, 8}) {
      freshStore();
      InsertFloor::make(inserts);
      addRates(
          fmt::format("commits, {}", countOf(processes)), "plain inserts, as many processes", processes,
          [&](int) { return writer(m_setting); }, [&](int) { return plainWriter(inserts); });
    }
  }

 private:
  int rounds() const { return m_setting.smoke ? 1 : 3; }

  static std::string countOf(int processes) {
    return processes == 1 ? "1 process" : fmt::format("{} processes", processes);
  }

  void freshStore() { useStore(copyOfStore(m_setting, m_events, "shared")); }

  void add(Row row, std::string name, Unit unit) {
    row.name = std::move(name);
    row.events = m_events;
    row.unit = unit;
    m_report.add(std::move(row));
  }

  /// Two rows: what a step took, and its processor time.
  void addBeside(const std::string& name, double aim, const std::vector<Tally>& among, const char* aloneName,
                 const std::vector<Tally>& alone) {
    const auto by = [&](double Tally::*of) {
      const auto rounds = [of](const char* side, const std::vector<Tally>& tallies) {
        Rounds all{side, {}};
        for (const Tally& tally : tallies) { all.outcomes.push_back({tally.*of, 1}); }
        return all;
      };
      Row row = rowOf(rounds("", among), {rounds(aloneName, alone)});
      row.aim = aim;
      return row;
    };
    add(by(&Tally::median), name, Unit::kSeconds);
    add(by(&Tally::processor), name + ", processor time", Unit::kSeconds);
  }

  /// Steps a second in sum.
  template <class Ours, class Floors>
  void addRates(std::string name, const char* floorName, int processes, const Ours& ours, const Floors& floors) {
    const auto rate = [&](const auto& worker) {
      return [&] {
        std::vector<Worker> all;
        for (int i = 0; i < processes; ++i) { all.push_back(worker(i)); }
        Outcome sum{0, 1};
        for (const Tally& tally : runTogether(all, m_seconds)) { sum.amount += tally.perSecond; }
        return sum;
      };
    };
    add(compare(rounds(), {"", rate(ours)}, {{floorName, rate(floors)}}), std::move(name), Unit::kPerSecond);
  }

  Report& m_report;
  const Setting& m_setting;
  std::size_t m_events;
  double m_seconds;
};

}  // namespace

void measureSharing(Report& report, const Setting& setting) {
  Sharing sharing(report, setting);
  sharing.readersAndWriter();
  sharing.growingCrowds();
}

}  // namespace orlocal::bench
