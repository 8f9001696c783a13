#include "host/fmwrapper/unicode.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include "base/text.h"
#include "base/utf.h"
#include "host/fmwrapper/text_search.h"

namespace orlocal::host {

namespace {

bool isAscii(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t unit) { return unit < 0x80; });
}

/// ICU's way of converting: once to learn the length when the guess was too short.
template <class Convert>
std::u16string converted(std::u16string_view text, Convert convert) {
  if (text.size() > static_cast<std::size_t>(INT32_MAX) / 4) {
    throw std::length_error("text too long to change its case");
  }
  std::u16string result(text.size() + text.size() / 8 + 4, u'\0');
  for (;;) {
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = convert(result.data(), static_cast<std::int32_t>(result.size()), text.data(),
                                        static_cast<std::int32_t>(text.size()), &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      result.resize(static_cast<std::size_t>(length) + 1);
      continue;
    }
    if (U_FAILURE(status)) { throw std::runtime_error("changing the case of a text failed"); }
    result.resize(static_cast<std::size_t>(length));
    return result;
  }
}

/// A folded text, and for each of its units where in the original the character begins that it came from.
struct Folded {
  std::u16string units;
  std::vector<std::size_t> origins;

  /// A match counts when it neither begins nor ends inside what one character folded to.
  bool isWhole(std::size_t at, std::size_t length) const { return isBorder(at) && isBorder(at + length); }

  bool isBorder(std::size_t at) const { return at == 0 || at == origins.size() || origins[at] != origins[at - 1]; }
};

Folded foldedWithOrigins(std::u16string_view text) {
  Folded folded;
  folded.units.reserve(text.size());
  folded.origins.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t origin = at;
    if (text[at] < 0x80) {
      folded.units.push_back(asciiLower(text[at++]));
    } else {
      nextCodePoint(text, at);
      folded.units += foldCase(text.substr(origin, at - origin));
    }
    folded.origins.resize(folded.units.size(), origin);
  }
  return folded;
}

}  // namespace

std::size_t encodeUtf8(std::u16string_view units, char* buffer, std::size_t room) noexcept {
  std::size_t written = 0;
  for (std::size_t at = 0; at < units.size();) {
    const char32_t point = nextCodePoint(units, at);
    if (room - written < static_cast<std::size_t>(U8_LENGTH(point))) { break; }
    U8_APPEND_UNSAFE(buffer, written, point);
  }
  return written;
}

std::string toUtf8(std::u16string_view units) {
  std::string bytes(units.size() * 3, '\0');
  bytes.resize(encodeUtf8(units, bytes.data(), bytes.size()));
  return bytes;
}

std::u16string toUtf16(std::string_view bytes) {
  std::u16string units;
  units.reserve(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) { append(units, nextCodePoint(bytes, at)); }
  return units;
}

std::u16string toUpper(std::u16string_view text) {
  if (isAscii(text)) {
    std::u16string result(text);
    std::ranges::transform(result, result.begin(), asciiUpper<char16_t>);
    return result;
  }
  return converted(text, [](char16_t* to, std::int32_t room, const char16_t* from, std::int32_t length,
                            UErrorCode* status) { return u_strToUpper(to, room, from, length, "", status); });
}

std::u16string toLower(std::u16string_view text) {
  if (isAscii(text)) {
    std::u16string result(text);
    std::ranges::transform(result, result.begin(), asciiLower<char16_t>);
    return result;
  }
  return converted(text, [](char16_t* to, std::int32_t room, const char16_t* from, std::int32_t length,
                            UErrorCode* status) { return u_strToLower(to, room, from, length, "", status); });
}

std::u16string foldCase(std::u16string_view text) {
  if (isAscii(text)) { return toLower(text); }
  return converted(text,
                   [](char16_t* to, std::int32_t room, const char16_t* from, std::int32_t length, UErrorCode* status) {
                     return u_strFoldCase(to, room, from, length, U_FOLD_CASE_DEFAULT, status);
                   });
}

std::u16string::size_type findIgnoringCase(std::u16string_view text, std::u16string_view what,
                                           std::u16string::size_type from, std::int64_t occurrence) {
  if (what.empty() || occurrence == 0) { return kNotFound; }
  const Folded folded = foldedWithOrigins(text);
  const std::u16string wanted = foldCase(what);
  const TextSearch search(wanted);
  std::vector<std::size_t> before;  // where it stands at or before `from`
  for (auto at = search.find(folded.units, 0); at != kNotFound; at = search.find(folded.units, at + 1)) {
    const std::size_t origin = folded.origins[at];
    if (occurrence < 0 && origin > from) { break; }
    if (!folded.isWhole(at, wanted.size())) { continue; }
    if (occurrence < 0) { before.push_back(origin); }
    if (occurrence > 0 && origin >= from && --occurrence == 0) { return origin; }
  }
  const std::uint64_t back = occurrence < 0 ? ~static_cast<std::uint64_t>(occurrence) : before.size();
  return back < before.size() ? before[before.size() - 1 - back] : kNotFound;
}

}  // namespace orlocal::host
