#include <algorithm>
#include <cstdio>
#include <vector>

#include "store/calendar_store.h"
#include "store/export.h"
#include "store/import.h"
#include "temporary_folder.h"

// A file on its whole way: imported, asked for, exported, imported elsewhere and exported again, which gives the same.

namespace {

using namespace orlocal::store;

std::unique_ptr<CalendarStore> opened(const std::filesystem::path& file) {
  StoreOptions options;
  options.file = file;
  options.occurrenceBudget = 20'000;
  auto store = CalendarStore::open(std::move(options));
  if (!store) std::abort();
  return *std::move(store);
}

std::vector<Calendar> calendarsOf(CalendarStore& store) {
  std::vector<Calendar> all;
  for (const auto kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    const auto some = store.calendars(kind);
    if (!some) std::abort();
    all.insert(all.end(), some->begin(), some->end());
  }
  return all;
}

std::string exported(CalendarStore& store) {
  std::string text;
  const auto done = exportCalendars(store, calendarsOf(store), [&text](std::string_view piece) -> Status {
    text += piece;
    return {};
  });
  if (!done || !done->notes.empty()) std::abort();
  return text;
}

/// Items of a calendar come in the order of the store, which an import that sorts them by place may change.
std::vector<std::string> sortedLines(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

void ask(CalendarStore& store, Moment from, std::chrono::days length) {
  EventQuery query{from, from + length, {}};
  for (const Calendar& calendar : calendarsOf(store)) query.calendars.push_back(calendar.id);
  (void)store.occurrences(query);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 65'536) return 0;
  const orlocal::fuzz::TemporaryFolder folder;
  const auto first = opened(folder.file("first.db"));
  const auto read = importCalendarText(*first, std::string(orlocal::fuzz::textOf(data, size)), "fuzz.ics");
  if (!read || read->added == 0) return 0;
  const Moment now{std::chrono::seconds(1'793'606'400)};
  ask(*first, now, std::chrono::days(31));
  ask(*first, now, std::chrono::days(366));
  const std::string once = exported(*first);
  const auto second = opened(folder.file("second.db"));
  const auto again = importCalendarText(*second, once, "once.ics");
  const std::string twice = again ? exported(*second) : std::string();
  if (!again || again->refused != 0 || sortedLines(once) != sortedLines(twice)) {
    std::fprintf(stderr, "exported first:\n%s\nexported from the copy:\n%s\n", once.c_str(), twice.c_str());
    if (again) {
      for (const auto& problem : again->problems)
        std::fprintf(stderr, "%d: %s\n", problem.line, problem.message.c_str());
    }
    std::abort();
  }
  return 0;
}
