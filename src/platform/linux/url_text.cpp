#include "platform/linux/url_text.h"

#include <algorithm>

namespace orlocal {
namespace {

constexpr std::string_view kWhiteSpace = " \t\r\n";

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

/// The length of "scheme:"; 0 when there is none.
std::size_t schemeLength(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos || colon == 0 || !isLetter(text.front())) { return 0; }
  const auto name = text.substr(0, colon);
  const bool fits = std::all_of(name.begin(), name.end(),
                                [](char c) { return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.'; });
  return fits ? colon + 1 : 0;
}

/// "//authority" at the beginning of what follows the scheme; empty when there is none.
std::string_view authorityOf(std::string_view text) {
  if (!text.starts_with("//")) { return {}; }
  return text.substr(0, std::min(text.find_first_of("/?#", 2), text.size()));
}

/// Where the bracketed address of an authority begins and how long it is; 0 without one. None for brackets that are no
/// such address.
std::optional<std::string_view> addressIn(std::string_view authority) {
  const auto open = authority.find_first_of("[]");
  if (open == std::string_view::npos) { return std::string_view(); }
  const auto close = authority.find(']', open);
  if (authority[open] != '[' || close == std::string_view::npos) { return std::nullopt; }
  if (open != 2 && authority[open - 1] != '@') { return std::nullopt; }
  const auto rest = authority.substr(close + 1);
  if (!rest.empty() && rest.front() != ':') { return std::nullopt; }
  return rest.find_first_of("[]") == std::string_view::npos ? std::optional(authority.substr(open, close + 1 - open))
                                                            : std::nullopt;
}

/// A port of anything but digits makes no URL.
bool hasPossiblePort(std::string_view authority) {
  const auto host = authority.find_last_of("@]");
  const auto colon = authority.find(':', host == std::string_view::npos ? 0 : host);
  if (colon == std::string_view::npos) { return true; }
  const auto port = authority.substr(colon + 1);
  return std::all_of(port.begin(), port.end(), isDigit);
}

bool mayStand(char c) {
  constexpr std::string_view kMarks = "-._~:/?@!$&'()*+,;=";
  return isLetter(c) || isDigit(c) || kMarks.find(c) != std::string_view::npos;
}

void appendEscaped(std::string& out, char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  out += '%';
  out += kDigits[byte >> 4U];
  out += kDigits[byte & 0xFU];
}

}  // namespace

std::string urlText(std::string_view stored) {
  const std::size_t scheme = schemeLength(stored);
  const std::string_view rest = stored.substr(scheme);
  // Words: a URL that is only a path has no spaces, and one with a scheme goes on right after it.
  const bool isWords = scheme == 0 ? stored.find_first_of(kWhiteSpace) != std::string_view::npos
                                   : rest.empty() || kWhiteSpace.find(rest.front()) != std::string_view::npos;
  const std::string_view authority = authorityOf(rest);
  const auto address = addressIn(authority);
  if (isWords || !address || !hasPossiblePort(authority)) { return std::string(stored); }

  std::string out(stored.substr(0, scheme));
  bool inFragment = false;
  for (std::size_t i = scheme; i < stored.size(); ++i) {
    const char c = stored[i];
    const bool inAddress = !address->empty() && &stored[i] >= address->data() && &stored[i] <= &address->back();
    const bool escape = c == '%' && i + 2 < stored.size() && isHexDigit(stored[i + 1]) && isHexDigit(stored[i + 2]);
    const bool beginsFragment = c == '#' && !inFragment;
    inFragment = inFragment || beginsFragment;
    if (mayStand(c) || escape || beginsFragment || (inAddress && (c == '[' || c == ']'))) {
      out += c;
    } else {
      appendEscaped(out, c);
    }
  }
  return out;
}

}  // namespace orlocal
