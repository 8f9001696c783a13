#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/setting_table.h"

namespace orlocal {

/// A setting that somebody made.
struct SettingValue {
  std::string text;
  std::string origin;  ///< the variable of the environment, or "FILE:LINE"
};

/// What the settings files of this machine and of this user say, and the environment over them. A server's process is
/// given no environment of ours, so the plug-in reads the same files as the program.
class Settings {
 public:
  /// `/etc/orlocal/orlocal.conf`, then `$XDG_CONFIG_HOME/orlocal/orlocal.conf` (else `~/.config/…`), whose lines count
  /// more. `ORLOCAL_SETTINGS` names one file in their stead; empty it names none. Files that are not there say nothing.
  static std::vector<std::filesystem::path> filesOfUser();
  static Settings ofUser() { return ofFiles(filesOfUser()); }
  /// In their order: the later count more.
  static Settings ofFiles(const std::vector<std::filesystem::path>& files);

  /// From the environment as it stands at this call, else from the files; none where nobody set it.
  std::optional<SettingValue> value(Setting setting) const;
  /// From the files alone.
  std::optional<SettingValue> fileValue(Setting setting) const;
  /// Of what is yes or no; `standard` where nobody set it, or set something else.
  bool isOn(Setting setting, bool standard) const;

  /// Set in the environment once they were said: the program and the plug-in in it read the same files.
  static constexpr const char* kToldVariable = "ORLOCAL_SETTINGS_TOLD";
  /// What could not be understood, and was passed over: sentences that begin with file and line.
  const std::vector<std::string>& complaints() const { return m_complaints; }

 private:
  void read(const std::filesystem::path& file);

  std::map<Setting, SettingValue> m_values;
  std::vector<std::string> m_complaints;
};

}  // namespace orlocal
