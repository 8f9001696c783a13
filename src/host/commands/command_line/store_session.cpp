#include "host/commands/command_line/store_session.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/try.h"
#include "store/location.h"

namespace orlocal::host {

Result<std::unique_ptr<store::CalendarStore>> openUserStore() {
  ORLOCAL_TRY(const auto file, store::userStoreFile());
  // A name that leads nowhere is found out by this; everything else about a file the store knows better.
  std::error_code error;
  if (std::filesystem::symlink_status(file, error).type() == std::filesystem::file_type::not_found) {
    return failure(
        ErrorCode::kNotFound,
        fmt::format("There is no calendar store at {}; `orlocal import` or `orlocal new` makes one.", file.string()));
  }
  return openOrMakeUserStore();
}

Result<std::unique_ptr<store::CalendarStore>> openOrMakeUserStore() {
  ORLOCAL_TRY(store::StoreOptions options, store::userStoreOptions(store::Zone::ofUser()));
  return store::CalendarStore::open(std::move(options));
}

Result<std::vector<store::Calendar>> allCalendars(store::CalendarStore& store) {
  ORLOCAL_TRY(auto calendars, store.calendars(store::CalendarKind::kEvents));
  ORLOCAL_TRY(auto lists, store.calendars(store::CalendarKind::kReminders));
  std::copy_if(std::move_iterator(lists.begin()), std::move_iterator(lists.end()), std::back_inserter(calendars),
               [](const store::Calendar& list) { return list.kind != store::CalendarKind::kBoth; });
  return calendars;
}

Result<std::vector<store::Calendar>> calendarsTitled(std::vector<store::Calendar> calendars,
                                                     const std::vector<std::string>& titles) {
  if (titles.empty()) { return calendars; }
  for (const std::string& title : titles) {
    if (std::any_of(calendars.begin(), calendars.end(), [&](const auto& each) { return each.title == title; })) {
      continue;
    }
    std::vector<std::string> known;
    for (const auto& calendar : calendars) { known.push_back('"' + calendar.title + '"'); }
    return failure(ErrorCode::kNotFound, fmt::format("There is no calendar or reminder list \"{}\"; there are {}.",
                                                     title, fmt::join(known, ", ")));
  }
  std::erase_if(calendars, [&](const store::Calendar& calendar) {
    return std::find(titles.begin(), titles.end(), calendar.title) == titles.end();
  });
  return calendars;
}

}  // namespace orlocal::host
