// A stretch of a thousand occurrences, in stores that grow: a query is to cost what its answer costs.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "floors.h"
#include "measurements.h"
#include "solution.h"
#include "store/time/zone.h"

namespace orlocal::bench {
namespace {

using store::LocalTime;

constexpr std::size_t kOccurrences = 1'000;
constexpr int kStretches = 40;

struct Stretch {
  LocalTime from, to;
};

/// Of equal length between two times, spread evenly.
std::vector<Stretch> stretchesBetween(LocalTime from, LocalTime to, std::int64_t length) {
  std::vector<Stretch> stretches;
  for (int i = 0; i < kStretches; ++i) {
    const LocalTime begin = from + (to - from - length) * i / kStretches;
    stretches.push_back({begin, begin + length});
  }
  return stretches;
}

std::u16string text(LocalTime time) {
  const std::string plain = fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", time.year(), time.month(), time.day(),
                                        time.hour(), time.minute(), time.second());
  return {plain.begin(), plain.end()};
}

std::int64_t utcSeconds(LocalTime local) {
  return std::chrono::floor<std::chrono::seconds>(store::Zone::ofUser().toMoment(local)).time_since_epoch().count();
}

/// Seconds of one stretch, answered by the plug-in after the month that begins at `known` was.
double answered(const Setting& setting, LocalTime known, const std::vector<Stretch>& stretches) {
  return inChild([&] {
    const auto plugin = startPlugin(setting.plugin);
    Call fetch(u"Orlo_EventsFetch", {u"", u"", u"", u""});
    Call count(u"Orlo_GetItemCountForType", {u"event"});
    const auto ask = [&](const Stretch& stretch) {
      const std::u16string from = text(stretch.from), to = text(stretch.to);
      fetch.setTexts({from, to, u"", u""});
      fetch.checked();
      count.checked();
    };
    ask({known, LocalTime(known.year(), known.month() + 1, 1)});
    return seconds([&] { std::for_each(stretches.begin(), stretches.end(), ask); }) / kStretches;
  });
}

double scanned(Floor& floor, std::size_t (Floor::*scan)(std::int64_t, std::int64_t),
               const std::vector<Stretch>& stretches) {
  const auto all = [&] {
    for (const Stretch& stretch : stretches) { (floor.*scan)(utcSeconds(stretch.from), utcSeconds(stretch.to)); }
  };
  all();
  return seconds(all) / kStretches;
}

}  // namespace

void measureStretches(Report& report, const Setting& setting, const std::filesystem::path& floorFile,
                      std::size_t events) {
  const LocalTime month(2026, 11, 1), next(2026, 12, 1);
  Floor floor(floorFile);
  const std::size_t inMonth = floor.scan(utcSeconds(month), utcSeconds(next));
  const auto length =
      static_cast<std::int64_t>(static_cast<double>(next - month) *
                                std::min(1.0, static_cast<double>(kOccurrences) / static_cast<double>(inMonth)));
  const auto measure = [&](std::string name, LocalTime known, const std::vector<Stretch>& stretches,
                           std::size_t (Floor::*scan)(std::int64_t, std::int64_t)) {
    Row row = compare(
        std::move(name), setting.rounds, [&] { return answered(setting, known, stretches); },
        [&] { return scanned(floor, scan, stretches); });
    row.events = events;
    row.rows = std::min(kOccurrences, inMonth);
    report.add(std::move(row));
  };
  const auto known = stretchesBetween(month, next, length);
  const auto fresh = stretchesBetween(LocalTime(2026, 1, 1), LocalTime(2026, 10, 1), length);
  measure("a stretch that was answered before, beside plain rows", month, known, &Floor::scan);
  measure("the same beside a covering index", month, known, &Floor::scanIndex);
  measure("a stretch never asked for, beside plain rows", month, fresh, &Floor::scan);
  measure("the same beside a covering index", month, fresh, &Floor::scanIndex);
}

}  // namespace orlocal::bench
