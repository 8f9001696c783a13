#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orlocal {

/// Absent is `std::nullopt`, never "".
using OptionalText = std::optional<std::string>;

/// UTF-16 units (native byte order) to UTF-8. An unpaired surrogate becomes U+FFFD.
std::string utf8FromUtf16(std::u16string_view units);
/// Such units are their own UTF-8.
bool isAscii(std::u16string_view units);

/// UTF-8 to UTF-16 units. Malformed bytes become U+FFFD.
std::u16string utf16FromUtf8(std::string_view text);

/// Unicode default lower case, without a locale.
std::string lowercase(std::string_view text);

/// Whether `text` is its own lower case, as far as a glance tells: ASCII without capitals.
bool isPlainLowercase(std::string_view text);

/// True exactly when the lower-cased `text` is "true". Absent is false.
bool isTrueText(const OptionalText& text);

/// Pieces between the line separators U+000A to U+000D, U+0085, U+2028 and U+2029. "a\r\nb" has an empty piece in the
/// middle, as each separator ends a piece. A text without separators gives one piece.
std::vector<std::string> splitAtNewlines(std::string_view text);

/// Pieces between Unicode space separators and tabs, empty ones kept: two blanks in a row enclose an empty piece.
std::vector<std::string> splitAtWhitespace(std::string_view text);

}  // namespace orlocal
