#include <fmt/format.h>

#include "dataset.h"
#include "files.h"
#include "floors.h"
#include "parts.h"
#include "processes.h"

namespace orlocal::bench {
namespace {

/// Into a new store, in a process of its own, which reads with several threads.
Contender importing(std::string name, const Setting& setting, const std::filesystem::path& calendar) {
  return {std::move(name), [store = setting.folder / "imported.db", calendar] {
            removeStore(store);
            return inChild([&] {
              Outcome outcome;
              outcome.amount = seconds([&] { outcome.rows = importFile(store, calendar); });
              return outcome;
            });
          }};
}

Contender bareParse(const std::filesystem::path& calendar) {
  return {"libical's bare parse", [calendar] {
            return inChild([&] {
              const std::string text = contentOf(calendar);
              Outcome outcome;
              outcome.amount = seconds([&] { outcome.rows = parseWithLibical(text); });
              return outcome;
            });
          }};
}

}  // namespace

void measureImport(Report& report, const Setting& setting) {
  for (const std::size_t events : setting.sizes) {
    const auto calendar = calendarFile(setting, events);
    Row row = compare(setting.fewRoundsFor(events), importing("", setting, calendar), {bareParse(calendar)});
    row.name = "import of a file";
    row.events = events;
    row.aim = 1.0;
    report.add(std::move(row));
  }

  const std::size_t series = setting.smoke ? 100 : 2'000;
  const auto file = [&](int timesADay) {
    auto path = setting.folder / fmt::format("{}_a_day.ics", timesADay);
    writeDailySeries(path, series, timesADay);
    return path;
  };
  const auto four = file(4);
  Row row = compare(setting.rounds, importing("", setting, four),
                    {importing("as many that come once", setting, file(1)), bareParse(four)});
  row.name = "import of series that come four times a day";
  report.add(std::move(row));
}

}  // namespace orlocal::bench
