#include "base/settings.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/result.h"
#include "base/settings_text.h"
#include "base/system_reason.h"
#include "base/text.h"
#include "base/translation.h"

namespace orlocal {
namespace {

constexpr off_t kLongestFile = 64 * 1024;

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

/// Nothing that a user sets reaches another one by this file: a script's name or the store's may stand there.
const char* flawOf(const struct stat& found) {
  if (!S_ISREG(found.st_mode)) { return translatable("is no regular file"); }
  if (found.st_size > kLongestFile) { return translatable("is longer than 64 KiB"); }
  if (found.st_uid != 0 && found.st_uid != ::geteuid()) { return translatable("belongs neither to you nor to root"); }
  if ((found.st_mode & (S_IWGRP | S_IWOTH)) != 0) { return translatable("can be written by others (chmod go-w)"); }
  return nullptr;
}

Result<std::string> contentsOf(const std::filesystem::path& file) {
  const int opened = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (opened < 0) {
    const bool missing = errno == ENOENT || errno == ENOTDIR;
    return failure(missing ? ErrorCode::kNotFound : ErrorCode::kIo, tr("cannot be read: {}", systemReason(errno)));
  }
  struct stat found {};
  const bool known = ::fstat(opened, &found) == 0;
  const char* const flaw = known ? flawOf(found) : translatable("cannot be read");
  std::string text;
  if (flaw == nullptr) {
    text.resize(static_cast<std::size_t>(found.st_size));
    const ssize_t got = ::read(opened, text.data(), text.size());
    text.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
  }
  ::close(opened);
  if (flaw != nullptr) { return failure(ErrorCode::kNotPermitted, translated(flaw)); }
  return text;
}

}  // namespace

std::vector<std::filesystem::path> Settings::filesOfUser() {
  if (const char* only = std::getenv("ORLOCAL_SETTINGS")) {
    return *only == '\0' ? std::vector<std::filesystem::path>() : std::vector<std::filesystem::path>{only};
  }
  const std::filesystem::path below = std::filesystem::path("orlocal") / "orlocal.conf";
  std::vector<std::filesystem::path> files{"/etc" / below};
  // The desktop's rules for folders have relative ones ignored.
  if (const std::filesystem::path config = variable("XDG_CONFIG_HOME"); config.is_absolute()) {
    files.push_back(config / below);
  } else if (const std::filesystem::path home = variable("HOME"); home.is_absolute()) {
    files.push_back(home / ".config" / below);
  }
  return files;
}

Settings Settings::ofFiles(const std::vector<std::filesystem::path>& files) {
  Settings settings;
  for (const auto& file : files) { settings.read(file); }
  return settings;
}

void Settings::read(const std::filesystem::path& file) {
  const auto text = contentsOf(file);
  if (!text) {
    if (text.error().code != ErrorCode::kNotFound) {
      m_complaints.push_back(tr("the settings file {} {}; nothing in it is used", file.string(), text.error().message));
    }
    return;
  }
  const SettingsText parsed = parseSettings(*text);
  const auto complain = [&](int line, std::string_view sentence) {
    m_complaints.push_back(tr("{}:{}: {}; the line is passed over", file.string(), line, sentence));
  };
  for (const auto& [line, sentence] : parsed.complaints) { complain(line, sentence); }
  for (const SettingLine& entry : parsed.lines) {
    const SettingRow* row = rowOf(entry.section, entry.name);
    if (row == nullptr) {
      complain(entry.line,
               tr("there is no setting \"{}\" in [{}]; `orlocal settings` lists all", entry.name, entry.section));
      continue;
    }
    const std::string objection = isUtf8(entry.value) ? (row->objection != nullptr ? row->objection(entry.value) : "")
                                                      : tr("the value is not UTF-8");
    if (!objection.empty()) {
      complain(entry.line, fmt::format("{} = \"{}\": {}", entry.name, entry.value, objection));
      continue;
    }
    m_values[row->setting] = {entry.value, fmt::format("{}:{}", file.string(), entry.line)};
  }
}

std::optional<SettingValue> Settings::fileValue(Setting setting) const {
  const auto found = m_values.find(setting);
  if (found == m_values.end() || found->second.text.empty()) { return std::nullopt; }
  SettingValue value = found->second;
  if (setting == Setting::kStoreFile && value.text.starts_with("~/")) {
    value.text = variable("HOME") + value.text.substr(1);
  }
  return value;
}

std::optional<SettingValue> Settings::value(Setting setting) const {
  // An empty variable counts as none, as everywhere on the system.
  const std::string name(rowOf(setting).variable);
  if (auto set = name.empty() ? std::string() : variable(name.c_str()); !set.empty()) { return {{set, name}}; }
  return fileValue(setting);
}

bool Settings::isOn(Setting setting, bool standard) const {
  const auto set = value(setting);
  return set ? yesOrNo(set->text).value_or(standard) : standard;
}

}  // namespace orlocal
