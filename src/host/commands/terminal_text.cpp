#include "host/commands/terminal_text.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>

#include <fmt/format.h>
#include <unicode/utf8.h>

#include "base/text.h"
#include "host/calc/rendering.h"

namespace orlocal::host {
namespace {

struct Range {
  char32_t first, last;
};

constexpr Range kWithoutWidth[] = {
    {0x0300, 0x036F}, {0x0591, 0x05BD}, {0x0610, 0x061A},   {0x064B, 0x065F},   {0x200B, 0x200F},
    {0x202A, 0x202E}, {0x2060, 0x2064}, {0x2066, 0x2069},   {0x20D0, 0x20FF},   {0xFE00, 0xFE0F},
    {0xFE20, 0xFE2F}, {0xFEFF, 0xFEFF}, {0x1F3FB, 0x1F3FF}, {0xE0100, 0xE01EF},
};

constexpr Range kWide[] = {
    {0x1100, 0x115F},   {0x231A, 0x231B},   {0x23E9, 0x23EC},   {0x2614, 0x2615},   {0x2705, 0x2705},
    {0x274C, 0x274C},   {0x2E80, 0x303E},   {0x3041, 0xA4CF},   {0xA960, 0xA97F},   {0xAC00, 0xD7A3},
    {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},   {0x1F300, 0x1F64F},
    {0x1F680, 0x1F6FF}, {0x1F7E0, 0x1F7EB}, {0x1F900, 0x1F9FF}, {0x1FA70, 0x1FAFF}, {0x20000, 0x3FFFD},
};

template <std::size_t N>
bool within(const Range (&ranges)[N], char32_t c) {
  return std::any_of(std::begin(ranges), std::end(ranges),
                     [c](const Range& range) { return c >= range.first && c <= range.last; });
}

constexpr std::string_view kReplacement = "\uFFFD";

/// Bytes of the character that begins `text`; 0 where none does.
std::size_t characterLength(std::string_view text) {
  const int ones = std::countl_one(static_cast<unsigned char>(text[0]));
  const std::size_t length = ones == 0 ? 1 : static_cast<std::size_t>(ones);
  if (ones == 1 || length > U8_MAX_LENGTH || length > text.size()) { return 0; }
  const bool whole = std::ranges::all_of(text.substr(1, length - 1), [](char byte) { return U8_IS_TRAIL(byte); });
  return whole ? length : 0;
}

/// Calls `visit(character, bytes)` for each character; a stray byte comes as U+FFFD, so that nothing hides behind it.
template <class Visit>
void eachCharacter(std::string_view text, Visit visit) {
  while (!text.empty()) {
    const std::size_t length = characterLength(text);
    if (length == 0) {
      visit(U'\uFFFD', kReplacement);
      text.remove_prefix(1);
      continue;
    }
    UChar32 c = 0;
    std::size_t behind = 0;
    U8_NEXT_UNSAFE(text.data(), behind, c);
    visit(static_cast<char32_t>(c), text.substr(0, length));
    text.remove_prefix(length);
  }
}

constexpr bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029; }

int channel(double part) { return static_cast<int>(std::clamp(part, 0.0, 1.0) * 255 + 0.5); }

}  // namespace

std::string printable(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  eachCharacter(text, [&out](char32_t c, std::string_view bytes) {
    if (isControl(c)) {
      out.push_back(' ');
    } else if (!calc::misleads(c)) {
      out.append(bytes);
    }
  });
  return out;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  eachCharacter(text, [&width](char32_t c, std::string_view) {
    if (within(kWithoutWidth, c)) { return; }
    width += within(kWide, c) ? 2 : 1;
  });
  return width;
}

std::string padded(std::string_view text, std::size_t width) {
  const std::size_t taken = displayWidth(text);
  std::string out(text);
  if (taken < width) { out.append(width - taken, ' '); }
  return out;
}

std::string Ink::colored(const std::optional<store::Rgb>& color, std::string_view text) const {
  if (!color) { return std::string(text); }
  return wrapped(fmt::format("\x1b[38;2;{};{};{}m", channel(color->red), channel(color->green), channel(color->blue)),
                 text);
}

std::string Ink::wrapped(std::string_view begin, std::string_view text) const {
  return m_on ? fmt::format("{}{}\x1b[0m", begin, text) : std::string(text);
}

}  // namespace orlocal::host
