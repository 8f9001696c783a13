#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "store/icalendar/icalendar_reader.h"
#include "store/icalendar/icalendar_writer.h"
#include "store/icalendar/vtimezone_writer.h"

// Any bytes: reading never crashes or hangs, and what was read is written so that it reads the same again.

namespace {

using namespace orlocal::store;

bool readsTheSame(const Item& item) {
  std::string text = "BEGIN:VCALENDAR\r\n";
  for (const auto& zone : {item.start, item.endOrDue(), item.recurrenceId}) {
    if (zone && zone->kind == CalendarTime::Kind::kZoned) { writeZone(text, zone->zone, 2020); }
  }
  writeItem(text, item);
  text += "END:VCALENDAR\r\n";
  auto reader = CalendarReader::ofText(text, "again.ics");
  if (!reader || reader->size() != 1) { return false; }
  ReadProblems problems;
  const ItemGroup group = reader->read(0, problems);
  const Item& again = group.main ? *group.main : group.changed.empty() ? item : group.changed.front();
  if (!group.main && group.changed.empty()) { return false; }
  std::string second;
  writeItem(second, again);
  return text.find(second) != std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto reader = CalendarReader::ofText(std::string(reinterpret_cast<const char*>(data), size), "fuzz.ics");
  if (!reader) { return 0; }
  ReadProblems problems;
  for (std::size_t i = 0; i < reader->size(); ++i) {
    const ItemGroup group = reader->read(i, problems);
    if (group.main && !readsTheSame(*group.main)) { std::abort(); }
  }
  return 0;
}
