#include "store/core/day_wheel.h"

namespace orlocal::store {

void DayWheel::add(const Entry& entry) {
  for (const int slot : entry.days.slots()) { m_slots[static_cast<std::size_t>(slot)].add(entry); }
}

DayWheel::Slot::Entries DayWheel::Slot::between(LocalSeconds from, LocalSeconds to) {
  if (m_sorted < m_entries.size()) {
    const auto earlier = [](const Entry& a, const Entry& b) { return a.timeOfDay < b.timeOfDay; };
    const auto later = m_entries.begin() + static_cast<std::ptrdiff_t>(m_sorted);
    std::sort(later, m_entries.end(), earlier);
    std::inplace_merge(m_entries.begin(), later, m_entries.end(), earlier);
    m_sorted = m_entries.size();
  }
  const Entry* const all = m_entries.data();
  const auto place = [&](LocalSeconds time) {
    if (time <= 0) { return all; }
    if (time >= kSecondsPerDay) { return all + m_entries.size(); }
    return std::lower_bound(all, all + m_entries.size(), time,
                            [](const Entry& entry, LocalSeconds bound) { return entry.timeOfDay < bound; });
  };
  return {place(from), place(to)};
}

}  // namespace orlocal::store
