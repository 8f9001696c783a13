#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "store/model/model.h"
#include "store/recurrence/day_pattern.h"

namespace orlocal::store {

/// Finds which of many series start in a range of a wall clock, without looking at the others: each stands in the slots
/// of its days, and in a slot by its time of day. What is asked of a series stands there, too, as thousands are met one
/// after the other and memory is slow where it is not read in order.
class DayWheel {
 public:
  struct Entry {
    std::int32_t firstDay = 0, lastDay = 0;  ///< as a `DayNumber`
    std::int32_t timeOfDay = 0;              ///< seconds after midnight
    std::int32_t length = 0;                 ///< seconds; from here on it means nothing to the wheel
    ItemId item = 0;
    CalendarId calendar = 0;
    std::uint32_t number = 0;
    std::uint32_t exclusions = 0;
    std::uint32_t days = 0;  ///< place of its pattern, which the wheel fills in
  };

  DayWheel() : m_slots(DayPattern::kSlots) {}

  void add(const DayPattern& days, Entry entry);

  /// Calls `visit(LocalSeconds, const Entry&)` for each start in [from, to), by days.
  template <class Visit>
  void visit(LocalSeconds from, LocalSeconds to, const Visit& visit) {
    for (DayNumber day = dayOf(from); day * kSecondsPerDay < to; ++day) {
      const DayParts parts(day);
      const LocalSeconds midnight = day * kSecondsPerDay;
      for (const int slot : DayPattern::slotsOf(parts)) {
        for (const Entry& entry : m_slots[static_cast<std::size_t>(slot)].from(from - midnight)) {
          if (midnight + entry.timeOfDay >= to) { break; }
          const bool lives = entry.firstDay <= day && day <= entry.lastDay;
          if (lives && m_patterns[entry.days].takes(parts)) { visit(midnight + entry.timeOfDay, entry); }
        }
      }
    }
  }

 private:
  class Slot {
   public:
    void add(const Entry& entry) { m_entries.push_back(entry); }
    /// Those with this time of day or a later one, in order.
    std::span<const Entry> from(LocalSeconds time);

   private:
    std::vector<Entry> m_entries;
    std::size_t m_sorted = 0;  ///< so many stand in order; those behind them came later
  };

  std::vector<Slot> m_slots;
  /// Each once, as few are in use and half of an entry would be its own.
  std::vector<DayPattern> m_patterns;
  std::map<DayPattern, std::uint32_t> m_places;
};

}  // namespace orlocal::store
