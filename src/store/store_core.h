#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>

#include "store/calendar_rows.h"
#include "store/calendar_store.h"
#include "store/change_log.h"
#include "store/item_rows.h"
#include "store/recurrence.h"
#include "store/sqlite.h"
#include "store/timeline.h"
#include "store/uuid.h"

namespace orlocal::store {

/// Series made ready for expansion, kept until they change.
class SeriesCache {
 public:
  SeriesCache(ItemRows& rows, Zone viewer) : m_rows(rows), m_viewer(std::move(viewer)) {}

  /// Null when there is no such row. Valid until the next call of any kind.
  Result<const Series*> of(ItemId id);
  void forget(ItemId id) { m_series.erase(id); }
  void forgetAll() { m_series.clear(); }

 private:
  ItemRows& m_rows;
  Zone m_viewer;
  std::unordered_map<ItemId, Series> m_series;
};

class WriteTurn;

/// The open file and what all parts of the store share. What it keeps in memory agrees with the file whenever one of
/// the `begin…` calls has returned.
class StoreCore {
 public:
  static Result<std::unique_ptr<StoreCore>> open(StoreOptions storeOptions);

  /// A snapshot for reading; what is kept in memory is brought up to it.
  Result<Transaction> beginReading();
  Result<WriteTurn> beginWriting();
  /// See `CalendarStore::generation`.
  std::uint64_t generation();

  /// Writes a new row, gives it its identifiers, and puts it on the timeline and into the log. `own` is the item's
  /// series compiled for UTC, null when it does not repeat; one that is too dense to be read is
  /// refused.
  Status insertItem(Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall);
  Status updateItem(const Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall);
  /// The same without a word in the log: what the item is does not change.
  Status replaceRow(const Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall);
  Status removeItem(const Item& item);
  /// Removes every item of a calendar, then the calendar.
  Status removeCalendar(const Calendar& calendar);
  Status logCalendar(Operation operation, const Calendar& calendar);

  const StoreOptions options;
  Database database;
  UuidMaker uuids;
  ChangeLog log;
  Timeline timeline;
  ItemRows rows;
  CalendarRows calendars;
  SeriesCache series;

 private:
  friend class WriteTurn;
  StoreCore(StoreOptions storeOptions, Database opened, UuidMaker maker);

  Status catchUp();
  void forgetAll();
  Status loadZones();

  std::int64_t m_seen = -1;  ///< newest row of the log that memory agrees with; -1 before the first look
  std::uint64_t m_generation = 1;
  const std::uint32_t* m_walIndex = nullptr;
  std::uint32_t m_walHeader[12] = {};
  std::int64_t m_dataVersion = 0;
  LazyStatement m_readDataVersion{"PRAGMA data_version"};
  LazyStatement m_zones{"SELECT name, vtimezone FROM zones"};
};

/// A write transaction: everything or nothing. Destroyed without a commit it leaves file and memory as they were.
class WriteTurn {
 public:
  WriteTurn(WriteTurn&& other) noexcept
      : m_core(std::exchange(other.m_core, nullptr)), m_transaction(std::move(other.m_transaction)) {}
  WriteTurn& operator=(WriteTurn&&) = delete;
  ~WriteTurn();

  Status commit();

 private:
  friend class StoreCore;
  WriteTurn(StoreCore& core, Transaction transaction) : m_core(&core), m_transaction(std::move(transaction)) {}

  StoreCore* m_core;
  Transaction m_transaction;
};

}  // namespace orlocal::store
