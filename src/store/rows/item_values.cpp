#include "store/rows/item_values.h"

#include <algorithm>
#include <climits>

#include <fmt/format.h>

#include "base/hash.h"
#include "base/try.h"
#include "store/file/checked_row.h"
#include "store/file/uuid.h"
#include "store/rows/item_check.h"
#include "store/rows/packing.h"
#include "store/time/civil_days.h"
#include "store/time/clock_name.h"
#include "store/time/time_text.h"
#include "store/time/zone.h"

namespace orlocal::store {
namespace {

#define ORLOCAL_ITEM_COLUMNS                                                                                       \
  "i.id, i.kind, i.calendar, i.uuid, i.series, i.\"start\", i.start_clock, i.\"end\", i.end_clock, i.recurrence, " \
  "i.recurrence_id, i.recurrence_id_clock, i.uid, i.priority, i.sequence, i.created, i.modified, i.completed, "    \
  "i.title, i.location, i.url, i.alarms, i.attendees, i.notes, i.extra, i.original, s.uuid "
#define ORLOCAL_ITEM_AND_SERIES "FROM items i LEFT JOIN items s ON s.id = i.series "
#define ORLOCAL_WITH_UID \
  "WHERE i.uid_hash = ? AND i.uid_hash <> 0 AND i.original IS NULL AND i.calendar = ? AND i.kind = ? AND i.uid = ?"
#define ORLOCAL_WITH_OWN_UID "WHERE i.uuid = ? AND i.uid_hash = 0 AND i.calendar = ? AND i.kind = ?"
#define ORLOCAL_HAS_CHANGED "EXISTS(SELECT 1 FROM items c WHERE c.series = i.id) "

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

Failed damagedItem(const Database& database, const Statement& row) {
  return damaged(database, fmt::format("Item {}", row.integer(kId)));
}

/// What packed columns hold; false when one is damaged.
template <class T, class Unpack>
bool unpackColumn(CheckedRow& row, int column, const Unpack& unpack, T& out) {
  if (row.isNull(column)) { return true; }
  auto value = unpack(row.blob(column));
  if (value) { out = std::move(*value); }
  return value.has_value();
}

/// The kept lines begin with the item's stamp when it has one.
constexpr std::string_view kStamp = "DTSTAMP:";

void readExtra(std::string_view lines, Item& item) {
  if (lines.starts_with(kStamp)) {
    const auto line = lines.substr(0, lines.find('\n'));
    lines.remove_prefix(std::min(line.size() + 1, lines.size()));
    if (const auto stamp = parseTime(line.substr(kStamp.size()))) { item.stamped = momentOf(*stamp, Zone()); }
  }
  item.extra = lines;
}

void bindOptional(RowValues& values, int parameter, const std::optional<std::string>& text) {
  if (text) { values.bind(parameter, std::string_view(*text)); }
}

void bindOptional(RowValues& values, int parameter, const std::optional<Moment>& moment) {
  if (moment) { values.bind(parameter, std::int64_t{moment->time_since_epoch().count()}); }
}

void bindOptional(RowValues& values, int parameter, const std::optional<std::int64_t>& value) {
  if (value) { values.bind(parameter, *value); }
}

/// `before` is the time whose clock is left out when this one runs on it too.
void bindTime(RowValues& values, int parameter, const std::optional<CalendarTime>& time,
              const std::optional<CalendarTime>& before = std::nullopt) {
  if (!time) { return; }
  values.bind(parameter, localSeconds(time->local));
  if (before && before->kind == time->kind && before->zone == time->zone) { return; }
  values.bind(parameter + 1, clockName(*time));
}

}  // namespace

static_assert(ItemValues::kHasChanged == kSeriesUuid + 1);

const char* const ItemValues::kReadById = "SELECT " ORLOCAL_ITEM_COLUMNS ORLOCAL_ITEM_AND_SERIES "WHERE i.id = ?";
#define ORLOCAL_READ_KNOWN \
  "SELECT " ORLOCAL_ITEM_COLUMNS ", " ORLOCAL_HAS_CHANGED ", i.slot, i.slot_start " ORLOCAL_ITEM_AND_SERIES
const char* const ItemValues::kReadByUid = ORLOCAL_READ_KNOWN ORLOCAL_WITH_UID;
const char* const ItemValues::kReadByOwnUid = ORLOCAL_READ_KNOWN ORLOCAL_WITH_OWN_UID;
const char* const ItemValues::kIdWithUid = "SELECT i.id FROM items i " ORLOCAL_WITH_UID;
const char* const ItemValues::kIdWithOwnUid = "SELECT i.id FROM items i " ORLOCAL_WITH_OWN_UID;
const char* const ItemValues::kReadForExpansion =
    "SELECT id, kind, \"start\", start_clock, \"end\", end_clock, recurrence, title, uid, " ORLOCAL_HAS_CHANGED
    "FROM items i WHERE id = ?";
const char* const ItemValues::kInsert =
    "INSERT OR FAIL INTO items(kind, calendar, series, slot, slot_start, \"start\", start_clock, \"end\", end_clock, "
    "recurrence, recurrence_id, recurrence_id_clock, original, uid_hash, uid, priority, sequence, created, "
    "modified, completed, title, location, url, alarms, attendees, notes, extra, id, uuid)";
const char* const ItemValues::kUpdate =
    "UPDATE items SET kind=?1, calendar=?2, series=?3, slot=?4, slot_start=?5, \"start\"=?6, start_clock=?7, "
    "\"end\"=?8, end_clock=?9, recurrence=?10, recurrence_id=?11, recurrence_id_clock=?12, original=?13, "
    "uid_hash=?14, uid=?15, priority=?16, sequence=?17, created=?18, modified=?19, completed=?20, title=?21, "
    "location=?22, url=?23, alarms=?24, attendees=?25, notes=?26, extra=?27 WHERE id=?28";

const char* const ItemValues::kUpdateInPlace =
    "UPDATE items SET kind=?1, calendar=?2, slot=?4, slot_start=?5, \"start\"=?6, start_clock=?7, \"end\"=?8, "
    "end_clock=?9, recurrence=?10, recurrence_id=?11, recurrence_id_clock=?12, uid=?15, priority=?16, sequence=?17, "
    "created=?18, modified=?19, completed=?20, title=?21, location=?22, url=?23, alarms=?24, attendees=?25, "
    "notes=?26, extra=?27 WHERE id=?28";

std::int64_t ItemValues::hashOf(std::string_view uid) {
  const auto hash = static_cast<std::int64_t>(contentHash(uid));
  return hash != 0 ? hash : 1;
}

std::int64_t ItemValues::uidHashOf(const Item& item) { return item.uid == item.itemIdentifier ? 0 : hashOf(item.uid); }

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
  item.endOrDue() = row.optionalTime(kEnd, row.isNull(kStartClock) ? std::string_view() : row.text(kStartClock));
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
  if (!row.isNull(kExtra)) { readExtra(row.text(kExtra), item); }
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
  item.endOrDue() = row.optionalTime(4, row.isNull(3) ? std::string_view() : row.text(3));
  item.title = row.optionalText(7);
  item.uid = row.text(8);
  hasChanged = row.flag(9);
  const bool unpacked = unpackColumn(row, 6, unpackRecurrence, item.recurrence);
  if (!unpacked || !row.sound() || !isSound(item)) { return damagedItem(database, statement); }
  return item;
}

void ItemValues::bind(RowValues& values, const Item& item, const RowPlace& place) {
  values.clear();
  values.bind(1, static_cast<std::int64_t>(item.kind)).bind(2, item.calendar);
  bindOptional(values, 3, item.series);
  values.bind(4, place.shelf).bind(5, place.shelfStart);
  bindTime(values, 6, item.start);
  bindTime(values, 8, item.endOrDue(), item.start);
  PackedBytes packed;
  if (!(item.recurrence == Recurrence())) {
    packRecurrence(item.recurrence, packed);
    values.bindBlob(10, packed);
  }
  bindTime(values, 11, item.recurrenceId);
  bindOptional(values, 13, place.original);
  values.bind(14, uidHashOf(item)).bind(15, std::string_view(item.uid));
  values.bind(16, std::int64_t{item.priority}).bind(17, item.sequence);
  bindOptional(values, 18, item.created);
  bindOptional(values, 19, item.modified);
  bindOptional(values, 20, item.completed);
  bindOptional(values, 21, item.title);
  bindOptional(values, 22, item.location);
  bindOptional(values, 23, item.url);
  if (!item.alarms.empty()) {
    packAlarms(item.alarms, packed);
    values.bindBlob(24, packed);
  }
  if (!item.attendees.empty()) {
    packAttendees(item.attendees, packed);
    values.bindBlob(25, packed);
  }
  bindOptional(values, 26, item.notes);
  std::string extra;
  if (item.stamped) { extra.append(kStamp).append(momentText(*item.stamped)).append("\n"); }
  if (!extra.append(item.extra).empty()) { values.bind(27, std::string_view(extra)); }
}

}  // namespace orlocal::store
