#include "store/rows/item_rows.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/checked_row.h"
#include "store/rows/item_check.h"
#include "store/rows/timeline.h"

namespace orlocal::store {
namespace {

constexpr std::size_t kPrefetched = 512;

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
    if (!found) { return ids; }
    ids.push_back(statement.integer(0));
  }
}

}  // namespace

ItemRows::ItemRows(Database& database)
    : m_database(database),
      m_insert(ItemValues::kInsert, ItemValues::kInserted, kRowsAtOnce),
      m_read(ItemValues::kReadById),
      m_readByUid(ItemValues::kReadByUid),
      m_readByOwnUid(ItemValues::kReadByOwnUid),
      m_readForExpansion(ItemValues::kReadForExpansion),
      m_withUuid("SELECT id FROM items WHERE uuid = ?"),
      m_withUid(ItemValues::kIdWithUid),
      m_withOwnUid(ItemValues::kIdWithOwnUid),
      m_strays(
          "SELECT id FROM items WHERE uid_hash = ? AND uid_hash <> 0 AND original IS NOT NULL AND calendar = ? AND "
          "kind = ? AND uid = ? AND series IS NULL ORDER BY original"),
      m_strayAt(
          "SELECT id FROM items WHERE uid_hash = ? AND uid_hash <> 0 AND original = ? AND calendar = ? AND kind = ? "
          "AND "
          "uid = ? AND series IS NULL"),
      m_changedOf(
          "SELECT id, original, recurrence_id, recurrence_id_clock FROM items WHERE series = ? ORDER BY original"),
      // The title is asked for so that the row is looked at, and not the index alone.
      m_changedAt("SELECT id, title FROM items WHERE series = ? AND original = ?"),
      m_place("SELECT slot, slot_start, original, series, uid_hash FROM items WHERE id = ?"),
      m_uidHashes("SELECT uid_hash FROM items WHERE uid_hash <> 0 ORDER BY uid_hash"),
      m_highestId("SELECT ifnull(max(id), 0) FROM items"),
      m_update(ItemValues::kUpdate),
      m_updateInPlace(ItemValues::kUpdateInPlace),
      m_remove("DELETE FROM items WHERE id = ?"),
      m_newest("SELECT id, uuid FROM items ORDER BY id DESC LIMIT 1"),
      m_byCalendar("SELECT id, calendar FROM items WHERE series IS NULL ORDER BY id"),
      m_idsInCalendar("SELECT id FROM items WHERE calendar = ? ORDER BY series IS NULL, id"),
      m_idsWithAlarms("SELECT id FROM items WHERE alarms IS NOT NULL ORDER BY id"),
      m_zonedIds(
          "SELECT id FROM items WHERE start_clock NOT LIKE '=%' OR end_clock NOT LIKE '=%' OR "
          "recurrence_id_clock NOT LIKE '=%' OR series IS NOT NULL ORDER BY series IS NOT NULL, id") {}

void ItemRows::forgetAll() {
  m_kept.forgetAll();
  m_gatheredRows = 0;
  m_gathers = false;
}

Result<ItemId> ItemRows::highestId() {
  ORLOCAL_CHECK(writeRows());
  Statement& read = m_highestId.in(m_database);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  CheckedRow row(read);
  const std::int64_t highest = found ? row.number(0, 0) : 0;
  if (!row.sound()) { return damaged(m_database, tr("The table of items")); }
  return highest;
}

Status ItemRows::writeRows() {
  ORLOCAL_CHECK(m_insert.write(m_database, gathered(), [](Statement& insert, int before, const Gathered& row) {
    row.values.bindTo(insert, before);
  }));
  m_gatheredRows = 0;
  return {};
}

Status ItemRows::writeGathered() {
  m_gathers = false;
  return writeRows();
}

Status ItemRows::writeRow(ItemId id) {
  const bool meets = m_gatheredRows > 0 && m_gathered.front().id <= id;
  return meets ? writeRows() : Status();
}

Status ItemRows::writeRowsWithUid(std::int64_t hash) {
  const auto rows = gathered();
  const bool meets = std::any_of(rows.begin(), rows.end(),
                                 [&](const Gathered& row) { return row.uidHash == hash || row.uidHash == 0; });
  return meets ? writeRows() : Status();
}

Result<std::shared_ptr<const Item>> ItemRows::read(ItemId id) {
  if (auto item = kept(id)) { return item; }
  return load(id);
}

Result<std::shared_ptr<const Item>> ItemRows::readNamed(ItemId id) {
  ORLOCAL_TRY(auto item, read(id));
  if (item == nullptr) { return damaged(m_database, fmt::format("Item {}", id)); }
  return item;
}

Result<std::shared_ptr<const Item>> ItemRows::load(ItemId id) {
  ORLOCAL_CHECK(writeRow(id));
  Statement& read = m_read.in(m_database).bind(1, id);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(auto item, itemOf(read));
  // A large change meets each row once.
  if (item != nullptr && !m_gathers) { m_kept.keep(item); }
  return item;
}

Result<std::shared_ptr<const Item>> ItemRows::itemOf(Statement& read) {
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) { return std::shared_ptr<const Item>(); }
  ORLOCAL_TRY(Item item, ItemValues::read(read, m_database));
  return std::make_shared<const Item>(std::move(item));
}

Result<std::optional<ItemRows::Expandable>> ItemRows::readForExpansion(ItemId id) {
  ORLOCAL_CHECK(writeRows());
  Statement& read = m_readForExpansion.in(m_database).bind(1, id);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) { return std::nullopt; }
  Expandable result;
  ORLOCAL_TRY(result.item, ItemValues::readForExpansion(read, m_database, result.hasChanged));
  return result;
}

void ItemRows::prefetch(std::span<const ItemId> ids) {
  std::vector<ItemId> missing;
  for (const ItemId id : ids.first(std::min(ids.size(), kPrefetched))) {
    if (!m_kept.has(id)) { missing.push_back(id); }
  }
  // Neighbours in the file are read one after the other.
  std::sort(missing.begin(), missing.end());
  for (const ItemId id : missing) {
    if (!m_kept.has(id) && !load(id)) { return; }
  }
}

Result<std::optional<ItemId>> ItemRows::withUuid(const Uuid& uuid) {
  ORLOCAL_CHECK(writeRows());
  return firstId(m_withUuid.in(m_database).bindBlob(1, uuid.bytes()));
}

Result<std::optional<ItemId>> ItemRows::withUid(CalendarId calendar, ItemKind kind, std::string_view uid) {
  const std::int64_t hash = ItemValues::hashOf(uid);
  ORLOCAL_CHECK(writeRowsWithUid(hash));
  if (const auto identifier = Uuid::parse(uid)) {
    Statement& own = m_withOwnUid.in(m_database).bindBlob(1, identifier->bytes()).bind(2, calendar);
    ORLOCAL_TRY(const auto id, firstId(own.bind(3, static_cast<std::int64_t>(kind))));
    if (id) { return id; }
  }
  Statement& find = m_withUid.in(m_database).bind(1, hash).bind(2, calendar);
  return firstId(find.bind(3, static_cast<std::int64_t>(kind)).bind(4, uid));
}

Result<ItemRows::Known> ItemRows::readWithUid(CalendarId calendar, ItemKind kind, std::string_view uid) {
  const std::int64_t hash = ItemValues::hashOf(uid);
  ORLOCAL_CHECK(writeRowsWithUid(hash));
  if (const auto identifier = Uuid::parse(uid)) {
    Statement& own = m_readByOwnUid.in(m_database).bindBlob(1, identifier->bytes()).bind(2, calendar);
    ORLOCAL_TRY(Known known, knownIn(own.bind(3, static_cast<std::int64_t>(kind))));
    if (known.item != nullptr) { return known; }
  }
  Statement& find = m_readByUid.in(m_database).bind(1, hash).bind(2, calendar);
  return knownIn(find.bind(3, static_cast<std::int64_t>(kind)).bind(4, uid));
}

Result<ItemRows::Known> ItemRows::knownIn(Statement& find) {
  const ResetAtExit reset(find);
  Known known;
  ORLOCAL_TRY(known.item, itemOf(find));
  if (known.item == nullptr) { return known; }
  CheckedRow row(find);
  known.hasChanged = row.flag(ItemValues::kHasChanged);
  known.place.shelf = row.number(ItemValues::kShelf);
  known.place.shelfStart = row.seconds(ItemValues::kShelfStart);
  known.place.series = known.item->series;
  known.place.uidHash = ItemValues::uidHashOf(*known.item);
  if (!row.sound() || !Timeline::isShelf(known.place.shelf)) {
    return damaged(m_database, fmt::format("Item {}", known.item->id));
  }
  return known;
}

Status ItemRows::visitUidHashes(const std::function<void(std::int64_t)>& visit) {
  ORLOCAL_TRY(ItemId left, highestId());
  Statement& read = m_uidHashes.in(m_database);
  const ResetAtExit reset(read);
  for (std::int64_t last = INT64_MIN;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return {}; }
    const std::int64_t hash = read.integer(0);
    // A damaged index may go in circles.
    if (hash < last || --left < 0) { return damaged(m_database, tr("The table of items")); }
    last = hash;
    visit(hash);
  }
}

Result<std::vector<ItemId>> ItemRows::straysWithUid(CalendarId calendar, ItemKind kind, std::string_view uid) {
  const std::int64_t hash = ItemValues::hashOf(uid);
  ORLOCAL_CHECK(writeRowsWithUid(hash));
  Statement& find = m_strays.in(m_database).bind(1, hash).bind(2, calendar);
  return allIds(find.bind(3, static_cast<std::int64_t>(kind)).bind(4, uid));
}

Result<std::optional<ItemId>> ItemRows::strayAt(CalendarId calendar, ItemKind kind, std::string_view uid,
                                                std::int64_t original) {
  const std::int64_t hash = ItemValues::hashOf(uid);
  ORLOCAL_CHECK(writeRowsWithUid(hash));
  Statement& find = m_strayAt.in(m_database).bind(1, hash).bind(2, original).bind(3, calendar);
  return firstId(find.bind(4, static_cast<std::int64_t>(kind)).bind(5, uid));
}

Result<std::vector<ItemRows::Changed>> ItemRows::changedOf(ItemId series) {
  ORLOCAL_CHECK(writeRows());
  Statement& find = m_changedOf.in(m_database).bind(1, series);
  const ResetAtExit reset(find);
  std::vector<Changed> changed;
  for (;;) {
    ORLOCAL_TRY(const bool found, find.step());
    if (!found) { return changed; }
    CheckedRow row(find);
    const ItemId id = row.id(0);
    const std::int64_t original = row.seconds(1);
    auto recurrenceId = row.optionalTime(2);
    if (!row.sound() || !recurrenceId) { return damaged(m_database, fmt::format("Item {}", find.integer(0))); }
    changed.push_back({id, original, *std::move(recurrenceId)});
  }
}

Result<ItemId> ItemRows::changedAt(ItemId series, std::int64_t original) {
  ORLOCAL_CHECK(writeRows());
  ORLOCAL_TRY(const auto id, firstId(m_changedAt.in(m_database).bind(1, series).bind(2, original)));
  return id.value_or(0);
}

Result<std::optional<StoredPlace>> ItemRows::place(ItemId id) {
  ORLOCAL_CHECK(writeRow(id));
  Statement& read = m_place.in(m_database).bind(1, id);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) { return std::nullopt; }
  CheckedRow row(read);
  StoredPlace place;
  place.shelf = row.number(0);
  place.shelfStart = row.seconds(1);
  if (!row.isNull(2)) { place.original = row.seconds(2); }
  place.series = row.optionalId(3);
  place.uidHash = row.number(4, INT64_MIN, INT64_MAX);
  if (!row.sound() || !Timeline::isShelf(place.shelf)) { return damaged(m_database, fmt::format("Item {}", id)); }
  return place;
}

Status ItemRows::insert(Item& item, ItemId id, const Uuid& uuid, const RowPlace& place) {
  ORLOCAL_CHECK(checkBeforeWriting(item));
  if (!m_gathers) {
    ItemValues::bind(m_values, item, place);
    m_values.bind(ItemValues::kIdParameter, id).bindBlob(ItemValues::kUuidParameter, uuid.bytes());
    ORLOCAL_CHECK(
        m_insert.write(m_database, std::span<const RowValues>(&m_values, 1),
                       [](Statement& insert, int before, const RowValues& row) { row.bindTo(insert, before); }));
    item.id = id;
    return {};
  }
  Gathered& row = m_gathered[m_gatheredRows];
  ItemValues::bind(row.values, item, place);
  row.values.bind(ItemValues::kIdParameter, id).bindBlob(ItemValues::kUuidParameter, uuid.bytes());
  row.id = id;
  row.uidHash = ItemValues::uidHashOf(item);
  ++m_gatheredRows;
  if (m_gatheredRows == m_gathered.size()) { ORLOCAL_CHECK(writeRows()); }
  item.id = id;
  return {};
}

Status ItemRows::update(const Item& item, const RowPlace& place, const StoredPlace& before) {
  ORLOCAL_CHECK(checkBeforeWriting(item));
  forget(item.id);
  ORLOCAL_CHECK(writeRow(item.id));
  ItemValues::bind(m_values, item, place);
  m_values.bind(ItemValues::kIdParameter, item.id);
  const bool inPlace = before.original == place.original && before.series == item.series &&
                       before.uidHash == ItemValues::uidHashOf(item);
  Statement& update = (inPlace ? m_updateInPlace : m_update).in(m_database);
  m_values.bindTo(update, 0);
  return update.run();
}

Status ItemRows::remove(ItemId id) {
  forget(id);
  ORLOCAL_CHECK(writeRow(id));
  return m_remove.in(m_database).bind(1, id).run();
}

Result<ItemRows::Newest> ItemRows::newest() {
  ORLOCAL_CHECK(writeRows());
  Statement& read = m_newest.in(m_database);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) { return Newest(); }
  CheckedRow row(read);
  const Newest newest{row.id(0), row.uuid(1)};
  if (!row.sound()) { return damaged(m_database, tr("The newest item")); }
  return newest;
}

Result<std::map<CalendarId, std::vector<ItemId>>> ItemRows::idsByCalendar() {
  ORLOCAL_CHECK(writeRows());
  Statement& read = m_byCalendar.in(m_database);
  const ResetAtExit reset(read);
  std::map<CalendarId, std::vector<ItemId>> ids;
  for (ItemId last = 0;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return ids; }
    const ItemId id = read.integer(0);
    if (id <= last) { return damaged(m_database, tr("The table of items")); }
    last = id;
    ids[read.integer(1)].push_back(id);
  }
}

Result<std::vector<ItemId>> ItemRows::idsInCalendar(CalendarId calendar) {
  ORLOCAL_CHECK(writeRows());
  return allIds(m_idsInCalendar.in(m_database).bind(1, calendar));
}

Result<std::vector<ItemId>> ItemRows::idsWithAlarms() {
  ORLOCAL_CHECK(writeRows());
  return allIds(m_idsWithAlarms.in(m_database));
}

Result<std::vector<ItemId>> ItemRows::zonedIds() {
  ORLOCAL_CHECK(writeRows());
  return allIds(m_zonedIds.in(m_database));
}

}  // namespace orlocal::store
