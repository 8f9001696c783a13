#include "host/commands/command_line/folded_text.h"

#include <algorithm>

#include "base/text.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
/// Where meanings begin at the latest.
constexpr std::size_t kWidestNames = 24;

/// The bytes of `text` that take at most `width` cells; at least one character.
std::size_t fitting(std::string_view text, std::size_t width) {
  std::size_t end = 0;
  while (end < text.size()) {
    const std::size_t next = end + std::max<std::size_t>(1, characterLength(text.substr(end)));
    if (end > 0 && displayWidth(text.substr(0, next)) > width) { break; }
    end = next;
  }
  return end;
}

void foldLine(std::string_view line, std::size_t width, std::vector<std::string>& lines) {
  while (displayWidth(line) > width) {
    std::size_t end = fitting(line, width);
    std::size_t next = end;
    // A blank before or at the end of what fits.
    if (const auto blank = line.rfind(' ', end); end < line.size() && blank != std::string_view::npos && blank > 0) {
      end = blank;
      next = blank + 1;
    }
    lines.emplace_back(line.substr(0, end));
    line.remove_prefix(next);
  }
  lines.emplace_back(line);
}

}  // namespace

std::vector<std::string> folded(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t begin = text.find_first_not_of(" \n", at);
    if (begin == std::string_view::npos) { break; }
    at = std::min(text.find_first_of(" \n", begin), text.size());
    const std::string_view word = text.substr(begin, at - begin);
    if (lines.empty() || displayWidth(lines.back()) + 1 + displayWidth(word) > width) {
      lines.emplace_back(word);
    } else {
      lines.back().append(" ").append(word);
    }
  }
  return lines;
}

std::string foldedParagraph(std::string_view text, std::size_t width, std::size_t indent) {
  std::string out;
  for (const std::string& line : folded(text, width - std::min(indent, width))) {
    out += std::string(indent, ' ') + line + '\n';
  }
  return out;
}

std::string foldedTable(const std::vector<std::pair<std::string, std::string>>& rows, std::size_t width) {
  std::size_t widest = 0;
  for (const auto& [name, meaning] : rows) {
    const std::size_t taken = displayWidth(name);
    if (taken <= kWidestNames) { widest = std::max(widest, taken); }
  }
  const std::size_t column = kIndent + widest + kGap;
  std::string out;
  for (const auto& [name, meaning] : rows) {
    std::string text = foldedParagraph(meaning, width, column);
    const bool beside = displayWidth(name) <= widest && !text.empty();
    if (beside) { text.erase(0, column); }
    out += std::string(kIndent, ' ') + (beside ? padded(name, widest) + std::string(kGap, ' ') : name + '\n') + text;
  }
  return out;
}

std::vector<std::string> foldedText(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  for (;;) {
    const std::size_t end = text.find('\n');
    foldLine(printable(trimmed(text.substr(0, end), " \r")), width, lines);
    if (end == std::string_view::npos) { return lines; }
    text.remove_prefix(end + 1);
  }
}

std::string shortened(std::string_view text, std::size_t width) {
  std::string whole = printable(text);
  if (displayWidth(whole) <= width) { return whole; }
  whole.resize(width < 2 ? 0 : fitting(whole, width - 1));
  return whole + "…";
}

}  // namespace orlocal::host
