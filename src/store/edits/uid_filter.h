#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orlocal::store {

/// One bit for each hash of a UID: says for sure that one was not added, and sometimes not that it was.
class UidFilter {
 public:
  /// Whether it may have been added before.
  bool add(std::uint64_t hash) {
    auto bit = m_bits[place(hash)];
    const bool was = bit;
    bit = true;
    return was;
  }
  bool mayHave(std::uint64_t hash) const { return m_bits[place(hash)]; }

 private:
  static constexpr int kBits = 23;
  static std::size_t place(std::uint64_t hash) { return hash * 0x9e3779b97f4a7c15U >> (64 - kBits); }

  std::vector<bool> m_bits = std::vector<bool>(std::size_t{1} << kBits);
};

}  // namespace orlocal::store
