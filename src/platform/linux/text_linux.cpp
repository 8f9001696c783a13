#include <algorithm>
#include <array>
#include <cstddef>

#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/stringpiece.h>
#include <unicode/utypes.h>

#include "platform/text.h"

namespace orlocal {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

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
  if (first < 0x80) return first;
  const auto* lead = std::find_if(std::begin(kLeads), std::end(kLeads),
                                  [first](const Lead& row) { return first >= row.first && first <= row.last; });
  if (lead == std::end(kLeads)) return kReplacement;
  char32_t c = first & (0x3FU >> lead->followers);
  unsigned char low = lead->low;
  unsigned char high = lead->high;
  for (int i = 0; i < lead->followers; ++i) {
    if (position >= text.size() || at(position) < low || at(position) > high) return kReplacement;
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
    if (!separates(nextCharacter(text, position))) continue;
    pieces.emplace_back(text.substr(begin, here - begin));
    begin = position;
  }
  pieces.emplace_back(text.substr(begin));
  return pieces;
}

}  // namespace

std::string utf8FromUtf16(std::u16string_view units) {
  std::string out(units.size(), '\0');
  char16_t seen = 0;
  for (std::size_t i = 0; i < units.size(); ++i) {
    seen = static_cast<char16_t>(seen | units[i]);
    out[i] = static_cast<char>(units[i]);
  }
  if (seen < 0x80) return out;

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
  unsigned char seen = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    seen = static_cast<unsigned char>(seen | byte);
    out[i] = byte;
  }
  if (seen < 0x80) return out;

  out.clear();
  for (std::size_t position = 0; position < text.size();) appendUtf16(out, nextCharacter(text, position));
  return out;
}

std::string lowercase(std::string_view text) {
  std::string out(text.size(), '\0');
  unsigned char seen = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    seen = static_cast<unsigned char>(seen | static_cast<unsigned char>(text[i]));
    out[i] = asciiLower(text[i]);
  }
  if (seen < 0x80) return out;

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
