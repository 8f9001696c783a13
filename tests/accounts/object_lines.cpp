#include "accounts/object_lines.h"

#include <vector>

namespace orlocal::accounts {
namespace {

std::vector<std::string> unfoldedLines(std::string_view text) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    if (line.ends_with('\r')) { line.remove_suffix(1); }
    if (!lines.empty() && (line.starts_with(' ') || line.starts_with('\t'))) {
      lines.back() += line.substr(1);
    } else if (!line.empty()) {
      lines.emplace_back(line);
    }
  }
  return lines;
}

std::string nameOf(const std::string& line) { return line.substr(0, line.find_first_of(":;")); }
std::string valueOf(const std::string& line) { return line.substr(line.find(':') + 1); }

}  // namespace

ObjectLines readObjectLines(std::string_view text) {
  ObjectLines object;
  std::vector<std::string> open;
  bool closed = false;
  for (const std::string& line : unfoldedLines(text)) {
    const std::string name = nameOf(line);
    if (closed || line.find(':') == line.npos) { return {}; }
    if (name == "BEGIN") {
      open.push_back(valueOf(line));
      if (open.size() == 2 && open.back() != "VTIMEZONE") { object.components.insert(open.back()); }
    } else if (name == "END") {
      if (open.empty() || open.back() != valueOf(line)) { return {}; }
      open.pop_back();
      closed = open.empty();
    } else if (name == "METHOD" && open.size() == 1) {
      object.hasMethod = true;
    } else if (name == "UID" && open.size() == 2 && open.back() != "VTIMEZONE") {
      object.uids.insert(valueOf(line));
    }
    if (open.empty() ? !closed : open.front() != "VCALENDAR") { return {}; }
  }
  object.isCalendar = closed;
  return object;
}

std::string rewritten(std::string_view text) {
  std::string result;
  bool hasClass = false;
  for (const std::string& line : unfoldedLines(text)) {
    const std::string name = nameOf(line);
    if (line == "BEGIN:VEVENT" || line == "BEGIN:VTODO") { hasClass = false; }
    hasClass = hasClass || name == "CLASS";
    if ((line == "END:VEVENT" || line == "END:VTODO") && !hasClass) { result += "CLASS:PUBLIC\r\n"; }
    result += (name == "PRODID" ? "PRODID:-//memory.example//EN" : line) + "\r\n";
  }
  return result;
}

}  // namespace orlocal::accounts
