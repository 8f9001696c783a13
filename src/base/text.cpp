#include "base/text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include <unicode/uchar.h>

#include "base/utf.h"

namespace orlocal {

std::string inCapitals(std::string_view text) {
  std::string upper(text);
  std::ranges::transform(upper, upper.begin(), asciiUpper<char>);
  return upper;
}

std::string caseFolded(std::string_view text) {
  std::string folded;
  for (std::size_t at = 0; at < text.size();) {
    append(folded,
           static_cast<char32_t>(u_foldCase(static_cast<UChar32>(nextCodePoint(text, at)), U_FOLD_CASE_DEFAULT)));
  }
  return folded;
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
  std::size_t length = 0;
  return nextWellFormed(bytes, length) ? length : 0;
}

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    std::uint64_t eight = 0;
    if (bytes.size() >= 8 && (std::memcpy(&eight, bytes.data(), 8), (eight & 0x8080808080808080U) == 0)) {
      bytes.remove_prefix(8);
      continue;
    }
    const bool ascii = static_cast<unsigned char>(bytes.front()) < 0x80;
    const std::size_t length = ascii ? 1 : characterLength(bytes);
    if (length == 0) { return false; }
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace orlocal
