#include "store/calendar_rows.h"

#include <algorithm>

#include "store/try.h"

namespace orlocal::store {
namespace {

Calendar calendarOf(const Statement& row) {
  Calendar calendar;
  calendar.id = row.integer(0);
  calendar.identifier = Uuid(row.blob(1)).text();
  calendar.kind = static_cast<CalendarKind>(row.integer(2));
  calendar.source = row.integer(3);
  calendar.title = row.text(4);
  if (!row.isNull(5)) calendar.color = Rgb{row.real(5), row.real(6), row.real(7)};
  calendar.order = row.integer(8);
  calendar.readOnly = row.integer(9) != 0;
  calendar.subscribed = row.integer(10) != 0;
  calendar.immutable = row.integer(11) != 0;
  calendar.type = static_cast<Source::Type>(row.integer(12));
  if (!row.isNull(13)) calendar.notes = row.text(13);
  return calendar;
}

/// All but the identifier.
void bindValues(Statement& statement, const Calendar& calendar) {
  statement.bind(1, static_cast<std::int64_t>(calendar.kind)).bind(2, calendar.source);
  statement.bind(3, std::string_view(calendar.title)).bindNull(4).bindNull(5).bindNull(6);
  if (calendar.color) {
    statement.bind(4, calendar.color->red).bind(5, calendar.color->green).bind(6, calendar.color->blue);
  }
  statement.bind(7, calendar.order).bind(8, std::int64_t{calendar.readOnly});
  statement.bind(9, std::int64_t{calendar.subscribed}).bind(10, std::int64_t{calendar.immutable}).bindNull(11);
  if (calendar.notes) statement.bind(11, std::string_view(*calendar.notes));
}

}  // namespace

Result<std::vector<Source>> CalendarRows::sources() {
  Statement& read = m_sources.in(m_database);
  const ResetAtExit reset(read);
  std::vector<Source> sources;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) return sources;
    sources.push_back({read.integer(0), Uuid(read.blob(1)).text(), static_cast<Source::Type>(read.integer(2)),
                       std::string(read.text(3))});
  }
}

Result<std::optional<Source>> CalendarRows::source(SourceId id) {
  ORLOCAL_TRY(const std::vector<Source> all, sources());
  const auto found = std::find_if(all.begin(), all.end(), [&](const Source& source) { return source.id == id; });
  return found != all.end() ? std::optional(*found) : std::nullopt;
}

Result<std::optional<Source>> CalendarRows::localSource() {
  ORLOCAL_TRY(const std::vector<Source> all, sources());
  const auto found =
      std::find_if(all.begin(), all.end(), [](const Source& source) { return source.type == Source::Type::kLocal; });
  return found != all.end() ? std::optional(*found) : std::nullopt;
}

Status CalendarRows::insertSource(Source& source, const Uuid& uuid) {
  Statement& insert = m_insertSource.in(m_database).bindBlob(1, uuid.bytes());
  insert.bind(2, static_cast<std::int64_t>(source.type)).bind(3, std::string_view(source.title));
  ORLOCAL_CHECK(insert.run());
  source.id = m_database.lastInsertId();
  source.identifier = uuid.text();
  return {};
}

Status CalendarRows::removeUnusedSource(SourceId id) {
  return m_removeUnusedSource.in(m_database)
      .bind(1, id)
      .bind(2, static_cast<std::int64_t>(Source::Type::kSubscription))
      .run();
}

Result<std::vector<Calendar>> CalendarRows::all(Statement& statement) {
  const ResetAtExit reset(statement);
  std::vector<Calendar> calendars;
  for (;;) {
    ORLOCAL_TRY(const bool found, statement.step());
    if (!found) return calendars;
    calendars.push_back(calendarOf(statement));
  }
}

Result<std::optional<Calendar>> CalendarRows::first(Statement& statement) {
  const ResetAtExit reset(statement);
  ORLOCAL_TRY(const bool found, statement.step());
  return found ? std::optional(calendarOf(statement)) : std::nullopt;
}

Result<std::vector<Calendar>> CalendarRows::ofKind(CalendarKind kind) {
  return all(m_ofKind.in(m_database).bind(1, static_cast<std::int64_t>(kind)));
}

Result<std::optional<Calendar>> CalendarRows::withId(CalendarId id) {
  return first(m_withId.in(m_database).bind(1, id));
}

Result<std::optional<Calendar>> CalendarRows::withUuid(const Uuid& uuid) {
  return first(m_withUuid.in(m_database).bindBlob(1, uuid.bytes()));
}

Result<std::optional<Calendar>> CalendarRows::forNewItems(CalendarKind kind) {
  return first(m_forNewItems.in(m_database).bind(1, static_cast<std::int64_t>(kind)));
}

Status CalendarRows::insert(Calendar& calendar, const Uuid& uuid) {
  Statement& insert = m_insert.in(m_database);
  bindValues(insert, calendar);
  ORLOCAL_CHECK(insert.bindBlob(12, uuid.bytes()).run());
  calendar.id = m_database.lastInsertId();
  calendar.identifier = uuid.text();
  return {};
}

Status CalendarRows::update(const Calendar& calendar) {
  Statement& update = m_update.in(m_database);
  bindValues(update, calendar);
  return update.bind(12, calendar.id).run();
}

Status CalendarRows::remove(CalendarId id) { return m_remove.in(m_database).bind(1, id).run(); }

}  // namespace orlocal::store
