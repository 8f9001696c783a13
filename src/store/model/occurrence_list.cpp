#include "store/model/occurrence_list.h"

#include <algorithm>
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

bool OccurrenceList::comesBefore(const Entry& a, const Entry& b) const {
  if (a.start != b.start) { return a.start < b.start; }
  if (!a.isUnusual() && !b.isUnusual()) { return a.rest < b.rest; }
  const Occurrence first = whole(a), second = whole(b);
  return std::tie(first.end, first.event, first.item) < std::tie(second.end, second.event, second.item);
}

void OccurrenceList::sort() {
  // A second list as long would be a large part of what the process has.
  constexpr std::size_t kFewest = 64, kMost = 1'000'000;
  const auto inOrder = [this](const Entry& a, const Entry& b) { return comesBefore(a, b); };
  if (m_entries.size() > kFewest && m_entries.size() <= kMost) { return dealOut(); }
  std::sort(m_entries.begin(), m_entries.end(), inOrder);
}

/// Sorts a month of a large store, hundreds of thousands, in few steps: dealt out to equal pieces of time first, a few
/// to each, and sorted there.
void OccurrenceList::dealOut() {
  constexpr std::size_t kInPiece = 8;
  const auto [first, last] = std::minmax_element(m_entries.begin(), m_entries.end(),
                                                 [](const Entry& a, const Entry& b) { return a.start < b.start; });
  const Moment begin = first->start;
  // A power of two, as dividing would be most of the work.
  const auto length = static_cast<std::uint64_t>((last->start - begin).count()) / (m_entries.size() / kInPiece);
  const auto shift = static_cast<unsigned>(std::bit_width(length));
  const auto pieceOf = [&](const Entry& entry) {
    return static_cast<std::size_t>(static_cast<std::uint64_t>((entry.start - begin).count()) >> shift);
  };
  // Where each piece ends, then, as it is filled from its end, where it begins.
  std::vector<std::uint32_t> places(pieceOf(*last) + 2);
  for (const Entry& entry : m_entries) { ++places[pieceOf(entry)]; }
  std::partial_sum(places.begin(), places.end(), places.begin());
  std::vector<Entry> sorted(m_entries.size());
  for (const Entry& entry : m_entries) { sorted[--places[pieceOf(entry)]] = entry; }
  for (std::size_t piece = 0; piece + 1 < places.size(); ++piece) {
    std::sort(sorted.begin() + places[piece], sorted.begin() + places[piece + 1],
              [this](const Entry& a, const Entry& b) { return comesBefore(a, b); });
  }
  m_entries = std::move(sorted);
}

bool operator==(const OccurrenceList& left, const OccurrenceList& right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end());
}

}  // namespace orlocal::store
