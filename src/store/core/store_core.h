#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "store/core/command_recorder.h"
#include "store/core/long_events.h"
#include "store/core/series_cache.h"
#include "store/core/store_options.h"
#include "store/file/change_log.h"
#include "store/file/sqlite.h"
#include "store/file/store_file.h"
#include "store/file/uuid.h"
#include "store/rows/calendar_rows.h"
#include "store/rows/item_rows.h"
#include "store/rows/timeline.h"

namespace orlocal::store {

class WriteTurn;

/// The open file and what all parts of the store share. What it keeps in memory agrees with the file whenever one of
/// the `begin…` calls has returned.
class StoreCore {
 public:
  static Result<std::unique_ptr<StoreCore>> open(StoreOptions storeOptions);
  /// One that no file stands behind: every `begin…` fails with the reason.
  static std::unique_ptr<StoreCore> unopened(Failure reason);
  ~StoreCore() { close(); }

  /// See `CalendarStore::close`.
  void close();

  /// A snapshot for reading; what is kept in memory is brought up to it.
  Result<Transaction> beginReading();
  /// The same for who asks the log alone: what is kept in memory stays as it is.
  Result<Transaction> beginReadingLog();
  Result<WriteTurn> beginWriting();
  /// See `CalendarStore::generation`.
  std::uint64_t generation();
  /// See `CalendarStore::calendarsGeneration`.
  Result<std::uint64_t> calendarsGeneration();

  /// Where new items go: as the options wish, else as the store has it. Inside a transaction.
  Result<std::optional<Calendar>> defaultCalendar(CalendarKind kind);
  /// None when there is no such row, or when it is a changed occurrence of a series. Inside a transaction.
  Result<std::optional<WholeItem>> readWhole(ItemId id);
  /// Writes a new row, gives it its identifiers, and puts it on the timeline and into the log. An item without a UID
  /// gets its identifier for one. `own` is the item's
  /// series compiled for UTC, null when it does not repeat; one that is too dense to be read is refused, and an item
  /// that no import would take again.
  Status insertItem(Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall);
  Status updateItem(const Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall);
  /// `before`: where the row stands.
  Status updateItem(const Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall,
                    const StoredPlace& before);
  /// The same without a word in the log: what the item is does not change.
  Status replaceRow(const Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall);
  /// Puts a row back that was removed, with the number and the identifiers that it had.
  Status reinsertItem(const Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall);
  Status removeItem(const Item& item);
  /// Removes every item of a calendar, then the calendar.
  Status removeCalendar(const Calendar& calendar);
  Status logCalendar(Operation operation, const Calendar& calendar);

  /// From now on every turn to write ends as if it had been committed, and leaves the file as it was.
  void rehearse() { m_rehearses = true; }

  /// The file that is open, links followed: the one whose bell to ring.
  const std::filesystem::path& file() const { return m_file.file(); }
  /// Counts the files that were opened: changes when another one took the place of the one before.
  std::uint64_t fileNumber() const { return m_fileNumber; }

  const StoreOptions options;
  UuidMaker uuids;
  Database database;
  ChangeLog log;
  Timeline timeline;
  ItemRows rows;
  CalendarRows calendars;
  SeriesCache series;
  LongEvents longEvents;
  CommandRecorder recorder;

 private:
  friend class WriteTurn;
  explicit StoreCore(StoreOptions storeOptions);

  /// When to look whether the file is still the one that was opened: looking costs more than what a walk over a query's
  /// answer does at each step.
  enum class Look { kNowAndThen, kNow };
  /// Opens the file when it is not open, and anew when another has taken its place.
  Status followFile(Look look);
  Status openFile();
  Result<Transaction> beginTransaction();
  /// `newest`: the newest row of the log.
  Status catchUp(std::int64_t newest);
  /// What is given to new items in this commit comes after what others gave.
  Status startIdentifiers();
  /// What is kept of the item in memory no longer counts, nor what is kept of the series that it belongs to.
  void forget(ItemId item, std::optional<ItemId> ofSeries);
  void forgetCalendars();
  void forgetAll();
  Status loadZones();
  Status replaceRow(const Item& item, const Series* own, std::optional<std::int64_t> original, bool originalIsWall,
                    const StoredPlace& before);
  /// `id`, `uuid`: of the row; the timeline and the log hear of it.
  Status addRow(Item& item, ItemId id, const Uuid& uuid, const Series* own, std::optional<std::int64_t> original,
                bool originalIsWall);

  StoreFile m_file;
  std::optional<Failure> m_unopened;  ///< why there is no file and will be none
  Missing m_whenMissing = Missing::kIsMade;
  bool m_rehearses = false;
  bool m_opening = false;  ///< what is done now belongs to opening the file
  std::uint64_t m_fileNumber = 1;
  std::int64_t m_opener = 0;                         ///< process that opened the file
  std::chrono::steady_clock::duration m_nextLook{};  ///< on the coarse clock
  std::int64_t m_seen = -1;          ///< newest row of the log that memory agrees with; -1 before the first look
  std::int64_t m_identifiedTo = -1;  ///< newest row of the log when this store gave identifiers last; -1 before
  std::uint64_t m_generation = 1, m_calendarsGeneration = 1;
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
