#include "files.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <span>
#include <sstream>
#include <stdexcept>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>

#include "dataset.h"
#include "floors.h"
#include "processes.h"
#include "store/import.h"

namespace orlocal::bench {
namespace {

using store::LocalTime;
using store::Occurrence;

template <class T>
T orThrow(Result<T> result) {
  if (!result) { throw std::runtime_error(result.error().message); }
  return *std::move(result);
}

std::int64_t secondsOf(store::Moment moment) {
  return std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
}

/// The rows of these occurrences, each with the texts of its event.
void addRows(FloorWriter& writer, store::CalendarStore& store, const std::vector<Occurrence>& occurrences) {
  std::vector<store::ItemId> ids;
  for (const Occurrence& occurrence : occurrences) { ids.push_back(occurrence.item); }
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
  std::unordered_map<store::ItemId, FloorRow> rows;
  constexpr std::size_t kTogether = 200;
  for (std::size_t begin = 0; begin < ids.size(); begin += kTogether) {
    const auto some = std::span(ids).subspan(begin, std::min(kTogether, ids.size() - begin));
    store.prefetch(some);
    for (const store::ItemId id : some) {
      const auto item = orThrow(store.item(id));
      if (item == nullptr) { throw std::runtime_error("an occurrence without its event"); }
      rows[id] = {0, 0, item->title.value_or(""), item->location.value_or(""), item->notes.value_or(""), item->uid};
    }
  }
  for (const Occurrence& occurrence : occurrences) {
    FloorRow& row = rows[occurrence.item];
    row.startSeconds = secondsOf(occurrence.start);
    row.endSeconds = secondsOf(occurrence.end);
    writer.add(row);
  }
}

/// Some days at a time, so that a year of many occurrences needs no more memory than these.
void expandYear(const std::filesystem::path& storeFile, const std::filesystem::path& floorFile) {
  const auto opened = openStore(storeFile);
  store::EventQuery query;
  for (const auto& calendar : orThrow(opened->calendars(store::CalendarKind::kEvents))) {
    query.calendars.push_back(calendar.id);
  }
  FloorWriter writer(floorFile);
  const store::Zone zone = store::Zone::ofUser();
  constexpr int kDaysTogether = 10;
  bool first = true;
  for (auto day = cctz::civil_day(2026, 1, 1); day.year() == 2026; day += kDaysTogether) {
    query.from = zone.toMoment(LocalTime(day));
    query.to = zone.toMoment(LocalTime(std::min(day + kDaysTogether, cctz::civil_day(2027, 1, 1))));
    // Those that began before were added with the days before, but for those that began before the year.
    const bool all = std::exchange(first, false);
    std::vector<Occurrence> occurrences;
    for (const Occurrence& occurrence : orThrow(opened->occurrences(query))) {
      if (all || occurrence.start >= *query.from) { occurrences.push_back(occurrence); }
    }
    addRows(writer, *opened, occurrences);
  }
  writer.finish();
}

template <class Make>
std::filesystem::path made(const std::filesystem::path& file, const Make& make) {
  if (!std::filesystem::exists(file)) {
    inChild([&] {
      make(file);
      return true;
    });
  }
  return file;
}

}  // namespace

std::filesystem::path calendarFile(const Setting& setting, std::size_t events) {
  return made(setting.folder / fmt::format("{}.ics", events),
              [&](const std::filesystem::path& file) { writeCalendarFile(file, events); });
}

std::filesystem::path storeFile(const Setting& setting, std::size_t events) {
  const auto calendar = calendarFile(setting, events);
  return made(setting.folder / fmt::format("{}.db", events),
              [&](const std::filesystem::path& file) { importFile(file, calendar); });
}

std::filesystem::path floorFile(const Setting& setting, std::size_t events) {
  const auto store = storeFile(setting, events);
  return made(setting.folder / fmt::format("{}.floor", events),
              [&](const std::filesystem::path& file) { expandYear(store, file); });
}

std::filesystem::path copyOfStore(const Setting& setting, std::size_t events, const std::string& name) {
  const auto copy = setting.folder / (name + ".db");
  removeStore(copy);
  std::filesystem::copy_file(storeFile(setting, events), copy);
  return copy;
}

void useStore(const std::filesystem::path& file) { setenv("ORLOCAL_STORE", file.c_str(), 1); }

void removeStore(const std::filesystem::path& file) {
  for (const char* suffix : {"", "-wal", "-shm", "-bell"}) { std::filesystem::remove(file.string() + suffix); }
}

std::unique_ptr<store::CalendarStore> openStore(const std::filesystem::path& file) {
  store::StoreOptions options;
  options.file = file;
  options.viewer = store::Zone::ofUser();
  return orThrow(store::CalendarStore::open(std::move(options)));
}

std::size_t importFile(const std::filesystem::path& store, const std::filesystem::path& calendar) {
  const auto opened = openStore(store);
  store::ImportOptions options;
  options.workers = store::workersThatPay();
  const auto report = orThrow(store::importCalendarFile(*opened, calendar, options));
  if (report.refused != 0) { throw std::runtime_error("a measured item was refused"); }
  return report.added + report.updated + report.unchanged;
}

std::string contentOf(const std::filesystem::path& file) {
  std::stringstream text;
  text << std::ifstream(file, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace orlocal::bench
