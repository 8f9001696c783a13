#include "store/item_values.h"

#include <algorithm>
#include <climits>

#include <fmt/format.h>

#include "store/calendar_text.h"
#include "store/checked_row.h"
#include "store/civil_days.h"
#include "store/item_check.h"
#include "store/try.h"
#include "store/uuid.h"
#include "store/zone.h"

namespace orlocal::store {
namespace {

#define ORLOCAL_ITEM_COLUMNS                                                                                       \
  "i.id, i.kind, i.calendar, i.uuid, i.series, i.\"start\", i.start_clock, i.\"end\", i.end_clock, i.recurrence, " \
  "i.recurrence_id, i.recurrence_id_clock, i.uid, i.priority, i.sequence, i.created, i.modified, i.completed, "    \
  "i.title, i.location, i.url, i.alarms, i.attendees, i.notes, i.extra, i.original, s.uuid "                       \
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
  kOriginal,
  kSeriesUuid
};

tl::unexpected<Error> damagedItem(const Database& database, const Statement& row) {
  return damaged(database, fmt::format("Item {}", row.integer(kId)));
}

/// What packed columns hold; false when one is damaged.
template <class T, class Unpack>
bool unpackColumn(CheckedRow& row, int column, const Unpack& unpack, T& out) {
  if (row.isNull(column)) return true;
  auto value = unpack(row.blob(column));
  if (value) out = std::move(*value);
  return value.has_value();
}

/// The kept lines begin with the item's stamp when it has one.
constexpr std::string_view kStamp = "DTSTAMP:";

void readExtra(std::string_view lines, Item& item) {
  if (lines.starts_with(kStamp)) {
    const auto line = lines.substr(0, lines.find('\n'));
    lines.remove_prefix(std::min(line.size() + 1, lines.size()));
    if (const auto stamp = parseTime(line.substr(kStamp.size()))) item.stamped = momentOf(*stamp, Zone());
  }
  item.extra = lines;
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
  time ? statement.bind(parameter, localSeconds(time->local)) : statement.bindNull(parameter);
  if (time && !(before && before->kind == time->kind && before->zone == time->zone)) {
    statement.bind(parameter + 1, clockName(*time));
  } else {
    statement.bindNull(parameter + 1);
  }
}

}  // namespace

const char* const ItemValues::kReadById = "SELECT " ORLOCAL_ITEM_COLUMNS "WHERE i.id = ?";
const char* const ItemValues::kReadForExpansion =
    "SELECT id, kind, \"start\", start_clock, \"end\", end_clock, recurrence, title, uid, "
    "EXISTS(SELECT 1 FROM items c WHERE c.series = i.id) FROM items i WHERE id = ?";
const char* const ItemValues::kInsert =
    "INSERT INTO items(kind, calendar, series, slot, slot_start, \"start\", start_clock, \"end\", end_clock, "
    "recurrence, recurrence_id, recurrence_id_clock, original, uid_hash, uid, priority, sequence, created, "
    "modified, completed, title, location, url, alarms, attendees, notes, extra, uuid) "
    "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18, ?19, ?20, ?21, "
    "?22, ?23, ?24, ?25, ?26, ?27, ?28)";
const char* const ItemValues::kUpdate =
    "UPDATE items SET kind=?1, calendar=?2, series=?3, slot=?4, slot_start=?5, \"start\"=?6, start_clock=?7, "
    "\"end\"=?8, end_clock=?9, recurrence=?10, recurrence_id=?11, recurrence_id_clock=?12, original=?13, "
    "uid_hash=?14, uid=?15, priority=?16, sequence=?17, created=?18, modified=?19, completed=?20, title=?21, "
    "location=?22, url=?23, alarms=?24, attendees=?25, notes=?26, extra=?27 WHERE id=?28";

std::int64_t ItemValues::hashOf(std::string_view uid) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : uid) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  return static_cast<std::int64_t>(hash);
}

Result<Item> ItemValues::read(const Statement& statement, const Database& database) {
  CheckedRow row(statement);
  Item item;
  item.id = row.id(kId);
  item.kind = row.oneOf(kKind, ItemKind::kReminder);
  item.calendar = row.id(kCalendar);
  item.itemIdentifier = row.uuid(kUuid).text();
  item.series = row.optionalId(kSeries);
  item.identifier = row.isNull(kSeriesUuid) ? item.itemIdentifier : row.uuid(kSeriesUuid).text();
  item.start = row.optionalTime(kStart);
  item.end = row.optionalTime(kEnd, row.isNull(kStartClock) ? std::string_view() : row.text(kStartClock));
  item.recurrenceId = row.optionalTime(kRecurrenceId);
  item.uid = row.text(kUid);
  item.priority = static_cast<int>(row.number(kPriority, INT_MIN, INT_MAX));
  item.sequence = row.number(kSequence);
  item.created = row.optionalMoment(kCreated);
  item.modified = row.optionalMoment(kModified);
  item.completed = row.optionalMoment(kCompleted);
  item.title = row.optionalText(kTitle);
  item.location = row.optionalText(kLocation);
  item.url = row.optionalText(kUrl);
  item.notes = row.optionalText(kNotes);
  if (!row.isNull(kExtra)) readExtra(row.text(kExtra), item);
  const bool unpacked = unpackColumn(row, kRecurrence, unpackRecurrence, item.recurrence) &&
                        unpackColumn(row, kAlarms, unpackAlarms, item.alarms) &&
                        unpackColumn(row, kAttendees, unpackAttendees, item.attendees);
  // What has an original start was written as the occurrence of a series, with the id of it.
  const bool whole = row.isNull(kOriginal) || item.recurrenceId;
  if (!unpacked || !whole || item.series == item.id || !row.sound() || !isSound(item)) {
    return damagedItem(database, statement);
  }
  return item;
}

Result<Item> ItemValues::readForExpansion(const Statement& statement, const Database& database, bool& hasChanged) {
  CheckedRow row(statement);
  Item item;
  item.id = row.id(0);
  item.kind = row.oneOf(1, ItemKind::kReminder);
  item.start = row.optionalTime(2);
  item.end = row.optionalTime(4, row.isNull(3) ? std::string_view() : row.text(3));
  item.title = row.optionalText(7);
  item.uid = row.text(8);
  hasChanged = row.flag(9);
  const bool unpacked = unpackColumn(row, 6, unpackRecurrence, item.recurrence);
  if (!unpacked || !row.sound() || !isSound(item)) return damagedItem(database, statement);
  return item;
}

void ItemValues::bind(Statement& statement, const Item& item, const RowPlace& place) {
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
  m_extra = item.stamped ? std::string(kStamp) + momentText(*item.stamped) + "\n" : std::string();
  if (!(m_extra += item.extra).empty()) statement.bind(27, std::string_view(m_extra));
}

}  // namespace orlocal::store
