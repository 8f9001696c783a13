#include "store/import.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

#include "floors.h"
#include "measurements.h"
#include "store/calendar_store.h"

namespace orlocal::bench {
namespace {

void importInto(const std::filesystem::path& file, const std::filesystem::path& ics) {
  for (const char* suffix : {"", "-wal", "-shm", "-bell"}) { std::filesystem::remove(file.string() + suffix); }
  store::StoreOptions options;
  options.file = file;
  options.viewer = store::Zone::ofUser();
  auto opened = store::CalendarStore::open(std::move(options));
  if (!opened) { throw std::runtime_error(opened.error().message); }
  auto report = store::importCalendarFile(**opened, ics, {});
  if (!report) { throw std::runtime_error(report.error().message); }
}

}  // namespace

Row measureImport(const Setting& setting, const std::filesystem::path& ics, const std::filesystem::path& file,
                  std::size_t events) {
  std::ifstream in(ics, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  const std::string whole = text.str();
  Row row = compare(
      "import of a file", setting.rounds > 3 ? 3 : 1, [&] { return seconds([&] { importInto(file, ics); }); },
      [&] { return seconds([&] { parseWithLibical(whole); }); });
  row.events = events;
  row.rows = events;
  row.aim = 2.5;
  return row;
}

}  // namespace orlocal::bench
