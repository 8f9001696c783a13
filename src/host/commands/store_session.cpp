#include "host/commands/store_session.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "store/location.h"

namespace orlocal::host {

std::unique_ptr<store::CalendarStore> openUserStore() {
  return orFail(store::CalendarStore::open(orFail(store::userStoreOptions(store::Zone::ofUser()))));
}

std::vector<store::Calendar> allCalendars(store::CalendarStore& store) {
  auto calendars = orFail(store.calendars(store::CalendarKind::kEvents));
  auto lists = orFail(store.calendars(store::CalendarKind::kReminders));
  std::move(lists.begin(), lists.end(), std::back_inserter(calendars));
  return calendars;
}

std::vector<store::Calendar> calendarsTitled(std::vector<store::Calendar> calendars,
                                             const std::vector<std::string>& titles) {
  if (titles.empty()) return calendars;
  for (const std::string& title : titles) {
    if (std::any_of(calendars.begin(), calendars.end(), [&](const auto& each) { return each.title == title; }))
      continue;
    std::vector<std::string> known;
    for (const auto& calendar : calendars) known.push_back('"' + calendar.title + '"');
    throw CommandFailure(
        fmt::format("There is no calendar or reminder list \"{}\"; there are {}.", title, fmt::join(known, ", ")));
  }
  std::erase_if(calendars, [&](const store::Calendar& calendar) {
    return std::find(titles.begin(), titles.end(), calendar.title) == titles.end();
  });
  return calendars;
}

}  // namespace orlocal::host
