#include "store/model/occurrence_list.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>

namespace orlocal::store {

OccurrenceList::OccurrenceList(const std::vector<Occurrence>& occurrences) {
  m_entries.reserve(occurrences.size());
  for (const Occurrence& occurrence : occurrences) { add(occurrence); }
}

void OccurrenceList::add(const Occurrence& occurrence) {
  constexpr auto kMost = std::numeric_limits<std::uint32_t>::max();
  const auto length = std::chrono::floor<std::chrono::seconds>(occurrence.end - occurrence.start);
  const bool usual = occurrence.originalStart == occurrence.start && occurrence.event == occurrence.item &&
                     occurrence.item > kUnusual && occurrence.item <= kMost && length.count() >= 0 &&
                     length.count() <= kMost && occurrence.start + length == occurrence.end;
  if (usual) {
    m_entries.push_back(
        {occurrence.start, static_cast<std::uint32_t>(length.count()), static_cast<std::uint32_t>(occurrence.item)});
  } else {
    m_entries.push_back({occurrence.start, static_cast<std::uint32_t>(m_unusual.size()), kUnusual});
    m_unusual.push_back(occurrence);
  }
}

void OccurrenceList::clear() {
  m_entries.clear();
  m_unusual.clear();
}

bool OccurrenceList::comesBefore(const Entry& a, const Entry& b) const {
  if (a.start != b.start) { return a.start < b.start; }
  if (a.item != kUnusual && b.item != kUnusual) { return std::tie(a.seconds, a.item) < std::tie(b.seconds, b.item); }
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
  const std::int64_t length =
      (last->start - begin).count() / static_cast<std::int64_t>(m_entries.size() / kInPiece) + 1;
  const auto pieceOf = [&](const Entry& entry) {
    return static_cast<std::size_t>((entry.start - begin).count() / length);
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
