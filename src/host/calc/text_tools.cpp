#include "host/calc/text_tools.h"

#include <unicode/utf16.h>

#include "base/utf.h"
#include "host/fmwrapper/text_search.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::calc {

std::string lowerName(std::string_view name) { return toUtf8(toLower(toUtf16(name))); }

std::size_t characterCount(std::u16string_view text) {
  std::size_t count = 0;
  for (std::size_t unit = 0; unit < text.size(); ++count) { U16_FWD_1(text.data(), unit, text.size()); }
  return count;
}

std::size_t unitOfCharacter(std::u16string_view text, std::size_t index) {
  std::size_t unit = 0;
  for (; index > 0 && unit < text.size(); --index) { U16_FWD_1(text.data(), unit, text.size()); }
  return unit;
}

std::u16string_view characters(std::u16string_view text, std::size_t first, std::size_t count) {
  text.remove_prefix(unitOfCharacter(text, first));
  return text.substr(0, unitOfCharacter(text, count));
}

std::vector<std::u16string_view> valuesOf(std::u16string_view text) {
  std::vector<std::u16string_view> values;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of(u"\r\n");
    values.push_back(text.substr(0, end));
    if (end == std::u16string_view::npos) { break; }
    text.remove_prefix(end + (text.substr(end).starts_with(u"\r\n") ? 2 : 1));
  }
  return values;
}

std::u16string fromCodePoint(char32_t point) {
  std::u16string units;
  append(units, point);
  return units;
}

char32_t codePointAt(std::u16string_view text, std::size_t unit) {
  UChar32 point = 0;
  U16_NEXT(text.data(), unit, text.size(), point);
  return static_cast<char32_t>(point);
}

std::u16string replaceAll(std::u16string_view text, std::u16string_view from, std::u16string_view to) {
  std::u16string result;
  std::size_t at = 0;
  const TextSearch search(from);
  for (;;) {
    const std::size_t found = search.find(text, at);
    if (found == std::u16string_view::npos) { break; }
    result += text.substr(at, found - at);
    result += to;
    at = found + from.size();
  }
  result += text.substr(at);
  return result;
}

std::size_t countOf(std::u16string_view text, std::u16string_view what) {
  const TextSearch search(what);
  std::size_t count = 0;
  for (std::size_t at = search.find(text, 0); at != std::u16string_view::npos;
       at = search.find(text, at + what.size())) {
    ++count;
  }
  return count;
}

}  // namespace orlocal::host::calc
