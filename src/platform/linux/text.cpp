#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <type_traits>

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/stringpiece.h>
#include <unicode/utypes.h>

#include "base/text.h"

namespace orlocal {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Copies characters, changed by `convert`, and says whether all of them were ASCII; otherwise the copy is of no use.
/// These texts are most of what passes between host and plug-in, so it goes eight at a time.
template <class From, class To, class Convert>
bool copyAscii(const From* from, To* to, std::size_t count, Convert convert) {
  using Unit = std::make_unsigned_t<std::conditional_t<sizeof(From) == 1, char, short>>;
  unsigned seen = 0;
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    for (std::size_t k = i; k < i + 8; ++k) {
      seen |= static_cast<Unit>(from[k]);
      to[k] = convert(from[k]);
    }
  }
  for (; i < count; ++i) {
    seen |= static_cast<Unit>(from[i]);
    to[i] = convert(from[i]);
  }
  return seen < 0x80;
}

void appendUtf8(std::string& out, char32_t c) {
  const auto byte = [&out](char32_t value) { out.push_back(static_cast<char>(value)); };
  if (c < 0x80) {
    byte(c);
  } else if (c < 0x800) {
    byte(0xC0 | (c >> 6));
    byte(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    byte(0xE0 | (c >> 12));
    byte(0x80 | ((c >> 6) & 0x3F));
    byte(0x80 | (c & 0x3F));
  } else {
    byte(0xF0 | (c >> 18));
    byte(0x80 | ((c >> 12) & 0x3F));
    byte(0x80 | ((c >> 6) & 0x3F));
    byte(0x80 | (c & 0x3F));
  }
}

void appendUtf16(std::u16string& out, char32_t c) {
  if (c < 0x10000) {
    out.push_back(static_cast<char16_t>(c));
  } else {
    out.push_back(static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF)));
  }
}

/// What a lead byte promises: how many bytes follow, and the range of the first of them. Ranges narrower than 80 to BF
/// keep out overlong forms, surrogates and what lies beyond U+10FFFF.
struct Lead {
  unsigned char first, last;
  unsigned char followers;
  unsigned char low, high;
};
constexpr Lead kLeads[] = {
    {0xC2, 0xDF, 1, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0xA0, 0xBF}, {0xE1, 0xEC, 2, 0x80, 0xBF}, {0xED, 0xED, 2, 0x80, 0x9F},
    {0xEE, 0xEF, 2, 0x80, 0xBF}, {0xF0, 0xF0, 3, 0x90, 0xBF}, {0xF1, 0xF3, 3, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x80, 0x8F},
};

/// The character at `position`, which moves behind it. What is malformed counts as one U+FFFD for each longest piece
/// that could have begun a character.
char32_t nextCharacter(std::string_view text, std::size_t& position) {
  const auto at = [&text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char first = at(position++);
  if (first < 0x80) { return first; }
  const auto* lead = std::find_if(std::begin(kLeads), std::end(kLeads),
                                  [first](const Lead& row) { return first >= row.first && first <= row.last; });
  if (lead == std::end(kLeads)) { return kReplacement; }
  char32_t c = first & (0x3FU >> lead->followers);
  unsigned char low = lead->low;
  unsigned char high = lead->high;
  for (int i = 0; i < lead->followers; ++i) {
    if (position >= text.size() || at(position) < low || at(position) > high) { return kReplacement; }
    c = (c << 6) | (at(position++) & 0x3FU);
    low = 0x80;
    high = 0xBF;
  }
  return c;
}

/// Pieces between the characters for which `separates` holds.
template <class Predicate>
std::vector<std::string> split(std::string_view text, Predicate separates) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t here = position;
    if (!separates(nextCharacter(text, position))) { continue; }
    pieces.emplace_back(text.substr(begin, here - begin));
    begin = position;
  }
  pieces.emplace_back(text.substr(begin));
  return pieces;
}

}  // namespace

std::string utf8FromUtf16(std::u16string_view units) {
  std::string out(units.size(), '\0');
  if (copyAscii(units.data(), out.data(), units.size(), [](char16_t unit) { return static_cast<char>(unit); })) {
    return out;
  }

  out.clear();
  out.reserve(units.size() * 2);
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char32_t unit = units[i];
    if (unit < 0xD800 || unit > 0xDFFF) {
      appendUtf8(out, unit);
    } else if (unit < 0xDC00 && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF) {
      appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (units[++i] - 0xDC00U));
    } else {
      appendUtf8(out, kReplacement);
    }
  }
  return out;
}

std::u16string utf16FromUtf8(std::string_view text) {
  std::u16string out(text.size(), u'\0');
  const auto widen = [](char byte) { return static_cast<char16_t>(static_cast<unsigned char>(byte)); };
  if (copyAscii(text.data(), out.data(), text.size(), widen)) { return out; }

  out.clear();
  for (std::size_t position = 0; position < text.size();) { appendUtf16(out, nextCharacter(text, position)); }
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
