#include "host/commands/reports/html_text.h"

#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {
namespace {

std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

}  // namespace

std::string htmlText(std::string_view text) {
  std::string out;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    if (at > 0) { out += '\n'; }
    out += escaped(printable(text.substr(at, end - at)));
    at = end + 1;
  }
  return out;
}

}  // namespace orlocal::host
