#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orlocal {

/// A line "name = value" of a settings file.
struct SettingLine {
  std::string section;  ///< of the last line "[section]" before it; empty before the first
  std::string name;
  std::string value;  ///< without the blanks around it and one pair of quotes, which keep blanks
  int line = 0;       ///< from 1
};

struct SettingsText {
  std::vector<SettingLine> lines;
  /// What is neither a section, a setting, a remark (# or ; at its beginning) nor empty, as "LINE: sentence".
  std::vector<std::pair<int, std::string>> complaints;
};

/// Reads the text of a settings file. Ends of lines may be LF or CR LF; a byte-order mark is passed over.
SettingsText parseSettings(std::string_view text);

}  // namespace orlocal
