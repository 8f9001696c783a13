#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/utf16.h>
#include <unicode/utf8.h>

// Texts as code points. All of it is here, for those too who link no library of ours.
namespace orlocal {

// GCC warns of conversions within ICU's macro.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
/// The code point at `at`, which moves behind it; none for the longest piece of malformed bytes that could have begun a
/// character.
inline std::optional<char32_t> nextWellFormed(std::string_view bytes, std::size_t& at) {
  UChar32 point = 0;
  U8_NEXT(bytes.data(), at, bytes.size(), point);
  return point < 0 ? std::nullopt : std::optional(static_cast<char32_t>(point));
}
#pragma GCC diagnostic pop

/// The same with U+FFFD for what is malformed.
inline char32_t nextCodePoint(std::string_view bytes, std::size_t& at) {
  return nextWellFormed(bytes, at).value_or(U'\uFFFD');
}

/// The same of UTF-16 units, where an unpaired surrogate is malformed.
inline char32_t nextCodePoint(std::u16string_view units, std::size_t& at) {
  UChar32 point = 0;
  U16_NEXT_OR_FFFD(units.data(), at, units.size(), point);
  return static_cast<char32_t>(point);
}

/// `point` must be a code point and no surrogate.
inline void append(std::string& bytes, char32_t point) {
  char encoded[U8_MAX_LENGTH];
  std::size_t length = 0;
  U8_APPEND_UNSAFE(encoded, length, point);
  bytes.append(encoded, length);
}

inline void append(std::u16string& units, char32_t point) {
  char16_t encoded[U16_MAX_LENGTH];
  std::size_t length = 0;
  U16_APPEND_UNSAFE(encoded, length, point);
  units.append(encoded, length);
}

}  // namespace orlocal
