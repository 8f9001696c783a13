#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/text.h"
#include "store/file/checked_row.h"
#include "store/rows/packing.h"
#include "store/time/civil_days.h"
#include "store/time/clock_name.h"

namespace orlocal::store {

/// Whole numbers of any sign in groups of seven bits, texts with their length before them.
class Packer {
 public:
  explicit Packer(PackedBytes& out) : m_out(out) { m_out.clear(); }

  void number(std::int64_t value) {
    // Small numbers of both signs become small: 0, -1, 1, -2, …
    auto rest = static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63);
    for (; rest >= 0x80; rest >>= 7) { m_out.push_back(static_cast<std::byte>(rest | 0x80)); }
    m_out.push_back(static_cast<std::byte>(rest));
  }
  void text(std::string_view value) {
    number(static_cast<std::int64_t>(value.size()));
    const auto* data = reinterpret_cast<const std::byte*>(value.data());
    m_out.insert(m_out.end(), data, data + value.size());
  }
  void optionalText(const std::optional<std::string>& value) {
    number(value.has_value());
    if (value) { text(*value); }
  }
  void time(const CalendarTime& value) {
    text(clockName(value));
    number(localSeconds(value.local));
  }
  /// A number that says whether there is one, then `write` of it.
  template <class T, class Write>
  void optional(const std::optional<T>& value, const Write& write) {
    number(value.has_value());
    if (value) { write(*value); }
  }
  void optionalMoment(const std::optional<Moment>& value) {
    optional(value, [this](Moment moment) { number(moment.time_since_epoch().count()); });
  }
  void optionalTime(const std::optional<CalendarTime>& value) {
    optional(value, [this](const CalendarTime& at) { time(at); });
  }
  /// What `pack` makes of `value`, with its length before it; nothing for an empty value.
  template <class T, class Pack>
  void nested(const T& value, const Pack& pack) {
    PackedBytes bytes;
    if (value != T()) { pack(value, bytes); }
    text({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  void count(std::size_t size) { number(static_cast<std::int64_t>(size)); }
  void numbers(const std::vector<int>& values) {
    count(values.size());
    for (const int value : values) { number(value); }
  }

 private:
  PackedBytes& m_out;
};

/// Reads what `Packer` wrote; past a damage everything reads as nothing and `sound` is false. Lists end there.
class Unpacker {
 public:
  explicit Unpacker(std::span<const std::byte> bytes) : m_bytes(bytes) {}

  std::int64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      if (m_bytes.empty()) { break; }
      const auto byte = std::to_integer<std::uint64_t>(m_bytes.front());
      m_bytes = m_bytes.subspan(1);
      value |= (byte & 0x7f) << shift;
      if (byte < 0x80) { return static_cast<std::int64_t>(value >> 1 ^ (~(value & 1) + 1)); }
    }
    fail();
    return 0;
  }
  int small() {
    const std::int64_t value = number();
    if (value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max()) {
      return static_cast<int>(value);
    }
    fail();
    return 0;
  }
  /// The values of the enum are 0 to that of `last`.
  template <class Enum>
  Enum oneOf(Enum last) {
    const std::int64_t value = number();
    if (value >= 0 && value <= static_cast<std::int64_t>(last)) { return static_cast<Enum>(value); }
    fail();
    return Enum{};
  }
  std::int64_t seconds() {
    const std::int64_t value = number();
    if (isKept(value)) { return value; }
    fail();
    return 0;
  }
  bool flag() { return number() != 0; }
  std::string text() {
    const std::size_t size = count();
    std::string value(reinterpret_cast<const char*>(m_bytes.data()), size);
    m_bytes = m_bytes.subspan(size);
    if (!isUtf8(value)) { fail(); }
    return value;
  }
  std::optional<std::string> optionalText() { return flag() ? std::optional(text()) : std::nullopt; }
  CalendarTime time() {
    const std::string clock = text();
    auto time = timeOnClock(seconds(), clock);
    if (!time) { fail(); }
    return time.value_or(CalendarTime());
  }
  /// What `read` gives where there is one.
  template <class Read>
  auto optional(const Read& read) {
    return flag() ? std::optional(read()) : std::nullopt;
  }
  std::optional<Moment> optionalMoment() {
    return optional([this] { return Moment(std::chrono::microseconds(number())); });
  }
  std::optional<CalendarTime> optionalTime() {
    return optional([this] { return time(); });
  }
  template <class T, class Unpack>
  void nested(T& value, const Unpack& unpack) {
    const auto bytes = m_bytes.first(count());
    m_bytes = m_bytes.subspan(bytes.size());
    if (bytes.empty()) { return; }
    if (auto unpacked = unpack(bytes)) {
      value = *std::move(unpacked);
    } else {
      fail();
    }
  }
  /// Of things that take a byte at least.
  std::size_t count() {
    const std::int64_t value = number();
    if (value >= 0 && static_cast<std::uint64_t>(value) <= m_bytes.size()) { return static_cast<std::size_t>(value); }
    fail();
    return 0;
  }
  /// What `read` gives so many times as is said here.
  template <class Read>
  auto list(const Read& read) {
    std::vector<decltype(read())> values;
    for (std::size_t left = count(); left > 0 && m_sound; --left) { values.push_back(read()); }
    return values;
  }
  std::vector<int> numbers() {
    return list([this] { return small(); });
  }
  bool atEnd() const { return m_bytes.empty(); }
  bool sound() const { return m_sound && m_bytes.empty(); }

 private:
  void fail() {
    m_sound = false;
    m_bytes = {};
  }

  std::span<const std::byte> m_bytes;
  bool m_sound = true;
};

}  // namespace orlocal::store
