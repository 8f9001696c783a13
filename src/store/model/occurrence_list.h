#pragma once

#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

#include "store/model/occurrence.h"

namespace orlocal::store {

/// The answer to a range query, which may have millions of them and is kept for long: each in 16 bytes where it is as
/// nearly all are, in 56 where it is not. Those are changed ones, and what lasts longer than a century or not for whole
/// seconds. Read like a vector whose elements are made when they are asked for.
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
    const std::int64_t length = (occurrence.end - occurrence.start).count();
    const bool usual = occurrence.originalStart == occurrence.start && occurrence.event == occurrence.item &&
                       occurrence.item > 0 && occurrence.item <= kMost && length >= 0 &&
                       length <= kMost * kMicroseconds && length % kMicroseconds == 0;
    const std::int64_t upper = usual ? length / kMicroseconds : static_cast<std::int64_t>(m_unusual.size());
    const auto row = static_cast<std::uint64_t>(usual ? occurrence.item : 0);
    m_entries.push_back({occurrence.start, static_cast<std::uint64_t>(upper) << 32U | row});
    if (!usual) { m_unusual.push_back(occurrence); }
  }
  /// By start, end, event and item: identifiers are given out in the order of the rows.
  void sort();
  void clear();

  friend bool operator==(const OccurrenceList& left, const OccurrenceList& right);

 private:
  struct Entry {
    Moment start;
    /// Seconds from start to end, then the row in the lower half: entries of one start stand in this order. Of an
    /// unusual one its place and 0, as no row has that number.
    std::uint64_t rest;

    std::uint32_t row() const { return static_cast<std::uint32_t>(rest); }
    std::uint32_t seconds() const { return static_cast<std::uint32_t>(rest >> 32U); }
    bool isUnusual() const { return row() == 0; }
  };

  Occurrence whole(const Entry& entry) const {
    if (entry.isUnusual()) { return m_unusual[entry.seconds()]; }
    return {entry.start, entry.start + std::chrono::seconds(entry.seconds()), entry.start, entry.row(), entry.row()};
  }
  bool comesBefore(const Entry& a, const Entry& b) const;
  void dealOut();

  static constexpr std::int64_t kMicroseconds = 1'000'000;  ///< in a second
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
