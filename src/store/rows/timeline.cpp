#include "store/rows/timeline.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/checked_row.h"
#include "store/time/civil_days.h"

namespace orlocal::store {
namespace {

// Shelf numbers are part of the file format.
constexpr std::int64_t kTimed = 0;          // + index in kLengths
constexpr std::int64_t kWall = 100;         // + index in kLengths
constexpr std::int64_t kEndlessShelf = 40;  // in place of such an index
constexpr std::int64_t kTimedMonths = 200;  // + month from 0
constexpr std::int64_t kWallMonths = 220;   // + month from 0
constexpr std::int64_t kOpenTimed = 240, kOpenWall = 241, kOpenWithoutDue = 242, kCompletedShelf = 243;
constexpr std::int64_t kShelves = 256;
/// An entry that stands on several month shelves; the lower bits are its months, then whether it is wall.
constexpr std::int64_t kManyMonths = 0x10000, kManyMonthsWall = 0x1000;

/// A shelf takes lengths up to 2 to this power, in seconds. Coarse where most events are, so that few shelves have to
/// be asked; finer where a shelf holds series of years.
constexpr int kLengths[] = {12, 14, 16, 18, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36};

/// From this one on lengths count as long.
constexpr std::size_t kLongFrom = 4;

constexpr std::int64_t kDay = 86'400;
/// What lasts longer stands on no month's shelf: a query looks so far back for months whose occurrences reach into it.
constexpr std::int64_t kLongestOnMonths = 20 * kDay;
/// What starts last and lasts longest ends then.
constexpr std::int64_t kLatestEnd = kLatestSecond + (kLatestSecond - kEarliestSecond);

constexpr std::int64_t kRepeats = 1, kOriginalIsWall = 2, kHasDue = 4, kDueIsWall = 8;  // flags of an entry

bool isOnWallClock(std::int64_t shelf) {
  return (shelf >= kWall && shelf < kTimedMonths) || (shelf >= kWallMonths && shelf < kOpenTimed) || shelf == kOpenWall;
}

bool isOfMonth(std::int64_t shelf) { return shelf >= kTimedMonths && shelf < kOpenTimed; }

std::int64_t lengthShelf(std::int64_t length) {
  for (std::size_t i = 0; i < std::size(kLengths); ++i) {
    if (length <= std::int64_t{1} << kLengths[i]) { return static_cast<std::int64_t>(i); }
  }
  return kEndlessShelf;
}

std::int64_t saturatedAdd(std::int64_t value, std::int64_t added) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(value, added, &sum)) { return added > 0 ? INT64_MAX : INT64_MIN; }
  return sum;
}

/// The months (bit 0 is January) outside of which the series cannot meet; 0 when that cannot be told.
unsigned meetingMonths(const Item& item) {
  if (!item.start || !item.recurrence.added.empty()) { return 0; }
  // The start comes also where no rule makes it.
  unsigned months = 1u << (item.start->local.month() - 1);
  for (const RecurrenceRule& rule : item.recurrence.rules) {
    if (!rule.scale.empty()) {
      return 0;  // its months are those of another calendar
    }
    const bool onTheStartsDay = rule.frequency == RecurrenceRule::Frequency::kYearly && rule.byMonthDay.empty() &&
                                rule.byYearDay.empty() && rule.byWeekNumber.empty() && rule.byDay.empty();
    if (rule.byMonth.empty() && !onTheStartsDay) { return 0; }
    for (const int month : rule.byMonth) {
      if (month < 1 || month > 12) { return 0; }
      months |= 1u << (month - 1);
    }
  }
  return months;
}

/// The months that [from, to) touches, perhaps one more; bounds that are no date count as far away.
unsigned monthsBetween(std::int64_t from, std::int64_t to) {
  const std::int64_t first = std::clamp(from, -70'000'000'000, 270'000'000'000);
  const std::int64_t last = std::clamp(to, -70'000'000'000, 270'000'000'000);
  if (last - first > 330 * kDay) { return 0xfff; }
  unsigned months = 0;
  const cctz::civil_month end(localTime(last));
  for (cctz::civil_month month(localTime(first)); month <= end; ++month) { months |= 1u << (month.month() - 1); }
  return months;
}

void placeOnShelf(TimelineEntry& entry, const Item& item) {
  const bool endless = entry.end == TimelineEntry::kEndless;
  const std::int64_t base = entry.wall ? kWall : kTimed;
  const std::int64_t shelf = endless ? kEndlessShelf : lengthShelf(entry.end - entry.start);
  // Series of a few years are found well by their length; the others gain by the months.
  if (entry.repeats && (endless || entry.end - entry.start > 400 * kDay)) {
    const std::int64_t length = item.end && item.start ? item.end->local - item.start->local : 0;
    const unsigned months = length <= kLongestOnMonths ? meetingMonths(item) : 0;
    if (months != 0 && months != 0xfff) {
      entry.shelf = kManyMonths | (entry.wall ? kManyMonthsWall : 0) | months;
      return;
    }
  }
  entry.shelf = base + shelf;
}

void placeReminder(TimelineEntry& entry, const Item& item) {
  if (item.completed) {
    entry.shelf = kCompletedShelf;
    entry.start = std::chrono::floor<std::chrono::seconds>(*item.completed).time_since_epoch().count();
    entry.hasDue = item.due.has_value();
    if (item.due) {
      entry.end = Timeline::keyOf(*item.due);
      entry.dueIsWall = Timeline::isWall(*item.due);
    }
    return;
  }
  if (!item.due) {
    entry.shelf = kOpenWithoutDue;
    return;
  }
  entry.hasDue = true;
  entry.wall = Timeline::isWall(*item.due);
  entry.shelf = entry.wall ? kOpenWall : kOpenTimed;
  entry.start = entry.end = Timeline::keyOf(*item.due);
}

/// Rows kept back at most: some megabytes.
constexpr std::size_t kGatheredAtMost = 65'536;

/// Calls `place` for each shelf that a row stands on: the one it names, or those of its months.
template <class Place>
Status forEachShelf(std::int64_t stored, const Place& place) {
  if ((stored & kManyMonths) == 0) { return place(stored); }
  const std::int64_t base = (stored & kManyMonthsWall) != 0 ? kWallMonths : kTimedMonths;
  for (int month = 0; month < 12; ++month) {
    if ((stored >> month & 1) != 0) { ORLOCAL_CHECK(place(base + month)); }
  }
  return {};
}

}  // namespace

bool Timeline::isShelf(std::int64_t stored) {
  if ((stored & kManyMonths) == 0) { return stored >= 0 && stored < kShelves; }
  return (stored & ~(kManyMonths | kManyMonthsWall | 0xfff)) == 0;
}

bool Timeline::isWall(const CalendarTime& time) {
  return time.kind == CalendarTime::Kind::kDate || time.kind == CalendarTime::Kind::kFloating;
}

std::int64_t Timeline::keyOf(const CalendarTime& time) {
  if (isWall(time)) { return localSeconds(time.local); }
  return std::chrono::floor<std::chrono::seconds>(momentOf(time, Zone())).time_since_epoch().count();
}

TimelineEntry Timeline::entryOf(const Item& item, const Series* series, std::optional<std::int64_t> original,
                                bool originalIsWall) {
  TimelineEntry entry;
  entry.item = item.id;
  entry.calendar = item.calendar;
  entry.series = item.series;
  entry.original = original;
  entry.originalIsWall = originalIsWall;
  entry.repeats = series != nullptr;
  if (item.kind == ItemKind::kReminder) {
    placeReminder(entry, item);
    return entry;
  }
  entry.wall = isWall(*item.start);
  entry.start = keyOf(*item.start);
  entry.end = std::max(entry.start, item.end ? keyOf(*item.end) : entry.start);
  if (series != nullptr) {
    // Compiled for UTC, so a wall clock's times are here as they are written, and the entry is true for every viewer.
    const Series::Bounds bounds = series->bounds();
    entry.start = std::chrono::floor<std::chrono::seconds>(bounds.start).time_since_epoch().count();
    entry.end = bounds.end ? std::chrono::ceil<std::chrono::seconds>(*bounds.end).time_since_epoch().count()
                           : TimelineEntry::kEndless;
  }
  placeOnShelf(entry, item);
  return entry;
}

Status Timeline::insert(const TimelineEntry& entry) {
  return forEachShelf(entry.shelf, [&](std::int64_t shelf) -> Status {
    const std::int64_t flags = (entry.repeats ? kRepeats : 0) | (entry.originalIsWall ? kOriginalIsWall : 0) |
                               (entry.hasDue ? kHasDue : 0) | (entry.dueIsWall ? kDueIsWall : 0);
    const Row row{shelf, entry.start, entry.item, entry.end, entry.calendar, flags, entry.series, entry.original};
    if (!m_gathers) { return write(std::span(&row, 1)); }
    m_gathered.push_back(row);
    m_gatheredItems.insert(row.item);
    return m_gathered.size() < kGatheredAtMost ? Status() : writeRows();
  });
}

Status Timeline::write(std::span<const Row> rows) {
  return m_insert.write(m_database, rows, [](Statement& insert, int before, const Row& row) {
    insert.bind(before + 1, row.shelf).bind(before + 2, row.start).bind(before + 3, row.item).bind(before + 4, row.end);
    insert.bind(before + 5, row.calendar).bind(before + 6, row.flags);
    row.series ? insert.bind(before + 7, *row.series) : insert.bindNull(before + 7);
    row.original ? insert.bind(before + 8, *row.original) : insert.bindNull(before + 8);
  });
}

// The table lies in this order in the file, so each of its pages is met once. Stable, because an item that was changed
// twice may be there twice, and the later row has to replace the earlier one.
Status Timeline::writeRows() {
  if (m_gathered.empty()) { return {}; }
  std::stable_sort(m_gathered.begin(), m_gathered.end(), [](const Row& a, const Row& b) {
    return std::tie(a.shelf, a.start, a.item) < std::tie(b.shelf, b.start, b.item);
  });
  ORLOCAL_CHECK(write(m_gathered));
  m_gathered.clear();
  m_gatheredItems.clear();
  return {};
}

Status Timeline::writeGathered() {
  m_gathers = false;
  return writeRows();
}

void Timeline::forget() {
  m_checked = false;
  m_gathers = false;
  m_gathered.clear();
  m_gatheredItems.clear();
}

Status Timeline::remove(ItemId item, std::int64_t stored, std::int64_t start) {
  // A row still kept back would be written after it had been removed.
  if (m_gatheredItems.contains(item)) { ORLOCAL_CHECK(writeRows()); }
  return forEachShelf(stored, [&](std::int64_t shelf) {
    return m_remove.in(m_database).bind(1, shelf).bind(2, start).bind(3, item).run();
  });
}

// What stands elsewhere no range would find, and nobody would miss it.
Status Timeline::checkShelves() {
  if (m_checked) { return {}; }
  Statement& strange = m_strange.in(m_database);
  const ResetAtExit reset(strange);
  ORLOCAL_TRY(const bool found, strange.step());
  if (found) { return damaged(m_database, tr("The timeline")); }
  m_checked = true;
  return {};
}

Status Timeline::visitShelf(std::int64_t shelf, std::int64_t after, std::int64_t before, const Visitor& visit) {
  ORLOCAL_CHECK(writeRows());
  ORLOCAL_CHECK(checkShelves());
  Statement& scan = m_scan.in(m_database);
  const ResetAtExit reset(scan);
  scan.bind(1, shelf).bind(2, after).bind(3, before);
  TimelineEntry entry;
  entry.shelf = shelf;
  entry.wall = isOnWallClock(shelf);
  for (std::pair<std::int64_t, ItemId> last{INT64_MIN, 0};;) {
    ORLOCAL_TRY(const bool found, scan.step());
    if (!found) { return {}; }
    CheckedRow row(scan);
    entry.item = row.id(0);
    entry.calendar = row.id(1);
    entry.start = row.seconds(2);
    entry.end = row.number(3, kEarliestSecond, INT64_MAX);
    const std::int64_t flags = row.number(4);
    entry.repeats = (flags & kRepeats) != 0;
    entry.originalIsWall = (flags & kOriginalIsWall) != 0;
    entry.hasDue = (flags & kHasDue) != 0;
    entry.dueIsWall = (flags & kDueIsWall) != 0;
    entry.series = row.optionalId(5);
    entry.original.reset();
    if (!row.isNull(6)) { entry.original = row.seconds(6); }
    const bool endless = entry.end == TimelineEntry::kEndless && entry.repeats;
    const std::pair<std::int64_t, ItemId> place(entry.start, entry.item);
    // The order is checked because a damaged table may go in circles.
    if (!row.sound() || place <= last || (!endless && entry.end > kLatestEnd)) {
      return damaged(m_database, tr("The timeline"));
    }
    last = place;
    ORLOCAL_CHECK(visit(entry));
  }
}

namespace {

/// A range on one of the two clocks by which entries stand, and the shelves of that clock.
struct ClockRange {
  std::int64_t lengths, months, from, to;
};

std::array<ClockRange, 2> clockRanges(const TimelineRange& range) {
  return {{{kTimed, kTimedMonths, range.from, range.to}, {kWall, kWallMonths, range.wallFrom, range.wallTo}}};
}

/// Where events stand that overlap a range on one clock, on its shelves for these lengths.
void addLengths(std::vector<Timeline::Stretch>& stretches, const ClockRange& clock, std::size_t begin,
                std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) {
    // What starts the longest length before `from` ends at `from`, and one without length stands at `from` itself.
    stretches.push_back({clock.lengths + static_cast<std::int64_t>(i),
                         saturatedAdd(clock.from, -(std::int64_t{1} << kLengths[i])), clock.to});
  }
}

}  // namespace

std::vector<Timeline::Stretch> Timeline::longStretches(const TimelineRange& range) {
  std::vector<Stretch> stretches;
  for (const ClockRange& clock : clockRanges(range)) {
    addLengths(stretches, clock, kLongFrom, std::size(kLengths));
    stretches.push_back({clock.lengths + kEndlessShelf, INT64_MIN, clock.to});
    // A series stands by the months of its own clock, perhaps a day or two from the range's: zones, skipped days.
    const unsigned months =
        monthsBetween(saturatedAdd(clock.from, -kLongestOnMonths - 3 * kDay), saturatedAdd(clock.to, 3 * kDay));
    for (int month = 0; month < 12; ++month) {
      if ((months >> month & 1) != 0) { stretches.push_back({clock.months + month, INT64_MIN, clock.to}); }
    }
  }
  return stretches;
}

Status Timeline::visitStretch(const Stretch& stretch, const Visitor& visit) {
  return visitShelf(stretch.shelf, saturatedAdd(stretch.from, -1), stretch.to, visit);
}

Status Timeline::visitShortEvents(const TimelineRange& range, const Visitor& visit) {
  std::vector<Stretch> stretches;
  for (const ClockRange& clock : clockRanges(range)) { addLengths(stretches, clock, 0, kLongFrom); }
  return visitStretches(stretches, range, visit);
}

Status Timeline::visitLongEvents(const TimelineRange& range, const Visitor& visit) {
  return visitStretches(longStretches(range), range, visit);
}

Status Timeline::visitStretches(const std::vector<Stretch>& stretches, const TimelineRange& range,
                                const Visitor& visit) {
  // An entry stands on the shelves of all its months, on each of them once. So what one shelf gives is looked up only
  // among what the shelves before it gave, and is put in order when it is done.
  std::vector<ItemId> seen;
  for (const Stretch& stretch : stretches) {
    const std::int64_t earliestEnd = isOnWallClock(stretch.shelf) ? range.wallFrom : range.from;
    const std::size_t sorted = seen.size();
    ORLOCAL_CHECK(visitStretch(stretch, [&](const TimelineEntry& entry) -> Status {
      if (isOfMonth(stretch.shelf)) {
        if (std::binary_search(seen.begin(), seen.begin() + static_cast<std::ptrdiff_t>(sorted), entry.item)) {
          return {};
        }
        seen.push_back(entry.item);
      }
      return entry.end >= earliestEnd ? visit(entry) : Status();
    }));
    std::sort(seen.begin(), seen.end());
  }
  return {};
}

Status Timeline::visitEvents(const TimelineRange& range, const Visitor& visit) {
  ORLOCAL_CHECK(visitShortEvents(range, visit));
  return visitLongEvents(range, visit);
}

bool Timeline::isLong(std::int64_t shelf) {
  const auto lengths = shelf >= kWall ? kWall : kTimed;
  return (shelf & kManyMonths) != 0 || (shelf < kTimedMonths && shelf - lengths >= static_cast<int>(kLongFrom));
}

Result<std::optional<TimelineEntry>> Timeline::entryAt(ItemId item, std::int64_t shelf, std::int64_t start) {
  std::optional<TimelineEntry> found;
  ORLOCAL_CHECK(forEachShelf(shelf, [&](std::int64_t each) {
    return visitShelf(each, start - 1, start + 1, [&](const TimelineEntry& entry) -> Status {
      if (entry.item == item) { found = entry; }
      return {};
    });
  }));
  return found;
}

Status Timeline::visitOpenReminders(const TimelineRange& range, bool withoutDue, const Visitor& visit) {
  ORLOCAL_CHECK(visitShelf(kOpenTimed, saturatedAdd(range.from, -1), range.to, visit));
  ORLOCAL_CHECK(visitShelf(kOpenWall, saturatedAdd(range.wallFrom, -1), range.wallTo, visit));
  if (withoutDue) { ORLOCAL_CHECK(visitShelf(kOpenWithoutDue, INT64_MIN, INT64_MAX, visit)); }
  return {};
}

Status Timeline::visitCompletedReminders(const TimelineRange& range, const Visitor& visit) {
  return visitShelf(kCompletedShelf, saturatedAdd(range.from, -1), range.to, visit);
}

}  // namespace orlocal::store
