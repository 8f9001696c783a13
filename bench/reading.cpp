#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <fmt/format.h>

#include "dataset.h"
#include "floors.h"
#include "measurements.h"
#include "solution.h"
#include "store/calendar_store.h"
#include "store/import.h"

namespace orlocal::bench {
namespace {

using store::LocalTime;
using store::Moment;

constexpr std::u16string_view kMonthStart = u"2026-11-01 00:00:00";
constexpr std::u16string_view kMonthEnd = u"2026-12-01 00:00:00";
constexpr std::u16string_view kYearStart = u"2026-01-01 00:00:00";
constexpr std::u16string_view kYearEnd = u"2027-01-01 00:00:00";

std::int64_t utcSeconds(const LocalTime& local) {
  const Moment moment = store::Zone::ofUser().toMoment(local);
  return std::chrono::duration_cast<std::chrono::seconds>(moment.time_since_epoch()).count();
}

/// The same occurrences for the floor: expanded by the store, with the texts of their events.
std::vector<FloorRow> expandedYear(const std::filesystem::path& file) {
  store::StoreOptions options;
  options.file = file;
  options.viewer = store::Zone::ofUser();
  auto opened = store::CalendarStore::open(std::move(options));
  if (!opened) { throw std::runtime_error(opened.error().message); }
  store::EventQuery query;
  query.from = options.viewer.toMoment(LocalTime(2025, 12, 1, 0, 0, 0));
  query.to = options.viewer.toMoment(LocalTime(2027, 2, 1, 0, 0, 0));
  auto calendars = (*opened)->calendars(store::CalendarKind::kEvents);
  if (!calendars) { throw std::runtime_error(calendars.error().message); }
  for (const auto& calendar : *calendars) { query.calendars.push_back(calendar.id); }
  auto occurrences = (*opened)->occurrences(query);
  if (!occurrences) { throw std::runtime_error(occurrences.error().message); }
  std::vector<FloorRow> rows;
  for (const auto& occurrence : *occurrences) {
    auto item = (*opened)->item(occurrence.item);
    if (!item || !*item) { throw std::runtime_error("an occurrence without its event"); }
    rows.push_back({std::chrono::duration_cast<std::chrono::seconds>(occurrence.start.time_since_epoch()).count(),
                    std::chrono::duration_cast<std::chrono::seconds>(occurrence.end.time_since_epoch()).count(),
                    (*item)->title.value_or(""), (*item)->location.value_or(""), (*item)->notes.value_or(""),
                    (*item)->uid});
  }
  return rows;
}

std::int32_t fetchAndCount(std::u16string_view from, std::u16string_view to) {
  Call fetch(u"Orlo_EventsFetch", {from, to, u"", u""});
  fetch.checked();
  Call count(u"Orlo_GetItemCountForType", {u"event"});
  count.checked();
  return count.number();
}

double walkYear() {
  fetchAndCount(kYearStart, kYearEnd);
  Call open(u"Orlo_OpenItemAt", {u"event", u"1"});
  Call title(u"Orlo_GetProperty", {u"event", u"title"});
  Call start(u"Orlo_GetProperty", {u"event", u"startdate"});
  Call end(u"Orlo_GetProperty", {u"event", u"enddate"});
  Call location(u"Orlo_GetProperty", {u"event", u"location"});
  Call uid(u"Orlo_GetProperty", {u"event", u"externaluid"});
  return seconds([&] {
    const std::int32_t count = fetchAndCount(kYearStart, kYearEnd);
    for (std::int32_t i = 1; i <= count; ++i) {
      open.setLast(i);
      open();
      title();
      start();
      end();
      location();
      uid();
    }
  });
}

/// Runs this program anew, as a forked child would count what its parent had in memory.
double peakOfFreshProcess(const Setting& setting) {
  const std::string command = fmt::format("'{}' '{}' - --peak", setting.program.string(), setting.plugin.string());
  std::FILE* child = popen(command.c_str(), "r");
  double kib = 0;
  if (child == nullptr || std::fscanf(child, "%lf", &kib) != 1 || pclose(child) != 0) {
    throw std::runtime_error("the process that measures memory failed");
  }
  return kib;
}

void measureStore(Report& report, const Setting& setting, std::size_t events) {
  const std::filesystem::path ics = setting.folder / fmt::format("{}.ics", events);
  const std::filesystem::path file = setting.folder / fmt::format("{}.db", events);
  const std::filesystem::path floorFile = setting.folder / fmt::format("{}.floor", events);
  writeCalendarFile(ics, events);
  setenv("ORLOCAL_STORE", file.c_str(), 1);

  report.add(measureImport(setting, ics, file, events));
  measureTurns(report, setting, ics, events);

  const auto rows = expandedYear(file);
  Floor::build(floorFile, rows);
  const std::int64_t monthStart = utcSeconds(LocalTime(2026, 11, 1, 0, 0, 0));
  const std::int64_t monthEnd = utcSeconds(LocalTime(2026, 12, 1, 0, 0, 0));
  const std::int64_t yearStart = utcSeconds(LocalTime(2026, 1, 1, 0, 0, 0));
  const std::int64_t yearEnd = utcSeconds(LocalTime(2027, 1, 1, 0, 0, 0));

  const auto sized = [&](Row row, double aim, std::size_t count) {
    row.events = events;
    row.aim = aim;
    row.rows = count;
    report.add(std::move(row));
  };

  const std::size_t monthRows = Floor(floorFile).scan(monthStart, monthEnd);
  const std::size_t yearRows = Floor(floorFile).scan(yearStart, yearEnd);
  sized(compare(
            "open and first month", setting.rounds,
            [&] {
              return inChild([&] {
                const auto plugin = startPlugin(setting.plugin);
                return seconds([] { fetchAndCount(kMonthStart, kMonthEnd); });
              });
            },
            [&] { return inChild([&] { return seconds([&] { Floor(floorFile).scan(monthStart, monthEnd); }); }); }),
        3, monthRows);

  // One child for all warm rounds: the store's object lives as long as its process.
  const auto warm = [&](const std::string& name, double aim, std::size_t count, const std::function<double()>& subject,
                        std::int64_t from, std::int64_t to) {
    std::vector<double> ours;
    std::vector<double> floors;
    for (int round = 0; round <= setting.rounds; ++round) {
      const double ourTime = inChild([&] {
        const auto plugin = startPlugin(setting.plugin);
        subject();
        return subject();
      });
      const double floorTime = inChild([&] {
        Floor floor(floorFile);
        floor.scan(from, to);
        return seconds([&] { floor.scan(from, to); });
      });
      if (round == 0) { continue; }
      ours.push_back(ourTime);
      floors.push_back(floorTime);
    }
    Row row;
    row.name = name;
    row.subject = summarize(std::move(ours));
    row.floor = summarize(std::move(floors));
    sized(std::move(row), aim, count);
  };
  // Another month each time, so that no answer is kept.
  warm(
      "warm month", 2, monthRows,
      [] {
        fetchAndCount(u"2026-09-01 00:00:00", u"2026-10-01 00:00:00");
        return seconds([] { fetchAndCount(kMonthStart, kMonthEnd); });
      },
      monthStart, monthEnd);
  warm("walk over a year", 4.5, yearRows, walkYear, yearStart, yearEnd);

  measureStretches(report, setting, floorFile, events);

  report.note(fmt::format("peak resident memory, {} events, open and twelve months: {:.1f} MiB", events,
                          peakOfFreshProcess(setting) / 1024));
}

}  // namespace

void measureReading(Report& report, const Setting& setting) {
  for (const std::size_t events : setting.sizes) { measureStore(report, setting, events); }
}

void printPeakOfReading(const Setting& setting) {
  const auto plugin = startPlugin(setting.plugin);
  for (int month = 1; month <= 12; ++month) {
    const std::string from = fmt::format("2026-{:02}-01 00:00:00", month);
    const std::string to = fmt::format("2026-{:02}-28 23:00:00", month);
    fetchAndCount(std::u16string(from.begin(), from.end()), std::u16string(to.begin(), to.end()));
  }
  std::printf("%.0f\n", peakResidentKiB());
}

}  // namespace orlocal::bench
