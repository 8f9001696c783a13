// The events of the coming thirty days, read from a calendar store by a program of one's own.
//   c++ -std=c++20 month.cpp $(pkg-config --cflags --static --libs orlocalstore) -o month && ./month FILE
#include <chrono>
#include <iostream>

#include <fmt/format.h>

#include "store/calendar_store.h"
#include "store/time/clock.h"

using namespace orlocal;

// Failures are values: the first that is met is what `list` gives.
static Status list(const char* file) {
  const store::Zone zone = store::Zone::ofUser();
  auto opened = store::CalendarStore::open({.file = file, .viewer = zone});
  if (!opened) { return failure(opened.error()); }
  store::CalendarStore& calendars = **opened;

  store::EventQuery query;
  query.from = store::now();
  query.to = *query.from + std::chrono::days(30);
  const auto there = calendars.calendars(store::CalendarKind::kEvents);
  if (!there) { return failure(there.error()); }
  for (const store::Calendar& calendar : *there) { query.calendars.push_back(calendar.id); }

  const auto found = calendars.occurrences(query);
  if (!found) { return failure(found.error()); }
  for (const store::Occurrence& occurrence : *found) {
    // Of an occurrence that was changed the item is its own, of any other that of its series.
    const auto item = calendars.item(occurrence.item);
    if (!item) { return failure(item.error()); }
    const store::LocalTime start = zone.toLocal(occurrence.start);
    std::cout << fmt::format("{}-{:02}-{:02} {:02}:{:02}  {}\n", start.year(), start.month(), start.day(), start.hour(),
                             start.minute(), (*item)->title.value_or("(no title)"));
  }
  return {};
}

int main(int count, char** words) {
  const Status done = count == 2 ? list(words[1]) : failure(ErrorCode::kInvalid, "usage: month FILE");
  if (!done) { std::cerr << "month: " << done.error().message << '\n'; }
  return done ? 0 : 1;
}
