#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orlocal::test {

/// The environment as it was, after the test.
class KeptVariable {
 public:
  explicit KeptVariable(const char* name) : m_name(name) {
    const char* value = std::getenv(name);
    m_was = value == nullptr ? std::optional<std::string>() : std::optional<std::string>(value);
  }
  ~KeptVariable() { set(m_was); }
  void set(const std::optional<std::string>& value) const {
    if (value) {
      ::setenv(m_name, value->c_str(), 1);
    } else {
      ::unsetenv(m_name);
    }
  }

 private:
  const char* m_name;
  std::optional<std::string> m_was;
};

/// A folder for settings files, and an environment that says nothing about settings.
class SettingsFiles : public testing::Test {
 protected:
  SettingsFiles() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-settings-XXXXXX").string();
    m_folder = ::mkdtemp(pattern.data());
    for (const auto* variable : {&m_store, &m_wait, &m_zone, &m_minor, &m_settings}) { variable->set(std::nullopt); }
  }
  ~SettingsFiles() override {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }

  std::filesystem::path file(const std::string& name, const std::string& text, mode_t mode = 0644) {
    const auto path = m_folder / name;
    std::ofstream(path) << text;
    ::chmod(path.c_str(), mode);
    return path;
  }
  /// From now on all that is set.
  std::filesystem::path use(const std::string& text) {
    auto path = file("orlocal.conf", text);
    m_settings.set(path.string());
    return path;
  }

  std::filesystem::path m_folder;
  KeptVariable m_store{"ORLOCAL_STORE"}, m_wait{"ORLOCAL_WAIT"}, m_zone{"TZ"}, m_minor{"ORLOCAL_SYSTEM_MINOR"},
      m_settings{"ORLOCAL_SETTINGS"}, m_config{"XDG_CONFIG_HOME"}, m_home{"HOME"};
};

}  // namespace orlocal::test
