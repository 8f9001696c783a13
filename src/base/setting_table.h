#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace orlocal {

/// What users and administrators may set.
enum class Setting {
  kStoreFile,
  kStoreWait,
  kZone,
  kEventCalendar,
  kReminderList,
  kOwnAddresses,
  kLanguage,
  kColor,
  kScriptFile,
  kScriptName,
  kScriptAtStart,
  kSystemMinor,
  kPartHourZones,
};

/// Where a setting stands, and what it means.
struct SettingRow {
  Setting setting;
  std::string_view section, name;  ///< in a settings file
  std::string_view variable;       ///< of the environment, which wins over the files; empty when there is none
  std::string_view standard;       ///< what holds where nothing is said, in words
  std::string_view meaning;
  /// What is wrong with a value of a file; empty when nothing is. Null when every text is right.
  std::string (*objection)(std::string_view value);
};

/// All of them, in the order in which they are shown.
std::span<const SettingRow> settingRows();
const SettingRow& rowOf(Setting setting);
/// None when no setting stands there.
const SettingRow* rowOf(std::string_view section, std::string_view name);

/// "yes" and "no", and what else people write for them; none for anything else.
std::optional<bool> yesOrNo(std::string_view word);

}  // namespace orlocal
