#include <cstdio>
#include <string>

#include <fmt/format.h>

#include "files.h"
#include "own_process.h"
#include "parts.h"
#include "processes.h"
#include "solution.h"
#include "walking.h"

namespace orlocal::bench {
namespace {

constexpr double kKiBPerMiB = 1024;

}  // namespace

void measureMemory(Report& report, const Setting& setting) {
  const struct {
    const char* what;
    const char* name;
    double aim, aimOfLarge;
  } peaks[] = {{"months", "peak memory, twelve months answered", 32, 80},
               {"year", "peak memory, a year walked over", 44, 96}};
  for (const std::size_t events : setting.sizes) {
    useStore(storeFile(setting, events));
    for (const auto& peak : peaks) {
      const auto measured = [&] {
        // Begun anew, as a forked process would count what its parent had in memory.
        return Outcome{std::stod(ownProcess(setting, fmt::format("--peak {}", peak.what))) / kKiBPerMiB, 1};
      };
      Row row = compare(setting.smoke ? 1 : 3, {"", measured}, {});
      row.name = peak.name;
      row.events = events;
      row.unit = Unit::kMebibytes;
      row.aim = events < 500'000 ? peak.aim : peak.aimOfLarge;
      report.add(std::move(row));
    }
  }
}

void printPeakOf(const Setting& setting, const std::string& what) {
  const auto plugin = startPlugin(setting.plugin);
  if (what == "year") {
    walk(kYear2026);
  } else {
    const Ask ask = askPlugin();
    for (int month = 1; month <= 12; ++month) { ask(monthOf2026(month)); }
  }
  std::printf("%.0f\n", peakResidentKiB());
}

}  // namespace orlocal::bench
