#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace orlocal::fuzz {

/// An input read as a row of choices. Past its end every choice is the first.
class Choices {
 public:
  Choices(const std::uint8_t* data, std::size_t size) : m_rest(reinterpret_cast<const char*>(data), size) {}

  bool more() const { return !m_rest.empty(); }

  std::uint8_t byte() {
    if (m_rest.empty()) { return 0; }
    const auto first = static_cast<std::uint8_t>(m_rest.front());
    m_rest.remove_prefix(1);
    return first;
  }

  /// Below `count`, which is 256 at most.
  std::size_t below(std::size_t count) { return byte() % count; }

  template <class T, std::size_t Size>
  const T& oneOf(const T (&table)[Size]) {
    static_assert(Size <= 256);
    return table[below(Size)];
  }

  /// As many bytes as the first one says.
  std::string text() {
    const std::size_t length = byte();
    const auto taken = m_rest.substr(0, length);
    m_rest.remove_prefix(taken.size());
    return std::string(taken);
  }

  std::int64_t wholeNumber() {
    std::uint64_t bits = 0;
    for (int i = 0; i < 8; ++i) { bits = bits << 8 | byte(); }
    return static_cast<std::int64_t>(bits);
  }

 private:
  std::string_view m_rest;
};

}  // namespace orlocal::fuzz
