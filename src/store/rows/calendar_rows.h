#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "store/file/sqlite.h"
#include "store/file/uuid.h"
#include "store/model/model.h"

namespace orlocal::store {

/// The rows of sources and calendars.
class CalendarRows {
 public:
  explicit CalendarRows(Database& database) : m_database(database) {}

  Result<std::vector<Source>> sources();
  Result<std::optional<Source>> source(SourceId id);
  Result<std::optional<Source>> localSource();
  /// Gives the source its id.
  Status insertSource(Source& source, const Uuid& uuid);
  Status renameSource(SourceId id, std::string_view title);
  Status removeSource(SourceId id);
  /// Of a subscription whose calendars are gone; any other source stays.
  Status removeUnusedSource(SourceId id);

  /// Those that hold such items, in their order.
  Result<std::vector<Calendar>> ofKind(CalendarKind kind);
  /// Kept until `forget`: each save asks for the calendar that it goes to.
  Result<std::optional<Calendar>> withId(CalendarId id);
  Result<std::optional<Calendar>> withUuid(const Uuid& uuid);
  /// The one that was chosen or, where that is gone or allows no changes, the oldest one that does.
  Result<std::optional<Calendar>> forNewItems(CalendarKind kind);
  Status chooseForNewItems(CalendarKind kind, CalendarId id);

  /// Gives the calendar its id.
  Status insert(Calendar& calendar, const Uuid& uuid);
  Status update(const Calendar& calendar);
  Status remove(CalendarId id);
  /// Says that calendars or sources may have changed since, or that a change did not come about.
  void forget() { m_kept.reset(); }

 private:
  Result<std::vector<Calendar>> all(Statement& statement);
  Result<std::optional<Calendar>> first(Statement& statement);

  Database& m_database;
  std::optional<Calendar> m_kept;  ///< the one that was asked for last
  LazyStatement m_sources{"SELECT id, uuid, type, title FROM sources ORDER BY id"};
  LazyStatement m_insertSource{"INSERT INTO sources(uuid, type, title) VALUES(?, ?, ?)"};
  LazyStatement m_renameSource{"UPDATE sources SET title = ? WHERE id = ?"};
  LazyStatement m_removeSource{"DELETE FROM sources WHERE id = ?"};
  LazyStatement m_removeUnusedSource{
      "DELETE FROM sources WHERE id = ? AND type = ? AND NOT EXISTS(SELECT 1 FROM calendars WHERE source = "
      "sources.id)"};
#define ORLOCAL_CALENDAR_COLUMNS                                                                      \
  "SELECT c.id, c.uuid, c.kind, c.source, c.title, c.red, c.green, c.blue, c.position, c.read_only, " \
  "c.subscribed, c.immutable, s.type, c.notes FROM calendars c LEFT JOIN sources s ON s.id = c.source "
  /// One of both kinds comes with either, and one whose kind is damaged, so that it is missed: a store never looks
  /// emptier than it is.
  LazyStatement m_ofKind{ORLOCAL_CALENDAR_COLUMNS
                         "WHERE c.kind = ? OR (c.kind IS NOT 0 AND c.kind IS NOT 1) ORDER BY c.position, c.id"};
  LazyStatement m_withId{ORLOCAL_CALENDAR_COLUMNS "WHERE c.id = ?"};
  LazyStatement m_withUuid{ORLOCAL_CALENDAR_COLUMNS "WHERE c.uuid = ?"};
  LazyStatement m_forNewItems{ORLOCAL_CALENDAR_COLUMNS
                              "WHERE c.kind IN (?1, 2) AND NOT c.read_only ORDER BY c.id IS NOT (SELECT CAST(value AS "
                              "INTEGER) FROM properties WHERE name = ?2), c.id LIMIT 1"};
#undef ORLOCAL_CALENDAR_COLUMNS
  LazyStatement m_choose{"INSERT OR REPLACE INTO properties(name, value) VALUES(?, ?)"};
  LazyStatement m_insert{
      "INSERT INTO calendars(kind, source, title, red, green, blue, position, read_only, subscribed, immutable, notes, "
      "uuid) "
      "VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"};
  LazyStatement m_update{
      "UPDATE calendars SET kind = ?, source = ?, title = ?, red = ?, green = ?, blue = ?, position = ?, "
      "read_only = ?, subscribed = ?, immutable = ?, notes = ? WHERE id = ?"};
  LazyStatement m_remove{"DELETE FROM calendars WHERE id = ?"};
};

}  // namespace orlocal::store
