#include "store/salvage.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/file_state.h"
#include "store/file/schema.h"
#include "store/icalendar/icalendar_writer.h"
#include "store/icalendar/private_zone.h"
#include "store/icalendar/vtimezone_writer.h"
#include "store/rows/calendar_rows.h"
#include "store/rows/item_rows.h"

namespace orlocal::store {
namespace {

constexpr std::size_t kTextAtOnce = std::size_t{1} << 16;
constexpr std::size_t kMostNotes = 100;
/// Where nothing says how many rows there were, the search ends after so many that are not there.
constexpr std::int64_t kSearched = 100'000;
/// A damaged count may claim any number; a store of ten years has given fewer.
constexpr std::int64_t kMostSearched = 2'000'000;
constexpr const char* kRecovered = "Recovered";

/// Numbers of rows as far as a statement comes before it meets damage; false when it met some.
bool gather(Database& database, const char* sql, std::set<std::int64_t>& numbers) {
  auto statement = database.prepare(sql);
  if (!statement) { return false; }
  for (;;) {
    const auto found = statement->step();
    if (!found) { return false; }
    if (!*found) { return true; }
    if (!statement->isNull(0)) { numbers.insert(statement->integer(0)); }
  }
}

class Salvaging {
 public:
  Salvaging(Database& database, const TextSink& sink)
      : m_database(database), m_sink(sink), m_rows(database), m_calendars(database) {}

  Result<SalvageReport> run(const std::vector<std::string>& titles) {
    findCalendars();
    findItems();
    for (const auto& [id, calendar] : m_found) {
      if (!titles.empty() && std::find(titles.begin(), titles.end(), calendar.title) == titles.end()) { continue; }
      ORLOCAL_CHECK(write(calendar, m_itemsOf[id]));
    }
    ORLOCAL_CHECK(writeWithoutPlace());
    return std::move(m_report);
  }

 private:
  /// Every number that a row of `table` has or may have had, from the places that name them.
  std::set<std::int64_t> numbersOf(const std::vector<const char*>& places, const char* lastNumber) {
    std::set<std::int64_t> named;
    bool whole = true;
    for (const char* place : places) { whole = gather(m_database, place, named) && whole; }
    m_certain = named;
    if (whole) { return named; }
    std::set<std::int64_t> last;
    const bool known = gather(m_database, lastNumber, last) && !last.empty();
    const std::int64_t highest = std::min(named.empty() ? 0 : *named.rbegin(), kMostSearched);
    const std::int64_t claimed = known ? *last.rbegin() : highest + kSearched;
    const std::int64_t end = std::min(claimed, kMostSearched);
    if (end < claimed) { note(tr("rows past number {} are looked for by what names them alone", end)); }
    for (std::int64_t number = 1; number <= end; ++number) { named.insert(named.end(), number); }
    return named;
  }

  void note(std::string line) {
    if (m_report.notes.size() < kMostNotes) { m_report.notes.push_back(std::move(line)); }
  }

  void findCalendars() {
    const auto ids = numbersOf({"SELECT id FROM calendars", "SELECT id FROM calendars ORDER BY id DESC"},
                               "SELECT seq FROM sqlite_sequence WHERE name = 'calendars'");
    for (const std::int64_t id : ids) {
      auto calendar = m_calendars.withId(id);
      if (calendar && *calendar) {
        m_found.emplace(id, std::move(**calendar));
      } else if (!calendar) {
        ++m_report.calendars;
        note(tr("calendar {} cannot be read", id));
      }
    }
  }

  void findItems() {
    const auto ids = numbersOf({"SELECT id FROM items", "SELECT id FROM items ORDER BY id DESC",
                                "SELECT id FROM items INDEXED BY items_by_uuid", "SELECT item FROM timeline"},
                               "SELECT max(seq) FROM changes");
    const std::set<std::int64_t> certain = m_certain;
    for (const std::int64_t id : ids) {
      const auto item = m_rows.read(id);
      if (item && *item) {
        m_itemsOf[(*item)->calendar].push_back(id);
        m_rows.forget(id);
      } else if (!item) {
        ++m_report.unreadable;
        note(certain.contains(id) ? tr("item {} is there and cannot be read", id)
                                  : tr("item {} cannot be read; it may have been removed before", id));
      } else if (certain.contains(id)) {
        // An index or the timeline names it, and the table has no such row any more.
        ++m_report.unreadable;
        note(tr("item {} is named and no longer there", id));
      }
    }
  }

  void makeKnown(const std::string& zone) {
    if (Zone::named(zone)) { return; }
    auto find = m_database.prepare("SELECT vtimezone FROM zones WHERE name = ?");
    if (find) {
      find->bind(1, std::string_view(zone));
      const auto found = find->step();
      if (found && *found && registerPrivateZone(zone, find->text(0))) { return; }
      if (found && !*found) {
        return;  // never described
      }
    }
    ++m_report.zones;
    note(tr("the zone \"{}\" cannot be read", zone));
  }

  Status write(const Calendar& calendar, const std::vector<std::int64_t>& ids) {
    std::map<std::string, int> zones;
    std::vector<std::shared_ptr<const Item>> items;
    for (const std::int64_t id : ids) {
      const auto item = m_rows.read(id);
      if (!item || !*item) { continue; }
      collectZones(zones, **item);
      m_rows.forget(id);
    }
    std::string text;
    writeCalendarHead(text, calendar);
    for (const auto& [zone, year] : zones) {
      makeKnown(zone);
      writeZone(text, zone, year);
    }
    for (const std::int64_t id : ids) {
      const auto item = m_rows.read(id);
      if (!item || !*item) { continue; }
      writeItem(text, **item);
      m_rows.forget(id);
      ++m_report.items;
      if (text.size() < kTextAtOnce) { continue; }
      ORLOCAL_CHECK(m_sink(text));
      text.clear();
    }
    writeCalendarEnd(text);
    return m_sink(text);
  }

  /// Items come whatever was asked for when nobody can say where they belong.
  Status writeWithoutPlace() {
    std::vector<std::int64_t> withoutPlace;
    for (const auto& [calendar, ids] : m_itemsOf) {
      if (!m_found.contains(calendar)) { withoutPlace.insert(withoutPlace.end(), ids.begin(), ids.end()); }
    }
    if (withoutPlace.empty()) { return {}; }
    std::sort(withoutPlace.begin(), withoutPlace.end());
    Calendar recovered;
    recovered.title = kRecovered;
    m_report.withoutPlace = static_cast<std::int64_t>(withoutPlace.size());
    note(tr("the calendars of {} items cannot be read; they are in \"{}\"", withoutPlace.size(), kRecovered));
    return write(recovered, withoutPlace);
  }

  Database& m_database;
  const TextSink& m_sink;
  ItemRows m_rows;
  CalendarRows m_calendars;
  std::set<std::int64_t> m_certain;  ///< of the last search: those that something names
  std::map<CalendarId, Calendar> m_found;
  std::map<CalendarId, std::vector<std::int64_t>> m_itemsOf;
  SalvageReport m_report;
};

}  // namespace

Result<SalvageReport> salvage(const std::filesystem::path& file, const std::vector<std::string>& titles,
                              std::chrono::milliseconds busyTimeout, const TextSink& sink) {
  if (!FileState::of(file)) {
    return failure(ErrorCode::kNotFound, tr("There is no calendar store at \"{}\".", file.string()));
  }
  auto database = openStoreAsItIs(file, busyTimeout);
  if (!database) {
    // Of what makes a store one nothing can be read; the rows have no meaning without it.
    return failure(database.error().code,
                   tr("Nothing of \"{}\" can be read: {}", file.string(), database.error().message));
  }
  return Salvaging(*database, sink).run(titles);
}

}  // namespace orlocal::store
