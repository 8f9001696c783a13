#include "store/export.h"

#include <map>
#include <string>

#include "store/icalendar_writer.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

/// Private zones come from the store; what the process knows already is the same.
Status makeKnown(CalendarStore& store, const std::string& zone) {
  if (Zone::named(zone)) return {};
  const auto text = store.privateZone(zone);
  if (!text) return tl::unexpected(text.error());
  return *text ? Zone::registerPrivate(zone, **text) : Status();
}

Status exportOne(CalendarStore& store, const Calendar& calendar, const TextSink& sink) {
  std::map<std::string, int> zones;
  const auto collected =
      store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) -> Status {
        collectZones(zones, main);
        for (const Item& item : changed) collectZones(zones, item);
        return {};
      });
  if (!collected) return collected;

  std::string text;
  writeCalendarHead(text, calendar);
  for (const auto& [zone, year] : zones) {
    if (auto status = makeKnown(store, zone); !status) return status;
    writeZone(text, zone, year);
  }
  const auto written =
      store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) -> Status {
        writeItem(text, main);
        for (const Item& item : changed) writeItem(text, item);
        if (text.size() < kPiece) return {};
        const Status status = sink(text);
        text.clear();
        return status;
      });
  if (!written) return written;
  writeCalendarEnd(text);
  return sink(text);
}

}  // namespace

Status exportCalendars(CalendarStore& store, const std::vector<Calendar>& calendars, const TextSink& sink) {
  for (const Calendar& calendar : calendars)
    if (auto status = exportOne(store, calendar, sink); !status) return status;
  return {};
}

}  // namespace orlocal::store
