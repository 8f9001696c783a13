#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/item_values.h"
#include "store/model.h"
#include "store/sqlite.h"
#include "store/uuid.h"

namespace orlocal::store {

/// The rows of events and reminders. Reading keeps the rows last read, up to a bound.
class ItemRows {
 public:
  explicit ItemRows(Database& database);

  /// Null when there is no such row.
  Result<std::shared_ptr<const Item>> read(ItemId id);
  /// The same of a row that another row or an index names: it is there, or the file is damaged. Never null.
  Result<std::shared_ptr<const Item>> readNamed(ItemId id);
  struct Expandable {
    Item item;  ///< only what a series needs to be expanded
    bool hasChanged = false;
  };
  /// Not kept.
  Result<std::optional<Expandable>> readForExpansion(ItemId id);
  void prefetch(std::span<const ItemId> ids);
  void forget(ItemId id);
  void forgetAll();
  /// Whether the row is at hand without reading.
  std::shared_ptr<const Item> kept(ItemId id);

  Result<std::optional<ItemId>> withUuid(const Uuid& uuid);
  /// The event or reminder itself, not a changed occurrence.
  Result<std::optional<ItemId>> withUid(CalendarId calendar, ItemKind kind, std::string_view uid);
  /// Changed occurrences without a series, in the order of their original starts.
  Result<std::vector<ItemId>> straysWithUid(CalendarId calendar, ItemKind kind, std::string_view uid);
  Result<std::optional<ItemId>> strayAt(CalendarId calendar, ItemKind kind, std::string_view uid,
                                        std::int64_t original);

  struct Changed {
    ItemId id = 0;
    std::int64_t original = 0;
    CalendarTime recurrenceId;
  };
  /// The changed occurrences of a series, by original start.
  Result<std::vector<Changed>> changedOf(ItemId series);
  /// The one with that original start, 0 when there is none.
  Result<ItemId> changedAt(ItemId series, std::int64_t original);

  Result<std::optional<RowPlace>> place(ItemId id);
  /// Gives the item its id. `uuid` is the row's own identifier.
  Status insert(Item& item, const Uuid& uuid, const RowPlace& place);
  /// Changes everything but the identifier.
  Status update(const Item& item, const RowPlace& place);
  Status remove(ItemId id);
  /// The newest row's identifier; nil when there are none.
  Result<Uuid> newestUuid();

  /// The rows of each calendar that are no changed occurrence of a series, in the order in which they came.
  Result<std::map<CalendarId, std::vector<ItemId>>> idsByCalendar();
  /// Changed occurrences come first.
  Result<std::vector<ItemId>> idsInCalendar(CalendarId calendar);
  /// Every row with a time in a zone; changed occurrences come last.
  Result<std::vector<ItemId>> zonedIds();

 private:
  using Kept = std::unordered_map<ItemId, std::shared_ptr<const Item>>;

  Result<std::shared_ptr<const Item>> load(ItemId id);
  void keep(const std::shared_ptr<const Item>& item);

  Database& m_database;
  Kept m_recent, m_older;  ///< what is asked for moves to `m_recent`; when that is full, `m_older` goes
  ItemValues m_values;
  LazyStatement m_read, m_readForExpansion, m_withUuid, m_withUid, m_strays, m_strayAt, m_changedOf, m_changedAt,
      m_place, m_insert, m_update, m_remove, m_newestUuid, m_byCalendar, m_idsInCalendar, m_zonedIds;
};

}  // namespace orlocal::store
