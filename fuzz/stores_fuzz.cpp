#include <cstddef>
#include <cstdint>

#include "store/calendar_store.h"
#include "store/export.h"
#include "store/salvage.h"
#include "temporary_folder.h"

// Any bytes as a store's file: opening, asking, exporting and salvaging fail with a reason or answer, and never crash.
// An input that does not begin as a database is laid over one that was just made, from its first two bytes on.

namespace {

using namespace orlocal::store;

orlocal::Status nowhere(std::string_view) { return {}; }

std::string freshStore(const orlocal::fuzz::TemporaryFolder& folder) {
  const auto file = folder.file("fresh.db");
  {
    StoreOptions options;
    options.file = file;
    const auto store = CalendarStore::open(std::move(options));
    if (store) {
      Item event;
      event.calendar = 1;
      event.title = "a b";
      event.start = event.end = CalendarTime{CalendarTime::Kind::kUtc, LocalTime(2026, 11, 2), ""};
      ItemEdit edit;
      edit.values = event;
      edit.set = ItemFields::all();
      (void)(*store)->saveEvent(edit, std::nullopt, Span::kThis);
      SearchQuery search;
      search.text = "a";
      (void)(*store)->search(search);
    }
  }
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void use(const std::filesystem::path& file) {
  StoreOptions options;
  options.file = file;
  options.occurrenceBudget = 20'000;
  options.busyTimeout = std::chrono::milliseconds(10);
  const auto store = CalendarStore::open(std::move(options));
  if (!store) { return; }
  EventQuery query{Moment(std::chrono::seconds(1'793'606'400)), Moment(std::chrono::seconds(1'796'284'800)), {}};
  for (const auto kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    const auto calendars = (*store)->calendars(kind);
    if (!calendars) { continue; }
    for (const Calendar& calendar : *calendars) { query.calendars.push_back(calendar.id); }
    (void)exportCalendars(**store, *calendars, nowhere);
  }
  (void)(*store)->occurrences(query);
  ReminderQuery reminders;
  reminders.calendars = query.calendars;
  (void)(*store)->reminders(reminders);
  SearchQuery search;
  search.text = "a";
  search.calendars = query.calendars;
  (void)(*store)->search(search);
  (void)(*store)->rebuildSearch();
  (void)(*store)->search(search);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3 || size > 262'144) { return 0; }
  const orlocal::fuzz::TemporaryFolder folder;
  static const std::string kFresh = freshStore(folder);
  std::string bytes(orlocal::fuzz::textOf(data, size));
  if (!bytes.starts_with("SQLite format 3")) {
    const std::size_t at = (std::size_t{data[0]} << 8 | data[1]) * 16 % kFresh.size();
    std::string laid = kFresh;
    laid.replace(at, std::min(bytes.size() - 2, laid.size() - at), bytes, 2);
    bytes = std::move(laid);
  }
  const auto file = folder.write("store.db", bytes);
  (void)salvage(file, {}, std::chrono::milliseconds(10), nowhere);
  use(file);
  return 0;
}
