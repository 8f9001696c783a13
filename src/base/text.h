#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace orlocal {

/// ASCII letters count as the same in capitals and small.
bool equalsNoCase(std::string_view left, std::string_view right);
/// Without the spaces and tabs around it.
std::string_view trimmed(std::string_view text);
/// The same, and without quotes.
std::string_view withoutQuotes(std::string_view text);
/// Splits at a separator that is not escaped by a backslash.
std::vector<std::string_view> splitUnescaped(std::string_view value, char separator);

bool isUtf8(std::string_view bytes);
/// How many bytes the first character has; 0 when it is not well-formed UTF-8. Not of an empty text.
std::size_t characterLength(std::string_view bytes);

}  // namespace orlocal
