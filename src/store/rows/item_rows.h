#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "store/file/row_insert.h"
#include "store/file/row_values.h"
#include "store/file/sqlite.h"
#include "store/file/uuid.h"
#include "store/model/model.h"
#include "store/rows/item_values.h"
#include "store/rows/kept_items.h"

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
  void forget(ItemId id) { m_kept.forget(id); }
  /// What was kept back and not written goes, too.
  void forgetAll();
  /// Whether the row is at hand without reading.
  std::shared_ptr<const Item> kept(ItemId id) { return m_kept.find(id); }

  Result<std::optional<ItemId>> withUuid(const Uuid& uuid);
  /// The event or reminder itself, not a changed occurrence.
  Result<std::optional<ItemId>> withUid(CalendarId calendar, ItemKind kind, std::string_view uid);
  struct Known {
    std::shared_ptr<const Item> item;  ///< null when there is none
    bool hasChanged = false;           ///< whether there are changed occurrences of it
    StoredPlace place;
  };
  /// The same, read; not kept, as who asks this meets each row once.
  Result<Known> readWithUid(CalendarId calendar, ItemKind kind, std::string_view uid);
  /// The hash of every row's UID, in their order; not of those that are the rows' own identifiers.
  Status visitUidHashes(const std::function<void(std::int64_t)>& visit);
  /// The highest id that there is.
  Result<ItemId> highestId();
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

  Result<std::optional<StoredPlace>> place(ItemId id);
  /// Gives the item its id, which no row had before; `uuid` is the row's own identifier.
  Status insert(Item& item, ItemId id, const Uuid& uuid, const RowPlace& place);
  /// From now on what is inserted is kept back and written many rows at once: a large change costs less. It is written
  /// before any of it is read, changed or removed. Inside a write transaction.
  void gather() { m_gathers = true; }
  /// Writes what was kept back, and ends that.
  Status writeGathered();
  /// Changes everything but the identifier.
  Status update(const Item& item, const RowPlace& place, const StoredPlace& before);
  Status remove(ItemId id);
  struct Newest {
    ItemId id = 0;
    Uuid uuid;
  };
  /// What the newest row has been given; 0 and nil when there are none.
  Result<Newest> newest();

  /// The rows of each calendar that are no changed occurrence of a series, in the order in which they came.
  Result<std::map<CalendarId, std::vector<ItemId>>> idsByCalendar();
  /// Changed occurrences come first.
  Result<std::vector<ItemId>> idsInCalendar(CalendarId calendar);
  /// Every row with alarms, changed occurrences among them.
  Result<std::vector<ItemId>> idsWithAlarms();
  /// Every row with a time in a zone; changed occurrences come last.
  Result<std::vector<ItemId>> zonedIds();

 private:
  struct Gathered {
    ItemId id = 0;
    std::int64_t uidHash = 0;
    RowValues values;
  };
  static constexpr int kRowsAtOnce = 16;

  Result<std::shared_ptr<const Item>> load(ItemId id);
  Result<std::shared_ptr<const Item>> itemOf(Statement& read);
  Result<Known> knownIn(Statement& find);
  /// The first of them are in use.
  std::span<const Gathered> gathered() const { return std::span(m_gathered).first(m_gatheredRows); }
  Status writeRows();
  /// The same when the statement to come may meet a row of them.
  Status writeRow(ItemId id);
  Status writeRowsWithUid(std::int64_t hash);

  Database& m_database;
  KeptItems m_kept;
  std::vector<Gathered> m_gathered{kRowsAtOnce};
  std::size_t m_gatheredRows = 0;
  bool m_gathers = false;
  RowValues m_values;
  RowInsert m_insert;
  LazyStatement m_read, m_readByUid, m_readByOwnUid, m_readForExpansion, m_withUuid, m_withUid, m_withOwnUid, m_strays,
      m_strayAt, m_changedOf, m_changedAt, m_place, m_uidHashes, m_highestId, m_update, m_updateInPlace, m_remove,
      m_newest, m_byCalendar, m_idsInCalendar, m_idsWithAlarms, m_zonedIds;
};

}  // namespace orlocal::store
