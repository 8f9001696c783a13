#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "store/core/day_wheel.h"
#include "store/core/read_parts.h"
#include "store/core/series_cache.h"
#include "store/model/occurrence.h"
#include "store/rows/item_rows.h"
#include "store/rows/timeline.h"
#include "store/time/steady_clock.h"

namespace orlocal::store {

/// The events that last longer than three days, most of them series, kept in memory by the days on which they come: so
/// a range costs what it holds, not what goes on meanwhile. Read off the timeline as far as somebody asks, each once;
/// an event that changes is read again.
///
/// Series that tell their days one by one (`PlainSeries`) stand on wheels, one for each clock and length; the others,
/// and long events that come once, are met by every range that they may overlap.
class LongEvents {
 public:
  /// What spans more is answered without this: a rule that comes once in years would be asked about each of its days.
  static constexpr std::chrono::days kLongestRange{400};

  LongEvents(Timeline& timeline, ItemRows& rows, SeriesCache& series)
      : m_timeline(timeline), m_rows(rows), m_series(series) {}

  /// Reads what may overlap the range and is not here yet. Inside a read transaction. False when one of the series
  /// cannot be followed: who asks the timeline learns whether it matters to him, and the next call goes on from there.
  Result<bool> cover(const TimelineRange& range);

  /// The rest is for ranges that are covered.
  /// Calls `visit(CalendarId, const Occurrence&)` for the occurrences of plain series that overlap [from, to), whoever
  /// asks; in no order.
  template <class Visit>
  void visitPlain(Moment from, Moment to, const Visit& visit);
  /// Visits the entries of the others that may overlap the range.
  Status visitOthers(const TimelineRange& range, const Timeline::Visitor& visit) const;

  /// The event was changed or removed, is new, or may be.
  void forget(ItemId item);
  void forgetAll();

 private:
  struct Wheel {
    explicit Wheel(const Zone& zone) : starts(zone), ends(zone) {}

    DayWheel days;
    SteadyClock starts, ends;  ///< two, so that neither leads the other away from where it is
  };
  struct WheelKey {
    Zone zone;
    bool allDay;
    std::int64_t longest;  ///< seconds

    friend bool operator<(const WheelKey& a, const WheelKey& b) {
      return std::tie(a.zone, a.allDay, a.longest) < std::tie(b.zone, b.allDay, b.longest);
    }
  };
  struct Place {
    std::uint32_t number;  ///< the first of its entries on the wheels, or its place in m_others
    bool plain;
    std::uint8_t count = 1;  ///< of entries: its start has one of its own where its rule does not make it
  };

  // False as above.
  Result<bool> placeChanged();
  Result<bool> place(const TimelineEntry& entry);
  void addPlain(const TimelineEntry& entry, const PlainSeries& series, std::int64_t longest);
  void addOther(const TimelineEntry& entry);
  void remove(ItemId item);
  /// Keeps the days that do not count; gives their place.
  std::uint32_t addExclusions(const std::vector<DayNumber>& days);
  bool isExcluded(std::uint32_t exclusions, LocalSeconds local) const;

  Timeline& m_timeline;
  ItemRows& m_rows;
  SeriesCache& m_series;
  std::map<std::int64_t, ReadParts> m_read;  ///< of each shelf: starts
  std::map<WheelKey, Wheel> m_wheels;
  std::vector<bool> m_gone;  ///< whether an entry no longer counts
  /// Of all entries, as lists of their own would lie all over memory: at the place of each how many, then the days. At
  /// 0 those of entries that have none.
  std::vector<std::int32_t> m_exclusions{0};
  std::vector<TimelineEntry> m_others;  ///< item 0: no longer counts
  std::unordered_map<ItemId, Place> m_places;
  std::vector<ItemId> m_changed;  ///< to be looked at before the next answer
  std::size_t m_useless = 0;
};

template <class Visit>
void LongEvents::visitPlain(Moment from, Moment to, const Visit& visit) {
  for (auto& each : m_wheels) {
    const WheelKey& key = each.first;
    Wheel& wheel = each.second;
    // What goes on at `from` began so much before it: whole days on the wall clock, others by the moment.
    const LocalSeconds low = key.allDay ? earliestLocal(key.zone, from) - key.longest
                                        : earliestLocal(key.zone, from - std::chrono::seconds(key.longest));
    const LocalSeconds high = latestLocal(key.zone, to);
    wheel.days.visit(low, high, [&](LocalSeconds local, const DayWheel::Entry& entry) {
      const Moment start = wheel.starts.toMoment(local);
      const Moment end =
          key.allDay ? wheel.ends.toMoment(local + entry.length) : start + std::chrono::seconds(entry.length);
      if (start >= to || (end <= from && start < from) || m_gone[entry.number]) { return; }
      if (entry.exclusions != 0 && isExcluded(entry.exclusions, local)) { return; }
      visit(entry.calendar, Occurrence{start, end, start, entry.item, entry.item});
    });
  }
}

}  // namespace orlocal::store
