#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace orlocal {

/// Letters of ASCII change, everything else stays.
template <class Char>
constexpr Char asciiLower(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c + ('a' - 'A')) : c;
}
template <class Char>
constexpr Char asciiUpper(Char c) {
  return c >= 'a' && c <= 'z' ? static_cast<Char>(c - ('a' - 'A')) : c;
}
std::string inCapitals(std::string_view text);

/// ASCII letters count as the same in capitals and small.
constexpr bool equalsNoCase(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) { return false; }
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (asciiLower(left[i]) != asciiLower(right[i])) { return false; }
  }
  return true;
}

/// With the case of all letters taken away: what differs in it alone becomes equal. Malformed bytes become U+FFFD.
std::string caseFolded(std::string_view text);

/// Without the blanks around it.
template <class Char>
constexpr std::basic_string_view<Char> trimmed(std::basic_string_view<Char> text,
                                               std::type_identity_t<std::basic_string_view<Char>> blanks) {
  while (!text.empty() && blanks.find(text.front()) != blanks.npos) { text.remove_prefix(1); }
  while (!text.empty() && blanks.find(text.back()) != blanks.npos) { text.remove_suffix(1); }
  return text;
}
/// Without the spaces and tabs around it.
constexpr std::string_view trimmed(std::string_view text) {
  const auto blank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && blank(text.front())) { text.remove_prefix(1); }
  while (!text.empty() && blank(text.back())) { text.remove_suffix(1); }
  return text;
}
/// The same, and without quotes.
std::string_view withoutQuotes(std::string_view text);
/// Splits at a separator that is not escaped by a backslash.
std::vector<std::string_view> splitUnescaped(std::string_view value, char separator);

bool isUtf8(std::string_view bytes);
/// How many bytes the first character has; 0 when it is not well-formed UTF-8. Not of an empty text.
std::size_t characterLength(std::string_view bytes);

}  // namespace orlocal
