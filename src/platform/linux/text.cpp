#include "platform/text.h"

#include <algorithm>
#include <cstddef>

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/stringpiece.h>
#include <unicode/utypes.h>

#include "base/text.h"
#include "base/utf.h"

namespace orlocal {
namespace {

/// Copies characters, changed by `convert`, and says whether all of them were ASCII; otherwise the copy is of no use.
/// These texts are most of what passes between host and plug-in, so it goes eight at a time.
template <class To, class Convert>
bool copyAscii(const char* from, To* to, std::size_t count, Convert convert) {
  unsigned seen = 0;
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    for (std::size_t k = i; k < i + 8; ++k) {
      seen |= static_cast<unsigned char>(from[k]);
      to[k] = convert(from[k]);
    }
  }
  for (; i < count; ++i) {
    seen |= static_cast<unsigned char>(from[i]);
    to[i] = convert(from[i]);
  }
  return seen < 0x80;
}

/// Pieces between the characters for which `separates` holds.
template <class Predicate>
std::vector<std::string> split(std::string_view text, Predicate separates) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t here = position;
    if (!separates(nextCodePoint(text, position))) { continue; }
    pieces.emplace_back(text.substr(begin, here - begin));
    begin = position;
  }
  pieces.emplace_back(text.substr(begin));
  return pieces;
}

}  // namespace

bool isAscii(std::u16string_view units) {
  unsigned seen = 0;
  for (const char16_t unit : units) { seen |= unit; }
  return seen < 0x80;
}

std::string utf8FromUtf16(std::u16string_view units) {
  if (isAscii(units)) { return std::string(units.begin(), units.end()); }
  std::string out;
  out.reserve(units.size() * 2);
  for (std::size_t position = 0; position < units.size();) { append(out, nextCodePoint(units, position)); }
  return out;
}

std::u16string utf16FromUtf8(std::string_view text) {
  std::u16string out(text.size(), u'\0');
  const auto widen = [](char byte) { return static_cast<char16_t>(static_cast<unsigned char>(byte)); };
  if (copyAscii(text.data(), out.data(), text.size(), widen)) { return out; }

  out.clear();
  for (std::size_t position = 0; position < text.size();) { append(out, nextCodePoint(text, position)); }
  return out;
}

std::string lowercase(std::string_view text) {
  std::string out(text.size(), '\0');
  if (copyAscii(text.data(), out.data(), text.size(), asciiLower<char>)) { return out; }

  out.clear();
  UErrorCode status = U_ZERO_ERROR;
  icu::StringByteSink<std::string> sink(&out, static_cast<std::int32_t>(text.size()));
  // The root locale: the default one would make "I" a dotless i for a Turkish user.
  icu::CaseMap::utf8ToLower("", 0, icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())), sink, nullptr,
                            status);
  return U_SUCCESS(status) != 0 ? out : std::string(text);
}

bool isPlainLowercase(std::string_view text) {
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x80 || asciiLower(c) != c) { return false; }
  }
  return true;
}

bool isTrueText(const OptionalText& text) {
  // No character outside ASCII has a lower case among these four letters.
  constexpr std::string_view kTrue = "true";
  return text && std::equal(text->begin(), text->end(), kTrue.begin(), kTrue.end(),
                            [](char given, char wanted) { return asciiLower(given) == wanted; });
}

std::vector<std::string> splitAtNewlines(std::string_view text) {
  return split(text, [](char32_t c) { return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029; });
}

std::vector<std::string> splitAtWhitespace(std::string_view text) {
  return split(text, [](char32_t c) {
    return c == U' ' || c == U'\t' || c == 0xA0 || c == 0x1680 || (c >= 0x2000 && c <= 0x200A) || c == 0x202F ||
           c == 0x205F || c == 0x3000;
  });
}

}  // namespace orlocal
