#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace orlocal::store {

/// A 128-bit identifier (RFC 9562).
class Uuid {
 public:
  static constexpr std::size_t kBytes = 16;

  Uuid() = default;
  /// Of `kBytes` bytes; anything else gives the nil one.
  explicit Uuid(std::span<const std::byte> bytes);
  /// The text as `text` writes it; none for any other.
  static std::optional<Uuid> parse(std::string_view text);

  /// 36 characters, upper case.
  std::string text() const;
  std::span<const std::byte> bytes() const { return m_bytes; }
  int version() const { return std::to_integer<int>(m_bytes[6] >> 4); }

  friend auto operator<=>(const Uuid&, const Uuid&) = default;

 private:
  std::array<std::byte, kBytes> m_bytes{};
};

/// Makes version 7 identifiers: by time, then random, each greater than the one before, so that their order is the
/// order in which they were made.
class UuidMaker {
 public:
  static constexpr int kVersion = 7;

  UuidMaker();

  /// Makes the next one greater than `used` too.
  void startAfter(const Uuid& used);
  Uuid next();
  /// 63 random bits, never 0.
  std::int64_t randomNumber();

 private:
  std::uint64_t random();

  std::uint64_t m_state;
  std::uint64_t m_high = 0;  ///< 48 bits of milliseconds, 12 bits
  std::uint64_t m_low = 0;   ///< 62 bits
};

}  // namespace orlocal::store
