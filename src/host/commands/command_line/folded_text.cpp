#include "host/commands/command_line/folded_text.h"

#include <algorithm>

#include <sys/ioctl.h>
#include <unistd.h>

#include "base/text.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

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

std::size_t lineWidth(const Streams& streams) {
  constexpr std::size_t kUsual = 80, kNarrowest = 40;
  winsize size{};
  if (!streams.outIsTerminal || ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) { return kUsual; }
  return std::max<std::size_t>(size.ws_col, kNarrowest);
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
