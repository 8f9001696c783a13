#include "store/core/day_wheel.h"

#include <algorithm>

namespace orlocal::store {

void DayWheel::add(const DayPattern& days, Entry entry) {
  const auto [place, isNew] = m_places.try_emplace(days, static_cast<std::uint32_t>(m_patterns.size()));
  if (isNew) { m_patterns.push_back(days); }
  entry.days = place->second;
  for (const int slot : days.slots()) { m_slots[static_cast<std::size_t>(slot)].add(entry); }
}

std::span<const DayWheel::Entry> DayWheel::Slot::from(LocalSeconds time) {
  if (m_sorted < m_entries.size()) {
    const auto earlier = [](const Entry& a, const Entry& b) { return a.timeOfDay < b.timeOfDay; };
    const auto later = m_entries.begin() + static_cast<std::ptrdiff_t>(m_sorted);
    std::sort(later, m_entries.end(), earlier);
    std::inplace_merge(m_entries.begin(), later, m_entries.end(), earlier);
    m_sorted = m_entries.size();
  }
  if (time <= 0) { return m_entries; }
  const auto first = std::lower_bound(m_entries.begin(), m_entries.end(), time,
                                      [](const Entry& entry, LocalSeconds bound) { return entry.timeOfDay < bound; });
  return {first, m_entries.end()};
}

}  // namespace orlocal::store
