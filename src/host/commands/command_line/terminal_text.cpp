#include "host/commands/command_line/terminal_text.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unicode/uchar.h>
#include <unistd.h>

#include "base/utf.h"
#include "host/calc/rendering.h"

namespace orlocal::host {
namespace {

/// Marks that join the letter before, and format characters, of which terminals show the soft hyphen and the signs that
/// stand before numbers; skin tones join the emoji before.
bool isWithoutWidth(char32_t c) {
  const auto point = static_cast<UChar32>(c);
  if ((U_GET_GC_MASK(point) & (U_GC_MN_MASK | U_GC_ME_MASK)) != 0) { return true; }
  if (u_hasBinaryProperty(point, UCHAR_EMOJI_MODIFIER) != 0) { return true; }
  constexpr char32_t kSoftHyphen = 0xAD;
  return u_charType(point) == U_FORMAT_CHAR && c != kSoftHyphen &&
         u_hasBinaryProperty(point, UCHAR_PREPENDED_CONCATENATION_MARK) == 0;
}

bool isWide(char32_t c) {
  const int width = u_getIntPropertyValue(static_cast<UChar32>(c), UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH;
}

constexpr std::string_view kReplacement = "\uFFFD";

/// Calls `visit(character, bytes)` for each character; malformed bytes come as U+FFFD, so that nothing hides behind
/// them.
template <class Visit>
void eachCharacter(std::string_view text, Visit visit) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = at;
    if (const auto point = nextWellFormed(text, at)) {
      visit(*point, text.substr(begin, at - begin));
    } else {
      visit(U'\uFFFD', kReplacement);
    }
  }
}

constexpr bool isControl(char32_t c) { return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029; }

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
    if (isWithoutWidth(c)) { return; }
    width += isWide(c) ? 2 : 1;
  });
  return width;
}

std::string padded(std::string_view text, std::size_t width) {
  const std::size_t taken = displayWidth(text);
  std::string out(text);
  if (taken < width) { out.append(width - taken, ' '); }
  return out;
}

std::size_t terminalWidth(bool onTerminal) {
  constexpr std::size_t kUsual = 80;
  constexpr std::size_t kNarrowest = 20;
  constexpr std::size_t kWidest = 1000;
  std::size_t width = 0;
  if (const char* set = std::getenv("COLUMNS"); set != nullptr) { std::from_chars(set, set + std::strlen(set), width); }
  winsize size{};
  if (width == 0 && onTerminal && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) { width = size.ws_col; }
  return width == 0 ? kUsual : std::clamp(width, kNarrowest, kWidest);
}

std::string Ink::colored(const std::optional<store::Rgb>& color, std::string_view text) const {
  if (!color) { return std::string(text); }
  const auto [red, green, blue] = color->bytes();
  return wrapped(fmt::format("\x1b[38;2;{};{};{}m", red, green, blue), text);
}

std::string Ink::wrapped(std::string_view begin, std::string_view text) const {
  return m_on ? fmt::format("{}{}\x1b[0m", begin, text) : std::string(text);
}

}  // namespace orlocal::host
