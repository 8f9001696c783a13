#include <string_view>

#include "base/translation.h"
#include "host/commands/reports/report.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/item_words.h"

namespace orlocal::host {
namespace {

void addField(std::string& line, std::string_view text) {
  if (!line.empty()) { line += ','; }
  if (text.find_first_of(",\"\r\n") == std::string_view::npos && !text.empty()) {
    line += text;
    return;
  }
  line += '"';
  for (const char c : text) {
    if (c == '"') { line += '"'; }
    line += c;
  }
  line += '"';
}

std::string moment(store::LocalTime time, bool wholeDays) {
  return wholeDays ? isoDay(store::LocalDay(time)) : isoDay(store::LocalDay(time)) + ' ' + clockTime(time);
}

}  // namespace

std::string reportTable(const Report& report) {
  std::string table;
  const auto add = [&](std::initializer_list<std::string_view> fields) {
    std::string line;
    for (const std::string_view field : fields) { addField(line, field); }
    table += line + "\r\n";
  };
  add({"Kind", "Title", "Start", "End", "All day", "Calendar", "Location", "Status", "URL", "Notes", "Identifier"});
  for (const auto& entry : report.entries) {
    const GridEntry& shown = entry.shown;
    const store::Item& item = *shown.item;
    const bool event = item.kind == store::ItemKind::kEvent;
    const bool wholeDays = event ? item.allDay() : shown.wholeDays;
    const std::string end = !event ? "" : wholeDays ? isoDay(shown.lastDay()) : moment(shown.end, false);
    add({event ? "event" : "reminder", item.title.value_or(""), moment(shown.start, wholeDays), end,
         wholeDays ? "yes" : "no", entry.calendar, item.location.value_or(""), statusOf(item), item.url.value_or(""),
         item.notes.value_or(""), item.itemIdentifier});
  }
  return table;
}

}  // namespace orlocal::host
