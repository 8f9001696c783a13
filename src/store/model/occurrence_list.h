#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "store/model/occurrence.h"

namespace orlocal::store {

/// Occurrences in their order, to be kept for long: each in 16 bytes where it is as nearly all are, in 56 where it is
/// not. Those are changed ones, and what lasts longer than a century or not for whole seconds.
class OccurrenceList {
 public:
  explicit OccurrenceList(const std::vector<Occurrence>& occurrences) {
    m_entries.reserve(occurrences.size());
    for (const Occurrence& occurrence : occurrences) { add(occurrence); }
  }

  std::size_t size() const { return m_entries.size(); }

  /// `index` is below `size()`.
  Occurrence operator[](std::size_t index) const {
    const Entry& entry = m_entries[index];
    if (entry.item == kUnusual) { return m_unusual[entry.seconds]; }
    return {entry.start, entry.start + std::chrono::seconds(entry.seconds), entry.start, entry.item, entry.item};
  }

 private:
  struct Entry {
    Moment start;
    std::uint32_t seconds;  ///< from start to end; of an unusual one its place
    std::uint32_t item;
  };
  /// No row has this number.
  static constexpr std::uint32_t kUnusual = 0;

  void add(const Occurrence& occurrence) {
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

  std::vector<Entry> m_entries;
  std::vector<Occurrence> m_unusual;
};

}  // namespace orlocal::store
