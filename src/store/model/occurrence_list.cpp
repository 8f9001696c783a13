#include "store/model/occurrence_list.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>
#include <tuple>

namespace orlocal::store {

OccurrenceList::OccurrenceList(const std::vector<Occurrence>& occurrences) {
  m_entries.reserve(occurrences.size());
  for (const Occurrence& occurrence : occurrences) { add(occurrence); }
}

void OccurrenceList::clear() {
  m_entries.clear();
  m_unusual.clear();
}

void OccurrenceList::sort() {
  // A second list as long would be a large part of what the process has.
  constexpr std::size_t kFewest = 256, kMost = 1'000'000;
  if (m_entries.size() > kFewest && m_entries.size() <= kMost) {
    sortByDigits();
  } else {
    std::sort(m_entries.begin(), m_entries.end());
  }
  if (!m_unusual.empty()) { placeUnusual(); }
}

/// From the last digit to the first, each time keeping the order of those that have the same one: as much work for each
/// entry however many there are and begin together, and none for digits in which all are alike.
void OccurrenceList::sortByDigits() {
  constexpr int kBits = 10, kValues = 1 << kBits;
  std::vector<Entry> sorted(m_entries.size());
  for (const auto number : {&Entry::row, &Entry::length, &Entry::start}) {
    std::uint32_t differing = 0;
    for (const Entry& entry : m_entries) { differing |= entry.*number ^ m_entries.front().*number; }
    for (int shift = std::countr_zero(differing); shift < 32 && differing >> shift != 0; shift += kBits) {
      const auto digitOf = [&](const Entry& entry) { return entry.*number >> shift & (kValues - 1); };
      std::array<std::uint32_t, kValues> places{};
      for (const Entry& entry : m_entries) { ++places[digitOf(entry)]; }
      std::exclusive_scan(places.begin(), places.end(), places.begin(), 0U);
      for (const Entry& entry : m_entries) { sorted[places[digitOf(entry)]++] = entry; }
      m_entries.swap(sorted);
    }
  }
}

/// What an unusual one's numbers do not tell: where it stands among those that begin in the same second.
void OccurrenceList::placeUnusual() {
  const auto inOrder = [this](const Entry& a, const Entry& b) {
    const Occurrence first = whole(a), second = whole(b);
    return std::tie(first.start, first.end, first.event, first.item) <
           std::tie(second.start, second.end, second.event, second.item);
  };
  for (auto from = m_entries.begin(); from != m_entries.end();) {
    const auto to = std::find_if(from, m_entries.end(), [&](const Entry& entry) { return entry.start != from->start; });
    if (std::any_of(from, to, [](const Entry& entry) { return entry.isUnusual(); })) { std::sort(from, to, inOrder); }
    from = to;
  }
}

bool operator==(const OccurrenceList& left, const OccurrenceList& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

}  // namespace orlocal::store
