#pragma once

#include <algorithm>
#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

#include "store/model/occurrence.h"

namespace orlocal::store {

/// The answer to a range query, which may have millions of them and is kept for long: each in 12 bytes where it is as
/// nearly all are, in 52 where it is not. Those are changed ones, what lasts longer than a century or not for whole
/// seconds, and what lies a lifetime away from the first. Read like a vector whose elements are made when they are
/// asked for.
class OccurrenceList {
 public:
  using value_type = Occurrence;
  class const_iterator;

  OccurrenceList() = default;
  OccurrenceList(const std::vector<Occurrence>& occurrences);  // NOLINT(google-explicit-constructor): the same in less

  std::size_t size() const { return m_entries.size(); }
  bool empty() const { return m_entries.empty(); }
  /// `index` is below `size()`.
  Occurrence operator[](std::size_t index) const { return whole(m_entries[index]); }
  const_iterator begin() const;
  const_iterator end() const;

  void add(const Occurrence& occurrence) {
    constexpr std::int64_t kMost = std::numeric_limits<std::uint32_t>::max();
    const auto whole = std::chrono::floor<std::chrono::seconds>(occurrence.start);
    if (m_entries.empty()) { m_base = whole - std::chrono::seconds(kMost / 2); }
    const std::int64_t start = (whole - m_base).count();
    const std::int64_t length = (occurrence.end - occurrence.start).count();
    const bool usual = occurrence.originalStart == occurrence.start && occurrence.event == occurrence.item &&
                       occurrence.item > 0 && occurrence.item <= kMost && occurrence.start == whole && start >= 0 &&
                       start <= kMost && length >= 0 && length <= kMost * kMicroseconds && length % kMicroseconds == 0;
    if (usual) {
      m_entries.push_back({static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(length / kMicroseconds),
                           static_cast<std::uint32_t>(occurrence.item)});
      return;
    }
    m_entries.push_back({static_cast<std::uint32_t>(std::clamp<std::int64_t>(start, 0, kMost)),
                         static_cast<std::uint32_t>(m_unusual.size()), 0});
    m_unusual.push_back(occurrence);
  }
  /// By start, end, event and item: identifiers are given out in the order of the rows.
  void sort();
  void clear();

  friend bool operator==(const OccurrenceList& left, const OccurrenceList& right);

 private:
  /// In the order in which it is sorted, but for the unusual ones.
  struct Entry {
    std::uint32_t start;   ///< seconds after `m_base`; of an unusual one as near as can be
    std::uint32_t length;  ///< seconds; of an unusual one its place
    std::uint32_t row;     ///< 0: an unusual one, as no row has that number

    bool isUnusual() const { return row == 0; }
    friend auto operator<=>(const Entry&, const Entry&) = default;
  };

  Occurrence whole(const Entry& entry) const {
    if (entry.isUnusual()) { return m_unusual[entry.length]; }
    const Moment start = m_base + std::chrono::seconds(entry.start);
    return {start, start + std::chrono::seconds(entry.length), start, entry.row, entry.row};
  }
  void sortByDigits();
  void placeUnusual();

  static constexpr std::int64_t kMicroseconds = 1'000'000;  ///< in a second
  std::chrono::sys_seconds m_base;  ///< so far before the first one that as many lie before it as after it
  std::vector<Entry> m_entries;
  std::vector<Occurrence> m_unusual;
};

class OccurrenceList::const_iterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = Occurrence;
  using difference_type = std::ptrdiff_t;
  using pointer = void;
  using reference = Occurrence;

  const_iterator(const OccurrenceList& list, std::size_t index) : m_list(&list), m_index(index) {}
  Occurrence operator*() const { return (*m_list)[m_index]; }
  const_iterator& operator++() { return ++m_index, *this; }
  const_iterator operator++(int) {
    const const_iterator before = *this;
    ++m_index;
    return before;
  }
  friend bool operator==(const const_iterator&, const const_iterator&) = default;

 private:
  const OccurrenceList* m_list;
  std::size_t m_index;
};

inline OccurrenceList::const_iterator OccurrenceList::begin() const { return {*this, 0}; }
inline OccurrenceList::const_iterator OccurrenceList::end() const { return {*this, size()}; }

}  // namespace orlocal::store
