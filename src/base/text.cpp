#include "base/text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace orlocal {

namespace {

using Byte = unsigned char;

}  // namespace

std::string inCapitals(std::string_view text) {
  std::string upper(text);
  std::ranges::transform(upper, upper.begin(), asciiUpper<char>);
  return upper;
}

bool equalsNoCase(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, asciiLower<char>, asciiLower<char>);
}

std::string_view withoutQuotes(std::string_view text) { return trimmed(text, " \t\""); }

std::vector<std::string_view> splitUnescaped(std::string_view value, char separator) {
  std::vector<std::string_view> parts;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value[i] == '\\') {
      ++i;
    } else if (value[i] == separator) {
      parts.push_back(value.substr(begin, i - begin));
      begin = i + 1;
    }
  }
  parts.push_back(value.substr(begin));
  return parts;
}

std::size_t characterLength(std::string_view bytes) {
  const auto* at = reinterpret_cast<const Byte*>(bytes.data());
  const Byte lead = *at;
  if (lead < 0x80) { return 1; }
  const std::size_t length = lead >= 0xF5 ? 0 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
  if (length == 0 || bytes.size() < length) { return 0; }
  const Byte second = at[1];
  // Overlong forms, surrogates, and what lies past U+10FFFF.
  if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) || (lead == 0xF0 && second < 0x90) ||
      (lead == 0xF4 && second > 0x8F)) {
    return 0;
  }
  for (std::size_t i = 1; i < length; ++i) {
    if ((at[i] & 0xC0) != 0x80) { return 0; }
  }
  return length;
}

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    std::uint64_t eight = 0;
    if (bytes.size() >= 8 && (std::memcpy(&eight, bytes.data(), 8), (eight & 0x8080808080808080U) == 0)) {
      bytes.remove_prefix(8);
      continue;
    }
    const std::size_t length = characterLength(bytes);
    if (length == 0) { return false; }
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace orlocal
