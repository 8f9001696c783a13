#include "store/item_rows.h"

#include <algorithm>

#include <fmt/format.h>

#include "store/try.h"

namespace orlocal::store {
namespace {

/// Rows kept: enough for a walk with what it prefetched, small beside a store.
constexpr std::size_t kKept = 2048;
constexpr std::size_t kPrefetched = 512;

#define ORLOCAL_ITEM_COLUMNS                                                                                       \
  "i.id, i.kind, i.calendar, i.uuid, i.series, i.\"start\", i.start_clock, i.\"end\", i.end_clock, i.recurrence, " \
  "i.recurrence_id, i.recurrence_id_clock, i.uid, i.priority, i.sequence, i.created, i.modified, i.completed, "    \
  "i.title, i.location, i.url, i.alarms, i.attendees, i.notes, i.extra, s.uuid "                                   \
  "FROM items i LEFT JOIN items s ON s.id = i.series "

/// The columns above, in their order.
enum Column {
  kId,
  kKind,
  kCalendar,
  kUuid,
  kSeries,
  kStart,
  kStartClock,
  kEnd,
  kEndClock,
  kRecurrence,
  kRecurrenceId,
  kRecurrenceIdClock,
  kUid,
  kPriority,
  kSequence,
  kCreated,
  kModified,
  kCompleted,
  kTitle,
  kLocation,
  kUrl,
  kAlarms,
  kAttendees,
  kNotes,
  kExtra,
  kSeriesUuid
};

/// FNV-1a, 64 bits; part of the file format.
std::int64_t hashOf(std::string_view uid) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : uid) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  return static_cast<std::int64_t>(hash);
}

std::optional<std::string> optionalText(const Statement& row, int column) {
  return row.isNull(column) ? std::nullopt : std::optional<std::string>(row.text(column));
}

std::optional<Moment> optionalMoment(const Statement& row, int column) {
  return row.isNull(column) ? std::nullopt : std::optional(Moment(std::chrono::microseconds(row.integer(column))));
}

/// A time without a clock of its own runs on that of the time before it.
std::optional<CalendarTime> optionalTime(const Statement& row, int column, std::string_view clock = {}) {
  if (row.isNull(column)) return std::nullopt;
  return timeOnClock(row.integer(column), row.isNull(column + 1) ? clock : row.text(column + 1));
}

tl::unexpected<Error> damaged(ItemId id, const Database& database) {
  return failure(ErrorCode::kCorrupt,
                 fmt::format("Item {} of the calendar store \"{}\" is damaged; restore the file from a backup.", id,
                             database.file().string()));
}

/// What packed columns hold; false when one is damaged.
template <class T, class Unpack>
bool unpackColumn(const Statement& row, int column, const Unpack& unpack, T& out) {
  if (row.isNull(column)) return true;
  auto value = unpack(row.blob(column));
  if (value) out = std::move(*value);
  return value.has_value();
}

Result<Item> itemOf(const Statement& row, const Database& database) {
  Item item;
  item.id = row.integer(kId);
  item.kind = static_cast<ItemKind>(row.integer(kKind));
  item.calendar = row.integer(kCalendar);
  item.itemIdentifier = Uuid(row.blob(kUuid)).text();
  if (!row.isNull(kSeries)) item.series = row.integer(kSeries);
  item.identifier = row.isNull(kSeriesUuid) ? item.itemIdentifier : Uuid(row.blob(kSeriesUuid)).text();
  item.start = optionalTime(row, kStart);
  item.end = optionalTime(row, kEnd, row.text(kStartClock));
  item.recurrenceId = optionalTime(row, kRecurrenceId);
  item.uid = row.text(kUid);
  item.priority = static_cast<int>(row.integer(kPriority));
  item.sequence = row.integer(kSequence);
  item.created = optionalMoment(row, kCreated);
  item.modified = optionalMoment(row, kModified);
  item.completed = optionalMoment(row, kCompleted);
  item.title = optionalText(row, kTitle);
  item.location = optionalText(row, kLocation);
  item.url = optionalText(row, kUrl);
  item.notes = optionalText(row, kNotes);
  item.extra = row.text(kExtra);
  if (!unpackColumn(row, kRecurrence, unpackRecurrence, item.recurrence) ||
      !unpackColumn(row, kAlarms, unpackAlarms, item.alarms) ||
      !unpackColumn(row, kAttendees, unpackAttendees, item.attendees)) {
    return damaged(item.id, database);
  }
  return item;
}

void bindOptional(Statement& statement, int parameter, const std::optional<std::string>& text) {
  text ? statement.bind(parameter, std::string_view(*text)) : statement.bindNull(parameter);
}

void bindOptional(Statement& statement, int parameter, const std::optional<Moment>& moment) {
  moment ? statement.bind(parameter, std::int64_t{moment->time_since_epoch().count()}) : statement.bindNull(parameter);
}

void bindOptional(Statement& statement, int parameter, const std::optional<std::int64_t>& value) {
  value ? statement.bind(parameter, *value) : statement.bindNull(parameter);
}

/// `before` is the time whose clock is left out when this one runs on it too.
void bindTime(Statement& statement, int parameter, const std::optional<CalendarTime>& time,
              const std::optional<CalendarTime>& before = std::nullopt) {
  time ? statement.bind(parameter, wallSeconds(time->local)) : statement.bindNull(parameter);
  if (time && !(before && before->kind == time->kind && before->zone == time->zone)) {
    statement.bind(parameter + 1, clockName(*time));
  } else {
    statement.bindNull(parameter + 1);
  }
}

Result<std::optional<ItemId>> firstId(Statement& statement) {
  const ResetAtExit reset(statement);
  ORLOCAL_TRY(const bool found, statement.step());
  return found ? std::optional(statement.integer(0)) : std::nullopt;
}

Result<std::vector<ItemId>> allIds(Statement& statement) {
  const ResetAtExit reset(statement);
  std::vector<ItemId> ids;
  for (;;) {
    ORLOCAL_TRY(const bool found, statement.step());
    if (!found) return ids;
    ids.push_back(statement.integer(0));
  }
}

}  // namespace

ItemRows::ItemRows(Database& database)
    : m_database(database),
      m_read("SELECT " ORLOCAL_ITEM_COLUMNS "WHERE i.id = ?"),
      m_readForExpansion(
          "SELECT kind, \"start\", start_clock, \"end\", end_clock, recurrence, title, "
          "EXISTS(SELECT 1 FROM items c WHERE c.series = i.id) FROM items i WHERE id = ?"),
      m_withUuid("SELECT id FROM items WHERE uuid = ?"),
      m_withUid(
          "SELECT id FROM items WHERE uid_hash = ? AND original IS NULL AND calendar = ? AND kind = ? AND uid = ?"),
      m_strays(
          "SELECT id FROM items WHERE uid_hash = ? AND original IS NOT NULL AND calendar = ? AND kind = ? AND "
          "uid = ? AND series IS NULL ORDER BY original"),
      m_strayAt(
          "SELECT id FROM items WHERE uid_hash = ? AND original = ? AND calendar = ? AND kind = ? AND uid = ? AND "
          "series IS NULL"),
      m_changedOf(
          "SELECT id, original, recurrence_id, recurrence_id_clock FROM items WHERE series = ? ORDER BY original"),
      m_changedAt("SELECT id FROM items WHERE series = ? AND original = ?"),
      m_place("SELECT slot, slot_start, original FROM items WHERE id = ?"),
      m_insert(
          "INSERT INTO items(kind, calendar, series, slot, slot_start, \"start\", start_clock, \"end\", end_clock, "
          "recurrence, recurrence_id, recurrence_id_clock, original, uid_hash, uid, priority, sequence, created, "
          "modified, completed, title, location, url, alarms, attendees, notes, extra, uuid) "
          "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18, ?19, ?20, ?21, "
          "?22, ?23, ?24, ?25, ?26, ?27, ?28)"),
      m_update(
          "UPDATE items SET kind=?1, calendar=?2, series=?3, slot=?4, slot_start=?5, \"start\"=?6, start_clock=?7, "
          "\"end\"=?8, end_clock=?9, recurrence=?10, recurrence_id=?11, recurrence_id_clock=?12, original=?13, "
          "uid_hash=?14, uid=?15, priority=?16, sequence=?17, created=?18, modified=?19, completed=?20, title=?21, "
          "location=?22, url=?23, alarms=?24, attendees=?25, notes=?26, extra=?27 WHERE id=?28"),
      m_remove("DELETE FROM items WHERE id = ?"),
      m_newestUuid("SELECT uuid FROM items ORDER BY id DESC LIMIT 1"),
      m_inCalendar("SELECT " ORLOCAL_ITEM_COLUMNS "WHERE i.calendar = ? AND i.series IS NULL ORDER BY i.id"),
      m_idsInCalendar("SELECT id FROM items WHERE calendar = ? ORDER BY id") {}

std::shared_ptr<const Item> ItemRows::kept(ItemId id) {
  if (const auto found = m_recent.find(id); found != m_recent.end()) return found->second;
  const auto found = m_older.find(id);
  if (found == m_older.end()) return nullptr;
  auto item = found->second;
  m_older.erase(found);
  keep(item);
  return item;
}

void ItemRows::keep(const std::shared_ptr<const Item>& item) {
  if (m_recent.size() >= kKept / 2) {
    m_older = std::move(m_recent);
    m_recent.clear();
  }
  m_recent.insert_or_assign(item->id, item);
}

void ItemRows::forget(ItemId id) {
  m_recent.erase(id);
  m_older.erase(id);
}

void ItemRows::forgetAll() {
  m_recent.clear();
  m_older.clear();
}

Result<std::shared_ptr<const Item>> ItemRows::read(ItemId id) {
  if (auto item = kept(id)) return item;
  return load(id);
}

Result<std::shared_ptr<const Item>> ItemRows::load(ItemId id) {
  Statement& read = m_read.in(m_database).bind(1, id);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) return std::shared_ptr<const Item>();
  ORLOCAL_TRY(Item item, itemOf(read, m_database));
  auto shared = std::make_shared<const Item>(std::move(item));
  keep(shared);
  return shared;
}

Result<std::optional<ItemRows::Expandable>> ItemRows::readForExpansion(ItemId id) {
  Statement& read = m_readForExpansion.in(m_database).bind(1, id);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) return std::nullopt;
  Expandable result;
  result.hasChanged = read.integer(7) != 0;
  Item& item = result.item;
  item.id = id;
  item.kind = static_cast<ItemKind>(read.integer(0));
  item.start = optionalTime(read, 1);
  item.end = optionalTime(read, 3, read.text(2));
  item.title = optionalText(read, 6);
  if (!unpackColumn(read, 5, unpackRecurrence, item.recurrence)) return damaged(id, m_database);
  return result;
}

void ItemRows::prefetch(std::span<const ItemId> ids) {
  std::vector<ItemId> missing;
  for (const ItemId id : ids.first(std::min(ids.size(), kPrefetched))) {
    if (kept(id) == nullptr) missing.push_back(id);
  }
  // Neighbours in the file are read one after the other.
  std::sort(missing.begin(), missing.end());
  for (const ItemId id : missing) {
    if (kept(id) == nullptr && !load(id)) return;
  }
}

Result<std::optional<ItemId>> ItemRows::withUuid(const Uuid& uuid) {
  return firstId(m_withUuid.in(m_database).bindBlob(1, uuid.bytes()));
}

Result<std::optional<ItemId>> ItemRows::withUid(CalendarId calendar, ItemKind kind, std::string_view uid) {
  Statement& find = m_withUid.in(m_database).bind(1, hashOf(uid)).bind(2, calendar);
  return firstId(find.bind(3, static_cast<std::int64_t>(kind)).bind(4, uid));
}

Result<std::vector<ItemId>> ItemRows::straysWithUid(CalendarId calendar, ItemKind kind, std::string_view uid) {
  Statement& find = m_strays.in(m_database).bind(1, hashOf(uid)).bind(2, calendar);
  return allIds(find.bind(3, static_cast<std::int64_t>(kind)).bind(4, uid));
}

Result<std::optional<ItemId>> ItemRows::strayAt(CalendarId calendar, ItemKind kind, std::string_view uid,
                                                std::int64_t original) {
  Statement& find = m_strayAt.in(m_database).bind(1, hashOf(uid)).bind(2, original).bind(3, calendar);
  return firstId(find.bind(4, static_cast<std::int64_t>(kind)).bind(5, uid));
}

Result<std::vector<ItemRows::Changed>> ItemRows::changedOf(ItemId series) {
  Statement& find = m_changedOf.in(m_database).bind(1, series);
  const ResetAtExit reset(find);
  std::vector<Changed> changed;
  for (;;) {
    ORLOCAL_TRY(const bool found, find.step());
    if (!found) return changed;
    changed.push_back({find.integer(0), find.integer(1), timeOnClock(find.integer(2), find.text(3))});
  }
}

Result<ItemId> ItemRows::changedAt(ItemId series, std::int64_t original) {
  ORLOCAL_TRY(const auto id, firstId(m_changedAt.in(m_database).bind(1, series).bind(2, original)));
  return id.value_or(0);
}

Result<std::optional<RowPlace>> ItemRows::place(ItemId id) {
  Statement& read = m_place.in(m_database).bind(1, id);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) return std::nullopt;
  RowPlace place{read.integer(0), read.integer(1), std::nullopt};
  if (!read.isNull(2)) place.original = read.integer(2);
  return place;
}

void ItemRows::bindValues(Statement& statement, const Item& item, const RowPlace& place) {
  statement.bind(1, static_cast<std::int64_t>(item.kind)).bind(2, item.calendar);
  bindOptional(statement, 3, item.series);
  statement.bind(4, place.slot).bind(5, place.slotStart);
  bindTime(statement, 6, item.start);
  bindTime(statement, 8, item.end, item.start);
  statement.bindNull(10);
  if (!(item.recurrence == Recurrence())) {
    packRecurrence(item.recurrence, m_recurrence);
    statement.bindBlob(10, m_recurrence);
  }
  bindTime(statement, 11, item.recurrenceId);
  bindOptional(statement, 13, place.original);
  statement.bind(14, hashOf(item.uid)).bind(15, std::string_view(item.uid));
  statement.bind(16, std::int64_t{item.priority}).bind(17, item.sequence);
  bindOptional(statement, 18, item.created);
  bindOptional(statement, 19, item.modified);
  bindOptional(statement, 20, item.completed);
  bindOptional(statement, 21, item.title);
  bindOptional(statement, 22, item.location);
  bindOptional(statement, 23, item.url);
  statement.bindNull(24).bindNull(25).bindNull(27);
  if (!item.alarms.empty()) {
    packAlarms(item.alarms, m_alarms);
    statement.bindBlob(24, m_alarms);
  }
  if (!item.attendees.empty()) {
    packAttendees(item.attendees, m_attendees);
    statement.bindBlob(25, m_attendees);
  }
  bindOptional(statement, 26, item.notes);
  if (!item.extra.empty()) statement.bind(27, std::string_view(item.extra));
}

Status ItemRows::insert(Item& item, const Uuid& uuid, const RowPlace& place) {
  Statement& insert = m_insert.in(m_database);
  bindValues(insert, item, place);
  insert.bindBlob(28, uuid.bytes());
  ORLOCAL_CHECK(insert.run());
  item.id = m_database.lastInsertId();
  return {};
}

Status ItemRows::update(const Item& item, const RowPlace& place) {
  forget(item.id);
  Statement& update = m_update.in(m_database);
  bindValues(update, item, place);
  return update.bind(28, item.id).run();
}

Status ItemRows::remove(ItemId id) {
  forget(id);
  return m_remove.in(m_database).bind(1, id).run();
}

Result<Uuid> ItemRows::newestUuid() {
  Statement& read = m_newestUuid.in(m_database);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  return found ? Uuid(read.blob(0)) : Uuid();
}

Status ItemRows::visitCalendar(CalendarId calendar, const std::function<Status(const Item&)>& visit) {
  Statement& read = m_inCalendar.in(m_database).bind(1, calendar);
  const ResetAtExit reset(read);
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) return {};
    ORLOCAL_TRY(const Item item, itemOf(read, m_database));
    ORLOCAL_CHECK(visit(item));
  }
}

Result<std::vector<ItemId>> ItemRows::idsInCalendar(CalendarId calendar) {
  return allIds(m_idsInCalendar.in(m_database).bind(1, calendar));
}

}  // namespace orlocal::store
