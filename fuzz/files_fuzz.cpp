#include "same_again.h"
#include "temporary_folder.h"

// A file on its whole way: imported, asked for, exported, imported elsewhere and exported again, which gives the same.

namespace {

using namespace orlocal;
using namespace orlocal::store;

void ask(CalendarStore& store, Moment from, std::chrono::days length) {
  EventQuery query{from, from + length, {}};
  for (const Calendar& calendar : fuzz::calendarsOf(store)) { query.calendars.push_back(calendar.id); }
  (void)store.occurrences(query);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 65'536) { return 0; }
  const fuzz::TemporaryFolder folder;
  const auto first = fuzz::opened(folder.file("first.db"));
  const auto read = importCalendarText(*first, std::string(fuzz::textOf(data, size)), "fuzz.ics");
  if (!read || read->added == 0) { return 0; }
  const Moment now{std::chrono::seconds(1'793'606'400)};
  ask(*first, now, std::chrono::days(31));
  ask(*first, now, std::chrono::days(366));
  fuzz::expectTheSameAgain(*first, folder.file("second.db"));
  return 0;
}
