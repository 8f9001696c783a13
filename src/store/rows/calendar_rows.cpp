#include "store/rows/calendar_rows.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/file/checked_row.h"

namespace orlocal::store {
namespace {

Result<Calendar> calendarOf(const Statement& statement, const Database& database) {
  CheckedRow row(statement);
  Calendar calendar;
  calendar.id = row.id(0);
  calendar.identifier = row.uuid(1).text();
  calendar.kind = row.oneOf(2, CalendarKind::kBoth);
  calendar.source = row.number(3);
  calendar.title = row.text(4);
  const auto part = [&](int column) { return row.isNull(column) ? 0 : row.real(column); };
  if (!row.isNull(5)) { calendar.color = Rgb{part(5), part(6), part(7)}; }
  calendar.order = row.number(8);
  calendar.readOnly = row.flag(9);
  calendar.subscribed = row.flag(10);
  calendar.immutable = row.flag(11);
  // The source of a damaged store may be gone.
  if (!row.isNull(12)) { calendar.type = row.oneOf(12, Source::Type::kBirthday); }
  calendar.notes = row.optionalText(13);
  if (!row.sound()) { return damaged(database, tr("The calendar {}", statement.integer(0))); }
  return calendar;
}

/// What would not be read again is not written.
Status checkBeforeWriting(std::string_view title, const std::optional<std::string>& notes = std::nullopt) {
  if (isUtf8(title) && (!notes || isUtf8(*notes))) { return {}; }
  return failure(ErrorCode::kRefused, tr("The title or the notes of a calendar are not UTF-8; write them in UTF-8."));
}

bool isColor(const Rgb& color) {
  return std::isfinite(color.red) && std::isfinite(color.green) && std::isfinite(color.blue);
}

/// All but the identifier.
void bindValues(Statement& statement, const Calendar& calendar) {
  statement.bind(1, static_cast<std::int64_t>(calendar.kind)).bind(2, calendar.source);
  statement.bind(3, std::string_view(calendar.title)).bindNull(4).bindNull(5).bindNull(6);
  if (calendar.color && isColor(*calendar.color)) {
    statement.bind(4, calendar.color->red).bind(5, calendar.color->green).bind(6, calendar.color->blue);
  }
  statement.bind(7, calendar.order).bind(8, std::int64_t{calendar.readOnly});
  statement.bind(9, std::int64_t{calendar.subscribed}).bind(10, std::int64_t{calendar.immutable}).bindNull(11);
  if (calendar.notes) { statement.bind(11, std::string_view(*calendar.notes)); }
}

std::string_view defaultPropertyOf(CalendarKind kind) {
  return kind == CalendarKind::kReminders ? "default_reminders" : "default_events";
}

}  // namespace

Result<std::vector<Source>> CalendarRows::sources() {
  Statement& read = m_sources.in(m_database);
  const ResetAtExit reset(read);
  std::vector<Source> sources;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return sources; }
    CheckedRow row(read);
    Source source;
    source.id = row.id(0);
    source.identifier = row.uuid(1).text();
    source.type = row.oneOf(2, Source::Type::kBirthday);
    source.title = row.text(3);
    if (!row.sound()) { return damaged(m_database, tr("The source {}", read.integer(0))); }
    sources.push_back(std::move(source));
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
  ORLOCAL_CHECK(checkBeforeWriting(source.title));
  Statement& insert = m_insertSource.in(m_database).bindBlob(1, uuid.bytes());
  insert.bind(2, static_cast<std::int64_t>(source.type)).bind(3, std::string_view(source.title));
  ORLOCAL_CHECK(insert.run());
  source.id = m_database.lastInsertId();
  source.identifier = uuid.text();
  return {};
}

Status CalendarRows::renameSource(SourceId id, std::string_view title) {
  ORLOCAL_CHECK(checkBeforeWriting(title));
  return m_renameSource.in(m_database).bind(1, title).bind(2, id).run();
}

Status CalendarRows::removeSource(SourceId id) { return m_removeSource.in(m_database).bind(1, id).run(); }

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
    if (!found) { return calendars; }
    ORLOCAL_TRY(Calendar calendar, calendarOf(statement, m_database));
    calendars.push_back(std::move(calendar));
  }
}

Result<std::optional<Calendar>> CalendarRows::first(Statement& statement) {
  const ResetAtExit reset(statement);
  ORLOCAL_TRY(const bool found, statement.step());
  if (!found) { return std::nullopt; }
  return calendarOf(statement, m_database);
}

Result<std::vector<Calendar>> CalendarRows::ofKind(CalendarKind kind) {
  return all(m_ofKind.in(m_database).bind(1, static_cast<std::int64_t>(kind)));
}

Result<std::optional<Calendar>> CalendarRows::withId(CalendarId id) {
  if (!m_kept || m_kept->id != id) { ORLOCAL_TRY(m_kept, first(m_withId.in(m_database).bind(1, id))); }
  return m_kept;
}

Result<std::optional<Calendar>> CalendarRows::withUuid(const Uuid& uuid) {
  return first(m_withUuid.in(m_database).bindBlob(1, uuid.bytes()));
}

Result<std::optional<Calendar>> CalendarRows::forNewItems(CalendarKind kind) {
  return first(m_forNewItems.in(m_database).bind(1, static_cast<std::int64_t>(kind)).bind(2, defaultPropertyOf(kind)));
}

Status CalendarRows::chooseForNewItems(CalendarKind kind, CalendarId id) {
  const std::string value = std::to_string(id);
  return m_choose.in(m_database).bind(1, defaultPropertyOf(kind)).bind(2, std::string_view(value)).run();
}

Status CalendarRows::insert(Calendar& calendar, const Uuid& uuid) {
  ORLOCAL_CHECK(checkBeforeWriting(calendar.title, calendar.notes));
  Statement& insert = m_insert.in(m_database);
  bindValues(insert, calendar);
  ORLOCAL_CHECK(insert.bindBlob(12, uuid.bytes()).run());
  calendar.id = m_database.lastInsertId();
  calendar.identifier = uuid.text();
  return {};
}

Status CalendarRows::update(const Calendar& calendar) {
  ORLOCAL_CHECK(checkBeforeWriting(calendar.title, calendar.notes));
  Statement& update = m_update.in(m_database);
  bindValues(update, calendar);
  return update.bind(12, calendar.id).run();
}

Status CalendarRows::remove(CalendarId id) { return m_remove.in(m_database).bind(1, id).run(); }

}  // namespace orlocal::store
