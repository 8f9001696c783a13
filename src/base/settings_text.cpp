#include "base/settings_text.h"

#include <utility>

#include "base/text.h"
#include "base/translation.h"

namespace orlocal {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view unquoted(std::string_view value) {
  const bool quoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
  return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

SettingsText parseSettings(std::string_view text) {
  SettingsText parsed;
  if (text.starts_with(kByteOrderMark)) { text.remove_prefix(kByteOrderMark.size()); }
  std::string section;
  int number = 0;
  while (!text.empty()) {
    const auto end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    ++number;
    if (line.ends_with('\r')) { line.remove_suffix(1); }
    line = trimmed(line);
    if (line.empty() || line.front() == '#' || line.front() == ';') { continue; }
    if (line.front() == '[') {
      if (!line.ends_with(']')) {
        parsed.complaints.emplace_back(number, tr("a section ends with \"]\""));
        continue;
      }
      section = trimmed(line.substr(1, line.size() - 2));
      continue;
    }
    const auto equals = line.find('=');
    const std::string_view name = trimmed(line.substr(0, equals));
    if (equals == std::string_view::npos || name.empty()) {
      parsed.complaints.emplace_back(number, tr("a setting is written \"name = value\""));
      continue;
    }
    parsed.lines.push_back(
        {section, std::string(name), std::string(unquoted(trimmed(line.substr(equals + 1)))), number});
  }
  return parsed;
}

}  // namespace orlocal
