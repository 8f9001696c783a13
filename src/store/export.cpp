#include "store/export.h"

#include <map>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/calendar_layout.h"
#include "store/icalendar/icalendar_writer.h"
#include "store/icalendar/private_zone.h"
#include "store/icalendar/vtimezone_writer.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 16;

/// Whether the text reads as one item, and nothing in it reaches beyond.
bool isOneItem(std::string_view text) {
  const CalendarLayout layout = layoutOf(text);
  return layout.items.size() == 1 && layout.zones.empty() && layout.problems.refused.empty() &&
         layout.problems.warnings.empty() && layout.items.front().span.begin == 0 &&
         layout.items.front().span.end == text.size();
}

/// Without what is written as it came.
Item withoutKeptLines(Item item) {
  item.extra.clear();
  for (Alarm& alarm : item.alarms) { alarm.extra.clear(); }
  for (Attendee& attendee : item.attendees) { attendee.extra.clear(); }
  return item;
}

class Exporter {
 public:
  Exporter(CalendarStore& store, const TextSink& sink, const ExportOptions& options)
      : m_store(store), m_sink(sink), m_options(options) {}

  Status write(const Calendar& calendar) {
    std::map<std::string, int> zones;
    std::size_t items = 0;
    ORLOCAL_CHECK(m_store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) -> Status {
      if (!isWanted(main)) { return {}; }
      ++items;
      collectZones(zones, main);
      for (const Item& item : changed) { collectZones(zones, item); }
      return {};
    }));
    if (items == 0 && !m_options.emptyOnes) { return {}; }
    m_report.items += items;
    writeCalendarHead(m_text, calendar);
    for (const auto& [zone, year] : zones) {
      ORLOCAL_TRY(const std::string& text, zoneText(zone, year));
      m_text += text;
      ORLOCAL_CHECK(passOn(kPiece));
    }
    ORLOCAL_CHECK(m_store.forEachItem(calendar.id, [&](const Item& main, const std::vector<Item>& changed) -> Status {
      if (!isWanted(main)) { return {}; }
      add(calendar, main);
      for (const Item& item : changed) { add(calendar, item); }
      return passOn(kPiece);
    }));
    writeCalendarEnd(m_text);
    return passOn(kPiece);
  }
  Status finish() { return passOn(1); }
  ExportReport report() { return std::move(m_report); }

 private:
  bool isWanted(const Item& main) const { return !m_options.items || m_options.items->contains(main.id); }
  Status passOn(std::size_t least) {
    if (m_text.size() < least) { return {}; }
    auto status = m_sink(m_text);
    m_text.clear();
    return status;
  }

  void add(const Calendar& calendar, const Item& item) {
    m_item.clear();
    writeItem(m_item, item);
    const bool whole = isOneItem(m_item);
    if (!whole) {
      m_item.clear();
      writeItem(m_item, withoutKeptLines(item));
    }
    const bool written = whole || isOneItem(m_item);
    if (written) { m_text += m_item; }
    if (whole) { return; }
    m_report.notes.push_back(tr("\"{}\" in \"{}\" (UID {}) {}", item.title.value_or(""), calendar.title, item.uid,
                                written ? tr("has lines that would spoil what stands around it; they were left out")
                                        : tr("cannot be written so that it reads back; it was left out")));
  }

  /// Private zones come from the store; what the process knows already is the same.
  Status makeKnown(const std::string& zone) {
    if (Zone::named(zone)) { return {}; }
    ORLOCAL_TRY(const auto text, m_store.privateZone(zone));
    return text ? registerPrivateZone(zone, *text) : Status();
  }

  /// Many calendars name the same zone.
  Result<std::reference_wrapper<const std::string>> zoneText(const std::string& zone, int year) {
    constexpr std::size_t kKept = 64;
    const auto key = std::pair(zone, year);
    if (const auto known = m_zones.find(key); known != m_zones.end()) { return std::cref(known->second); }
    if (m_zones.size() >= kKept) { m_zones.clear(); }
    ORLOCAL_CHECK(makeKnown(zone));
    std::string text;
    writeZone(text, zone, year);
    if (!text.empty() && !isOneZone(text)) {
      m_report.notes.push_back(
          tr("the zone \"{}\" has lines that would spoil what stands around it; it was left out", zone));
      text.clear();
    }
    return std::cref(m_zones.emplace(key, std::move(text)).first->second);
  }

  CalendarStore& m_store;
  const TextSink& m_sink;
  const ExportOptions& m_options;
  std::string m_text, m_item;
  std::map<std::pair<std::string, int>, std::string> m_zones;
  ExportReport m_report;
};

}  // namespace

Result<ExportReport> exportCalendars(CalendarStore& store, const std::vector<Calendar>& calendars, const TextSink& sink,
                                     const ExportOptions& options) {
  Exporter exporter(store, sink, options);
  for (const Calendar& calendar : calendars) { ORLOCAL_CHECK(exporter.write(calendar)); }
  ORLOCAL_CHECK(exporter.finish());
  return exporter.report();
}

}  // namespace orlocal::store
