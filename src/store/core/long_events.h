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
  /// What spans more is answered without this: too much would be kept for one answer.
  static constexpr std::chrono::days kLongestRange{3'660};

  LongEvents(Timeline& timeline, ItemRows& rows, SeriesCache& series)
      : m_timeline(timeline), m_rows(rows), m_series(series) {}

  /// Reads what may overlap the range and is not here yet. Inside a read transaction.
  Status cover(const TimelineRange& range);

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
    bool plain;
    std::uint32_t number;     ///< the first of its entries on the wheels, or its place in m_others
    std::uint32_t count = 1;  ///< of entries: its start has one of its own where its rule does not make it
  };

  Status placeChanged();
  Status place(const TimelineEntry& entry);
  void addPlain(const TimelineEntry& entry, const PlainSeries& series, std::int64_t longest);
  void addOther(const TimelineEntry& entry);
  void remove(ItemId item);
  bool isExcluded(std::uint32_t number, LocalSeconds local) const;

  Timeline& m_timeline;
  ItemRows& m_rows;
  SeriesCache& m_series;
  std::map<std::int64_t, ReadParts> m_read;  ///< of each shelf: starts
  std::map<WheelKey, Wheel> m_wheels;
  std::vector<bool> m_gone;                                                ///< whether an entry no longer counts
  std::unordered_map<std::uint32_t, std::vector<DayNumber>> m_exclusions;  ///< of entries that have some
  std::vector<TimelineEntry> m_others;                                     ///< item 0: no longer counts
  std::unordered_map<ItemId, Place> m_places;
  std::vector<ItemId> m_changed;  ///< to be looked at before the next answer
  std::size_t m_useless = 0;
};

template <class Visit>
void LongEvents::visitPlain(Moment from, Moment to, const Visit& visit) {
  for (auto& [key, wheel] : m_wheels) {
    // What goes on at `from` began so much before it: whole days on the wall clock, others by the moment.
    const LocalSeconds low = key.allDay ? earliestLocal(key.zone, from) - key.longest
                                        : earliestLocal(key.zone, from - std::chrono::seconds(key.longest));
    const LocalSeconds high = latestLocal(key.zone, to);
    wheel.days.visit(low, high, [&, &clocks = wheel](LocalSeconds local, const DayWheel::Entry& entry) {
      const Moment start = clocks.starts.toMoment(local);
      const Moment end =
          key.allDay ? clocks.ends.toMoment(local + entry.length) : start + std::chrono::seconds(entry.length);
      if (start >= to || (end <= from && start < from) || m_gone[entry.number]) { return; }
      if (entry.hasExclusions && isExcluded(entry.number, local)) { return; }
      visit(entry.calendar, Occurrence{start, end, start, entry.item, entry.item});
    });
  }
}

}  // namespace orlocal::store
