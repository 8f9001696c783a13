#include "host/commands/guide/store_values.h"

#include <algorithm>
#include <set>

#include "accounts/account_book.h"
#include "base/result.h"
#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/time/clock.h"

namespace orlocal::host {

namespace {

using Titles = std::vector<std::string>;

/// More than anybody looks through, and few enough to be read at once.
constexpr std::size_t kMostItems = 500;
constexpr std::chrono::hours kBefore{24 * 31};
constexpr std::chrono::hours kAfter{24 * 93};

Result<Titles> calendarTitles(store::CalendarStore& store) {
  Titles titles;
  ORLOCAL_TRY(const auto calendars, allCalendars(store));
  for (const auto& calendar : calendars) { titles.push_back(calendar.title); }
  return titles;
}

Result<Titles> accountNames(store::CalendarStore& store) {
  Titles names;
  ORLOCAL_TRY(const auto accounts, accounts::AccountBook(store).all());
  for (const auto& account : accounts) { names.push_back(account.name); }
  return names;
}

Result<Titles> itemTitles(store::CalendarStore& store) {
  const store::Moment now = store::now();
  std::vector<store::CalendarId> events, lists;
  ORLOCAL_TRY(const auto calendars, allCalendars(store));
  for (const auto& calendar : calendars) {
    if (calendar.holds(store::CalendarKind::kEvents)) { events.push_back(calendar.id); }
    if (calendar.holds(store::CalendarKind::kReminders)) { lists.push_back(calendar.id); }
  }
  std::vector<store::ItemId> ids;
  ORLOCAL_TRY(const auto occurrences, store.occurrences({now - kBefore, now + kAfter, std::move(events)}));
  for (const auto& occurrence : occurrences) { ids.push_back(occurrence.item); }
  ORLOCAL_TRY(const auto reminders, store.reminders({store::ReminderQuery::Status::kOpen, {}, {}, std::move(lists)}));
  ids.insert(ids.end(), reminders.begin(), reminders.end());
  Titles titles;
  std::set<store::ItemId> seen;
  for (const store::ItemId id : ids) {
    if (!seen.insert(id).second) { continue; }
    if (seen.size() > kMostItems) { break; }
    ORLOCAL_TRY(const auto item, store.item(id));
    if (item && item->title) { titles.push_back(*item->title); }
  }
  return titles;
}

struct Asked {
  std::string_view what;
  Result<Titles> (*titles)(store::CalendarStore&);
};
constexpr Asked kAsked[] = {{"calendars", calendarTitles}, {"accounts", accountNames}, {"items", itemTitles}};

Result<Titles> titlesOf(std::string_view what) {
  ORLOCAL_TRY(const auto store, openUserStore());
  for (const Asked& row : kAsked) {
    if (row.what == what) { return row.titles(*store); }
  }
  return Titles();
}

}  // namespace

std::vector<std::string> storeValues(std::string_view what) {
  Titles titles = titlesOf(what).value_or(Titles());
  // What no line can hold, or would show as something else, cannot be chosen.
  std::erase_if(titles, [](const std::string& title) { return title.empty() || printable(title) != title; });
  std::sort(titles.begin(), titles.end());
  titles.erase(std::unique(titles.begin(), titles.end()), titles.end());
  return titles;
}

}  // namespace orlocal::host
