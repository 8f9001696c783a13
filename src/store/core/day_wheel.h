#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "store/recurrence/day_pattern.h"

namespace orlocal::store {

/// Finds which of many series may start in a range of a wall clock, without looking at the others: each stands in the
/// slots of its days, and in a slot by its time of day. Which those are its user decides, who keeps the patterns.
class DayWheel {
 public:
  struct Entry {
    std::int32_t firstDay, lastDay;  ///< as a `DayNumber`
    std::int32_t timeOfDay;          ///< seconds after midnight
    std::uint32_t member;            ///< the user's own number for the series
  };

  DayWheel() : m_slots(DayPattern::kSlots) {}

  void add(const DayPattern& days, const Entry& entry);

  /// Calls `visit(const DayParts&, const Entry&)` for each entry whose day shares a slot with its pattern, in
  /// [from, to): by days, each entry once a day. Whether the pattern takes the day is left to ask.
  template <class Visit>
  void visit(LocalSeconds from, LocalSeconds to, const Visit& visit) {
    for (DayNumber day = dayOf(from); day * kSecondsPerDay < to; ++day) {
      const DayParts parts(day);
      const LocalSeconds midnight = day * kSecondsPerDay;
      for (const int slot : DayPattern::slotsOf(parts)) {
        for (const Entry& entry : m_slots[static_cast<std::size_t>(slot)].between(from - midnight, to - midnight)) {
          if (entry.firstDay <= day && day <= entry.lastDay) { visit(parts, entry); }
        }
      }
    }
  }

 private:
  class Slot {
   public:
    void add(const Entry& entry) { m_entries.push_back(entry); }
    struct Entries {
      const Entry *first, *last;
      const Entry* begin() const { return first; }
      const Entry* end() const { return last; }
    };
    /// Those with a time of day in [from, to), in order.
    Entries between(LocalSeconds from, LocalSeconds to);

   private:
    std::vector<Entry> m_entries;
    std::size_t m_sorted = 0;  ///< so many stand in order; those behind them came later
  };

  std::vector<Slot> m_slots;
};

}  // namespace orlocal::store
