#include "host/commands/command_line/store_session.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/location.h"

namespace orlocal::host {
namespace {

/// The titles of what calendars are of.
class Sources {
 public:
  static Result<Sources> of(store::CalendarStore& store) {
    Sources sources;
    ORLOCAL_TRY(const auto all, store.sources());
    for (const store::Source& source : all) { sources.m_titles.emplace(source.id, source.title); }
    return sources;
  }
  std::string titleOf(const store::Calendar& calendar) const {
    const auto found = m_titles.find(calendar.source);
    return found != m_titles.end() ? found->second : std::string();
  }
  /// "Team (Work)".
  std::string fullNameOf(const store::Calendar& calendar) const {
    return fmt::format("{} ({})", calendar.title, titleOf(calendar));
  }

 private:
  std::map<store::SourceId, std::string> m_titles;
};

/// Those that `name` means: one of that identifier, else those of that title, else those of that title and source.
std::vector<std::size_t> placesOf(const std::string& name, const std::vector<store::Calendar>& calendars,
                                  const Sources& sources) {
  std::vector<std::size_t> places;
  const auto take = [&](const auto& isMeant) {
    for (std::size_t i = 0; i < calendars.size(); ++i) {
      if (isMeant(calendars[i])) { places.push_back(i); }
    }
    return !places.empty();
  };
  if (take([&](const store::Calendar& each) { return each.identifier == name; })) { return places; }
  if (take([&](const store::Calendar& each) { return each.title == name; })) { return places; }
  take([&](const store::Calendar& each) { return sources.fullNameOf(each) == name; });
  return places;
}

/// The titles in quotes, with what they are of where several bear one.
std::string namesOf(const std::vector<store::Calendar>& calendars, const Sources& sources) {
  std::map<std::string, int> bearers;
  for (const auto& calendar : calendars) { ++bearers[calendar.title]; }
  std::vector<std::string> names;
  for (const auto& calendar : calendars) {
    names.push_back('"' + (bearers[calendar.title] > 1 ? sources.fullNameOf(calendar) : calendar.title) + '"');
  }
  return fmt::format("{}", fmt::join(names, ", "));
}

Result<std::unique_ptr<store::CalendarStore>> opened(const store::Zone& viewer) {
  ORLOCAL_TRY(store::StoreOptions options, store::userStoreOptions(viewer));
  return store::CalendarStore::open(std::move(options));
}

/// A store in a temporary folder, which goes with it.
Result<std::shared_ptr<store::CalendarStore>> emptyStore() {
  std::error_code error;
  std::string folder = (std::filesystem::temp_directory_path(error) / "orlocal-trial-XXXXXX").string();
  if (error || ::mkdtemp(folder.data()) == nullptr) {
    return failure(ErrorCode::kIo, tr("There is no room for a trial in {}: {}", folder, systemReason(errno)));
  }
  ORLOCAL_TRY(store::StoreOptions options, store::userStoreOptions(store::Zone::ofUser()));
  options.file = std::filesystem::path(folder) / "calendar.db";
  ORLOCAL_TRY(auto empty, store::CalendarStore::open(std::move(options)));
  return std::shared_ptr<store::CalendarStore>(empty.release(), [folder](store::CalendarStore* store) {
    delete store;
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
  });
}

}  // namespace

Result<std::unique_ptr<store::CalendarStore>> openUserStore(const store::Zone& viewer) {
  ORLOCAL_TRY(const auto file, store::userStoreFile());
  // A name that leads nowhere is found out by this; everything else about a file the store knows better.
  std::error_code error;
  if (std::filesystem::symlink_status(file, error).type() == std::filesystem::file_type::not_found) {
    return failure(ErrorCode::kNotFound,
                   tr("There is no calendar store at {}; `orlocal import` or `orlocal new` makes one.", file.string()));
  }
  return opened(viewer);
}

Result<std::unique_ptr<store::CalendarStore>> openOrMakeUserStore() { return opened(store::Zone::ofUser()); }

Result<std::shared_ptr<store::CalendarStore>> openStoreToChange(bool dryRun, NoStore noStore) {
  if (!dryRun) {
    if (noStore == NoStore::kIsMade) { return openOrMakeUserStore(); }
    return openUserStore();
  }
  std::shared_ptr<store::CalendarStore> store;
  if (auto known = openUserStore()) {
    store = std::move(*known);
  } else if (noStore == NoStore::kIsMade && known.error().code == ErrorCode::kNotFound) {
    ORLOCAL_TRY(store, emptyStore());
  } else {
    return failure(std::move(known.error()));
  }
  store->rehearse();
  return store;
}

Result<std::vector<store::Calendar>> allCalendars(store::CalendarStore& store) {
  ORLOCAL_TRY(auto calendars, store.calendars(store::CalendarKind::kEvents));
  ORLOCAL_TRY(auto lists, store.calendars(store::CalendarKind::kReminders));
  std::copy_if(std::move_iterator(lists.begin()), std::move_iterator(lists.end()), std::back_inserter(calendars),
               [](const store::Calendar& list) { return list.kind != store::CalendarKind::kBoth; });
  return calendars;
}

Result<std::vector<store::Calendar>> calendarsTitled(store::CalendarStore& store,
                                                     const std::vector<std::string>& names) {
  ORLOCAL_TRY(auto all, allCalendars(store));
  if (names.empty()) { return all; }
  ORLOCAL_TRY(const Sources sources, Sources::of(store));
  std::vector<bool> meant(all.size(), false);
  for (const std::string& name : names) {
    const std::vector<std::size_t> places = placesOf(name, all, sources);
    if (places.empty()) {
      return failure(ErrorCode::kNotFound,
                     tr("There is no calendar or reminder list \"{}\"; there are {}.", name, namesOf(all, sources)));
    }
    for (const std::size_t place : places) { meant[place] = true; }
  }
  std::vector<store::Calendar> named;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (meant[i]) { named.push_back(std::move(all[i])); }
  }
  return named;
}

Result<std::vector<store::Calendar>> calendarsChosen(store::CalendarStore& store, const CalendarChoice& choice) {
  ORLOCAL_TRY(auto chosen, calendarsTitled(store, choice.only));
  if (choice.without.empty()) { return chosen; }
  ORLOCAL_TRY(const auto without, calendarsTitled(store, choice.without));
  std::erase_if(chosen, [&](const store::Calendar& each) {
    return std::any_of(without.begin(), without.end(), [&](const auto& left) { return left.id == each.id; });
  });
  if (chosen.empty()) { return failure(ErrorCode::kInvalid, tr("Every calendar and reminder list is left out.")); }
  return chosen;
}

Result<store::Calendar> theCalendar(store::CalendarStore& store, const std::string& name,
                                    std::optional<store::ItemKind> kind) {
  ORLOCAL_TRY(auto named, calendarsTitled(store, {name}));
  const bool several = named.size() > 1;
  if (kind && several) {
    std::erase_if(named, [&](const store::Calendar& each) { return !each.holds(*kind); });
  }
  if (named.size() == 1) { return named.front(); }
  if (named.empty()) {
    return failure(ErrorCode::kInvalid, *kind == store::ItemKind::kEvent ? tr("No \"{}\" holds events.", name)
                                                                         : tr("No \"{}\" holds reminders.", name));
  }
  ORLOCAL_TRY(const Sources sources, Sources::of(store));
  std::vector<std::string> words;
  for (const store::Calendar& each : named) {
    words.push_back(fmt::format("{} ({}; {})", each.identifier,
                                each.kind == store::CalendarKind::kReminders ? tr("reminders") : tr("events"),
                                sources.titleOf(each)));
  }
  return failure(ErrorCode::kRefused,
                 tr("There are {} calendars \"{}\"; name one by its identifier, or by its account as in "
                    "\"{} ({})\": {}.",
                    named.size(), name, named.front().title, sources.titleOf(named.front()), fmt::join(words, ", ")));
}

}  // namespace orlocal::host
