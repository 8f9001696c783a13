#include "store/icalendar/item_text.h"

#include <map>

#include "store/icalendar/icalendar_writer.h"
#include "store/icalendar/vtimezone_writer.h"

namespace orlocal::store {

std::string itemComponents(const WholeItem& item) {
  std::string text;
  writeItem(text, item.main);
  for (const Item& changed : item.changed) { writeItem(text, changed); }
  return text;
}

std::string itemZones(const WholeItem& item) {
  std::map<std::string, int> zones;
  collectZones(zones, item.main);
  for (const Item& changed : item.changed) { collectZones(zones, changed); }
  std::string text;
  for (const auto& [name, year] : zones) { writeZone(text, name, year); }
  return text;
}

std::string itemText(const WholeItem& item) {
  std::string text;
  writePlainHead(text);
  text += itemZones(item);
  text += itemComponents(item);
  writeCalendarEnd(text);
  return text;
}

}  // namespace orlocal::store
