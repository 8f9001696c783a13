#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orlocal::host::calc {

/// The carriage return that ends the lines of a host's text.
inline constexpr char16_t kReturn = u'\r';

/// Names of functions and variables are compared in this form.
std::string lowerName(std::string_view name);

/// Texts are counted in characters: a surrogate pair is one and is never cut.
std::size_t characterCount(std::u16string_view text);

/// The unit at which the character `index` (from 0) begins; the text's size past the last one.
std::size_t unitOfCharacter(std::u16string_view text, std::size_t index);

/// `count` characters from the character `first` (from 0), as far as there are any.
std::u16string_view characters(std::u16string_view text, std::size_t first, std::size_t count);

/// The values of a list. A return ends a value, so one at the end of the text begins no further value. A line feed,
/// alone or after a return, ends a value too.
std::vector<std::u16string_view> valuesOf(std::u16string_view text);

/// The units of one code point, which must be one.
std::u16string fromCodePoint(char32_t point);
/// The code point at a unit; an unpaired surrogate is its own value.
char32_t codePointAt(std::u16string_view text, std::size_t unit);

/// Every occurrence of `from` (same case) becomes `to`. An empty `from` changes nothing.
std::u16string replaceAll(std::u16string_view text, std::u16string_view from, std::u16string_view to);

/// Non-overlapping occurrences of `what`, in the same case.
std::size_t countOf(std::u16string_view text, std::u16string_view what);

}  // namespace orlocal::host::calc
