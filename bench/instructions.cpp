// How many instructions small fixed tasks take: where the machine is too busy for times to tell, these still do.
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

#include "files.h"
#include "new_event.h"
#include "own_process.h"
#include "parts.h"
#include "questions.h"
#include "solution.h"
#include "store/alarm_timetable.h"
#include "store/edits/item_edit.h"
#include "walking.h"

/// What happens within this function is counted, and nothing of what makes it ready. valgrind finds it by its name.
extern "C" [[gnu::noinline]] void orlocalBenchCounted(const std::function<void()>& work) {
  work();
  asm volatile("" : : : "memory");  // the work is not the last thing done, so that it is called from here
}

namespace orlocal::bench {
namespace {

/// Days of 2026, from the n-th.
Range days(int first, int count) {
  const cctz::civil_day day = cctz::civil_day(2026, 1, 1) + first;
  return {store::LocalTime(day), store::LocalTime(day + count)};
}

void knownStretches(const Setting&) {
  const Ask ask = askPlugin();
  ask(monthOf2026(11));
  const int november = static_cast<int>(cctz::civil_day(2026, 11, 1) - cctz::civil_day(2026, 1, 1));
  orlocalBenchCounted([&] {
    for (int i = 0; i < 20; ++i) { ask(days(november + i, 8)); }
  });
}

void newStretches(const Setting&) {
  const Ask ask = askPlugin();
  ask(monthOf2026(11));
  orlocalBenchCounted([&] {
    for (int i = 0; i < 20; ++i) { ask(days(10 * i, 8)); }
  });
}

void saves(const Setting&) {
  const auto save = [](int number) {
    fillNewEvent(number);
    saveEvent(u"this");
  };
  save(0);
  orlocalBenchCounted([&] {
    for (int i = 1; i <= 20; ++i) { save(i); }
  });
}

void opensAndProperties(const Setting&) {
  walk(monthOf2026(11));
  orlocalBenchCounted([] { walk(monthOf2026(11)); });
}

void importOfAThousand(const Setting& setting) {
  const auto calendar = setting.folder / "1000.ics", store = setting.folder / "counted_import.db";
  orlocalBenchCounted([&] { importFile(store, calendar); });
}

const store::Moment kAlarmsFrom =
    store::Moment(std::chrono::sys_days(std::chrono::year(2026) / 11 / 2).time_since_epoch());

/// Long enough for five alarms in the smallest store that is measured, too.
constexpr auto kStretchOfAlarms = std::chrono::days(60);

template <class Value>
Value ofStore(Result<Value> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  return *std::move(result);
}

/// The store that was copied for a task, opened anew, and its alarms.
struct AlarmsOfCopy {
  std::unique_ptr<store::CalendarStore> store = openStore(std::getenv("ORLOCAL_STORE"));
  store::AlarmTimetable alarms{*store, store::Zone::named("Europe/Berlin").value_or(store::Zone())};
};

void alarmsFound(const Setting&) {
  AlarmsOfCopy copy;
  orlocalBenchCounted([&] { ofStore(copy.alarms.nextFrom(kAlarmsFrom)); });
}

void alarmsLookedAt(const Setting&) {
  AlarmsOfCopy copy;
  ofStore(copy.alarms.nextFrom(kAlarmsFrom));
  orlocalBenchCounted([&] {
    for (int i = 0; i < 20; ++i) { ofStore(copy.alarms.nextFrom(kAlarmsFrom)); }
  });
}

void alarmsOfChanges(const Setting&) {
  AlarmsOfCopy copy, other;
  ofStore(copy.alarms.nextFrom(kAlarmsFrom));
  const auto rings = ofStore(copy.alarms.between(kAlarmsFrom, kAlarmsFrom + kStretchOfAlarms));
  if (rings.size() < 5) { throw std::runtime_error("too few alarms to change"); }
  orlocalBenchCounted([&] {
    for (int i = 0; i < 5; ++i) {
      const auto item = ofStore(other.store->item(rings[static_cast<std::size_t>(i)].row));
      store::ItemEdit edit{item, *item, {store::ItemField::kTitle}, std::nullopt};
      edit.values.title = fmt::format("Changed {}", i);
      ofStore(other.store->saveEvent(edit, std::nullopt, store::Span::kAll));
      ofStore(copy.alarms.nextFrom(kAlarmsFrom));
    }
  });
}

constexpr struct {
  const char* name;   ///< on the command line
  const char* words;  ///< in the report
  void (*run)(const Setting&);
  bool withPlugin;
} kTasks[] = {
    {"known", "20 stretches of 8 days of a month that was answered", knownStretches, true},
    {"new", "20 stretches of 8 days never asked for", newStretches, true},
    {"save", "20 new events saved", saves, true},
    {"open", "every event of a month opened, five properties each", opensAndProperties, true},
    {"alarms", "who has alarms, and which rings next", alarmsFound, false},
    {"look", "20 looks which alarm rings next, when nothing has changed", alarmsLookedAt, false},
    {"timed", "5 events with alarms saved, heard of and timed anew", alarmsOfChanges, false},
    {"import", "import of 1,000 events", importOfAThousand, false},
};

std::uint64_t countedIn(const std::filesystem::path& file) {
  std::ifstream in(file);
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("summary: ", 0) == 0) { return std::strtoull(line.c_str() + 9, nullptr, 10); }
  }
  throw std::runtime_error("valgrind counted nothing");
}

}  // namespace

void measureInstructions(Report& report, const Setting& setting) {
  if (std::system("command -v valgrind >/dev/null 2>&1") != 0) {
    report.note("Instructions were not counted: there is no valgrind here.");
    return;
  }
  const std::size_t events = setting.smoke ? setting.sizes.front() : 10'000;
  calendarFile(setting, 1'000);
  const auto counts = setting.folder / "callgrind";
  for (const auto& task : kTasks) {
    useStore(copyOfStore(setting, events, "counted"));
    ownProcess(setting, fmt::format("--task {}", task.name),
               fmt::format("valgrind -q --tool=callgrind --toggle-collect=orlocalBenchCounted "
                           "--callgrind-out-file='{}'",
                           counts.string()));
    report.add(InstructionCount{task.words, events, countedIn(counts)});
  }
}

void doTask(const Setting& setting, const std::string& name) {
  for (const auto& task : kTasks) {
    if (name != task.name) { continue; }
    const auto plugin = task.withPlugin ? startPlugin(setting.plugin) : nullptr;
    task.run(setting);
    return;
  }
  throw std::runtime_error("there is no task \"" + name + "\"");
}

}  // namespace orlocal::bench
