#include "host/console/text_place.h"

#include <vector>

namespace orlocal::host {

namespace {

/// What was opened and not closed.
struct Opened {
  std::string function;  ///< empty for a bracket
  std::size_t argument = 0;
};

bool isNamePart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         (static_cast<unsigned char>(c) & 0x80U) != 0;
}

/// The end of the text that begins behind the quote at `quote`: its closing quote, or npos.
std::size_t endOfText(std::string_view line, std::size_t quote) {
  for (std::size_t at = quote + 1; at < line.size(); ++at) {
    if (line[at] == '\\') {
      ++at;
    } else if (line[at] == '"') {
      return at;
    }
  }
  return std::string_view::npos;
}

std::string lastLineOf(std::string_view text) {
  constexpr std::string_view kBreak = "¶";
  const std::size_t at = text.rfind(kBreak);
  return std::string(at == std::string_view::npos ? text : text.substr(at + kBreak.size()));
}

}  // namespace

std::optional<TextPlace> textPlaceAt(std::string_view beforeCursor) {
  std::vector<Opened> opened;
  std::string name;
  bool nameEnded = false;
  for (std::size_t at = 0; at < beforeCursor.size(); ++at) {
    const char c = beforeCursor[at];
    if (isNamePart(c)) {
      if (nameEnded) { name.clear(); }
      nameEnded = false;
      name += c;
      continue;
    }
    if (c == ' ' || c == '\t') {
      nameEnded = true;
      continue;
    }
    if (c == '"') {
      const std::size_t end = endOfText(beforeCursor, at);
      if (end == std::string_view::npos) {
        const Opened inside = opened.empty() ? Opened() : opened.back();
        return TextPlace{inside.function, inside.argument, lastLineOf(beforeCursor.substr(at + 1))};
      }
      at = end;
    } else if (c == '(' || c == '[') {
      opened.push_back({c == '(' ? name : "", 0});
    } else if (!opened.empty() && (c == ')' || c == ']')) {
      opened.pop_back();
    } else if (!opened.empty() && c == ';') {
      ++opened.back().argument;
    }
    name.clear();
    nameEnded = false;
  }
  return std::nullopt;
}

}  // namespace orlocal::host
