#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "store/calendar_store.h"
#include "store/export.h"
#include "store/import.h"

namespace orlocal::fuzz {

inline std::unique_ptr<store::CalendarStore> opened(const std::filesystem::path& file) {
  store::StoreOptions options;
  options.file = file;
  options.occurrenceBudget = 20'000;
  auto store = store::CalendarStore::open(std::move(options));
  if (!store) {
    std::fprintf(stderr, "%s\n", store.error().message.c_str());
    std::abort();
  }
  return *std::move(store);
}

inline std::vector<store::Calendar> calendarsOf(store::CalendarStore& store) {
  std::vector<store::Calendar> all;
  for (const auto kind : {store::CalendarKind::kEvents, store::CalendarKind::kReminders}) {
    const auto some = store.calendars(kind);
    if (!some) { std::abort(); }
    all.insert(all.end(), some->begin(), some->end());
  }
  return all;
}

inline std::string exported(store::CalendarStore& store, const std::vector<store::Calendar>& calendars) {
  std::string text;
  const auto done = store::exportCalendars(store, calendars, [&text](std::string_view piece) -> Status {
    text += piece;
    return {};
  });
  if (!done || !done->notes.empty()) { std::abort(); }
  return text;
}
inline std::string exported(store::CalendarStore& store) { return exported(store, calendarsOf(store)); }

/// Items of a calendar come in the order of the store, which an import that sorts them by place may change.
inline std::vector<std::string> sortedLines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

/// The lines of events and reminders, sorted.
inline std::vector<std::string> itemLines(const std::string& text) {
  std::vector<std::string> lines;
  bool inItem = false;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const std::string line = text.substr(at, end - at);
    inItem = inItem || line.starts_with("BEGIN:VEVENT") || line.starts_with("BEGIN:VTODO");
    if (inItem) { lines.push_back(line); }
    inItem = inItem && !line.starts_with("END:VEVENT") && !line.starts_with("END:VTODO");
    at = end + 1;
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

/// Ends the program with the two texts that should say the same.
[[noreturn]] inline void differ(const std::string& once, const std::string& twice) {
  std::fprintf(stderr, "exported first:\n%s\nexported from the copy:\n%s\n", once.c_str(), twice.c_str());
  std::abort();
}

inline void expectTaken(const Result<store::ImportReport>& report) {
  if (report && report->refused == 0) { return; }
  if (!report) { std::fprintf(stderr, "%s\n", report.error().message.c_str()); }
  if (report) {
    for (const auto& problem : report->problems) {
      std::fprintf(stderr, "%d: %s\n", problem.line, problem.message.c_str());
    }
  }
  std::abort();
}

/// What `store` exports is imported into a new store at `other`, which exports the same; anything else ends the
/// program.
inline void expectTheSameAgain(store::CalendarStore& store, const std::filesystem::path& other) {
  const std::string once = exported(store);
  const auto second = opened(other);
  expectTaken(store::importCalendarText(*second, once, "once.ics"));
  const std::string twice = exported(*second);
  if (sortedLines(once) != sortedLines(twice)) { differ(once, twice); }
}

/// The same calendar by calendar, for a store whose calendars may be empty, or have each other's titles, which an
/// import takes for one.
inline void expectTheSameItemsAgain(store::CalendarStore& store, const std::filesystem::path& other) {
  const auto second = opened(other);
  std::size_t number = 0;
  for (const store::Calendar& calendar : calendarsOf(store)) {
    const std::string text = exported(store, {calendar});
    if (itemLines(text).empty()) { continue; }
    store::ImportOptions options;
    options.calendarTitle = options.listTitle = "Copy " + std::to_string(++number);
    expectTaken(store::importCalendarText(*second, text, "once.ics", options));
  }
  const std::string once = exported(store);
  const std::string twice = exported(*second);
  if (itemLines(once) != itemLines(twice)) { differ(once, twice); }
}

}  // namespace orlocal::fuzz
