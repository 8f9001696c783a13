#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

#include "store/file/row_insert.h"
#include "store/file/sqlite.h"
#include "store/model/model.h"
#include "store/recurrence/recurrence.h"

namespace orlocal::store {

/// What the timeline keeps of an event or reminder. Moments are whole seconds since 1970, in UTC; for whole days and
/// floating times (`wall`) on the wall clock.
struct TimelineEntry {
  static constexpr std::int64_t kEndless = INT64_MAX;

  ItemId item = 0;
  CalendarId calendar = 0;
  std::int64_t shelf = 0;  ///< the shelf it stands on (or those, of months); see timeline.cpp
  std::int64_t start = 0;  ///< of a series: of its first occurrence; of a reminder: due or completed
  std::int64_t end = 0;    ///< of a series: of its last one, or `kEndless`; of a completed reminder: due
  bool repeats = false;
  bool wall = false;
  bool dueIsWall = false, hasDue = false;  ///< completed reminders: of `end`
  std::optional<ItemId> series;            ///< changed occurrences: theirs
  std::optional<std::int64_t> original;    ///< changed occurrences: original start
  bool originalIsWall = false;
};

/// A half-open range of time as the timeline's two clocks tell it, in seconds since 1970: in UTC, and on the wall clock
/// of who asks, where that may reach a little further.
struct TimelineRange {
  std::int64_t from, to;
  std::int64_t wallFrom, wallTo;
};

/// Finds what overlaps a range at the cost of the answer, whatever else the store holds.
///
/// Entries stand on shelves by how long they last, and on a shelf by their start: on the shelf for lengths up to L only
/// starts in (from - L, to) can overlap [from, to). Series that go on for ever but meet in few months of the year stand
/// on a shelf for each of these months.
class Timeline {
 public:
  explicit Timeline(Database& database) : m_database(database) {}

  /// The entry of an event or reminder; `series` is what it expands to when it repeats, compiled for UTC, and
  /// `original` the original start (in the terms of `originalKey`) of a changed occurrence.
  static TimelineEntry entryOf(const Item& item, const Series* series, std::optional<std::int64_t> original,
                               bool originalIsWall);
  /// Whether a row may name this shelf, or these of months. The file's columns of shelves are called `slot`.
  static bool isShelf(std::int64_t shelf);
  static bool isWall(const CalendarTime& time);
  /// Seconds: UTC, or on the wall clock when `isWall`.
  static std::int64_t keyOf(const CalendarTime& time);

  /// Takes the place of the item's entry on that shelf with that start; where it stands there as it is, nothing is
  /// written.
  Status insert(const TimelineEntry& entry);
  /// `shelf` and `start` are the entry's.
  Status remove(ItemId item, std::int64_t shelf, std::int64_t start);

  /// From now on what is inserted is kept back and written in its order, many rows at once: a large change costs less.
  /// Before anything is read, or one of these removed, it is written.
  void gather() { m_gathers = true; }
  /// Writes what was kept back, and ends that.
  Status writeGathered();

  /// Says that another file may have taken the place of this one, or that a change did not come about: what was kept
  /// back of it goes.
  void forget();

  using Visitor = std::function<Status(const TimelineEntry&)>;
  /// Visits every event entry that may overlap [from, to), each once, in no order; some do not overlap after all.
  Status visitEvents(const TimelineRange& range, const Visitor& visit);
  /// The same of those that last up to three days, a series from its first occurrence to its last, and of the others.
  Status visitShortEvents(const TimelineRange& range, const Visitor& visit);
  Status visitLongEvents(const TimelineRange& range, const Visitor& visit);
  /// Whether an event whose row names this shelf is one of the others.
  static bool isLong(std::int64_t shelf);

  /// Part of a shelf: the entries that start in [from, to).
  struct Stretch {
    std::int64_t shelf, from, to;
  };
  /// Where all stand that `visitLongEvents` would visit, beside others that end too early.
  static std::vector<Stretch> longStretches(const TimelineRange& range);
  /// Visits the entries of a stretch by their start.
  Status visitStretch(const Stretch& stretch, const Visitor& visit);
  /// The item's entry; none when it does not stand there.
  Result<std::optional<TimelineEntry>> entryAt(ItemId item, std::int64_t shelf, std::int64_t start);
  /// Visits reminder entries that may lie in the range.
  Status visitOpenReminders(const TimelineRange& range, bool withoutDue, const Visitor& visit);
  Status visitCompletedReminders(const TimelineRange& range, const Visitor& visit);

 private:
  /// A row of the table, in its order of columns.
  struct Row {
    std::int64_t shelf, start;
    ItemId item;
    std::int64_t end;
    CalendarId calendar;
    std::int64_t flags;
    std::optional<ItemId> series;
    std::optional<std::int64_t> original;
  };
  Status write(std::span<const Row> rows);
  Status writeRows();
  Status checkShelves();
  Status visitStretches(const std::vector<Stretch>& stretches, const TimelineRange& range, const Visitor& visit);
  Status visitShelf(std::int64_t shelf, std::int64_t after, std::int64_t before, const Visitor& visit);

  Database& m_database;
  bool m_checked = false;  ///< whether all rows stand on shelves that there are
  bool m_gathers = false;
  std::vector<Row> m_gathered;
  std::unordered_set<ItemId> m_gatheredItems;
  RowInsert m_insert{
      "INSERT INTO timeline(slot, \"start\", item, \"end\", calendar, flags, series, original)", 8, 16,
      " ON CONFLICT DO UPDATE SET \"end\" = excluded.\"end\", calendar = excluded.calendar, flags = excluded.flags, "
      "series = excluded.series, original = excluded.original WHERE \"end\" <> excluded.\"end\" OR "
      "calendar <> excluded.calendar OR flags <> excluded.flags OR series IS NOT excluded.series OR "
      "original IS NOT excluded.original"};
  LazyStatement m_remove{"DELETE FROM timeline WHERE slot = ? AND \"start\" = ? AND item = ?"};
  LazyStatement m_strange{
      "SELECT slot FROM timeline WHERE slot < 0 UNION ALL SELECT slot FROM timeline WHERE slot >= 256 LIMIT 1"};
  LazyStatement m_scan{
      "SELECT item, calendar, \"start\", \"end\", flags, series, original FROM timeline "
      "WHERE slot = ? AND \"start\" > ? AND \"start\" < ? ORDER BY \"start\", item"};
};

}  // namespace orlocal::store
