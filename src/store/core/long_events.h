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
  /// A plain series, or the start that its rule does not make.
  struct Member {
    DayPattern days;
    ItemId item = 0;  ///< 0 when it is no longer of use
    CalendarId calendar = 0;
    std::int32_t length = 0;  ///< seconds
    bool hasExclusions = false;
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
    std::size_t index;  ///< in m_members (the first of the series) or m_others
  };

  Status placeChanged();
  Status place(const TimelineEntry& entry);
  void addPlain(const TimelineEntry& entry, const PlainSeries& series, std::int64_t longest);
  void addMember(DayWheel& wheel, const Member& member, const DayWheel::Entry& when);
  void addOther(const TimelineEntry& entry);
  void remove(ItemId item);
  bool isExcluded(std::uint32_t member, DayNumber day) const;

  Timeline& m_timeline;
  ItemRows& m_rows;
  SeriesCache& m_series;
  std::map<std::int64_t, ReadParts> m_read;  ///< of each shelf: starts
  std::map<WheelKey, DayWheel> m_wheels;
  std::vector<Member> m_members;
  std::unordered_map<std::uint32_t, std::vector<DayNumber>> m_exclusions;  ///< of members that have some
  std::vector<TimelineEntry> m_others;                                     ///< item 0: no longer of use
  std::unordered_map<ItemId, Place> m_places;
  std::vector<ItemId> m_changed;  ///< to be looked at before the next answer
  std::size_t m_useless = 0;
};

template <class Visit>
void LongEvents::visitPlain(Moment from, Moment to, const Visit& visit) {
  for (auto& [key, wheel] : m_wheels) {
    // One for each end, so that neither leads the other away from where it is.
    SteadyClock starts(key.zone), ends(key.zone);
    // What goes on at `from` began so much before it: whole days on the wall clock, others by the moment.
    const LocalSeconds low = key.allDay ? earliestLocal(key.zone, from) - key.longest
                                        : earliestLocal(key.zone, from - std::chrono::seconds(key.longest));
    const LocalSeconds high = latestLocal(key.zone, to);
    wheel.visit(low, high, [&](const DayParts& day, const DayWheel::Entry& entry) {
      const Member& member = m_members[entry.member];
      if (member.item == 0 || !member.days.takes(day)) { return; }
      const LocalSeconds local = day.number * kSecondsPerDay + entry.timeOfDay;
      const Moment start = starts.toMoment(local);
      const Moment end =
          key.allDay ? ends.toMoment(local + member.length) : start + std::chrono::seconds(member.length);
      if (start >= to || (end <= from && start < from)) { return; }
      if (member.hasExclusions && isExcluded(entry.member, day.number)) { return; }
      visit(member.calendar, Occurrence{start, end, start, member.item, member.item});
    });
  }
}

}  // namespace orlocal::store
