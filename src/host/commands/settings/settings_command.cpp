#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/settings.h"
#include "base/translation.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/settings/settings_commands.h"
#include "store/location.h"
#include "store/time/zone.h"

namespace orlocal::host {
namespace {

constexpr const char* kBuiltIn = translatable("built in");

/// A setting as it is in force.
struct Shown {
  const SettingRow* row;
  std::string value, origin;
};

/// What holds where nobody set anything; the words of the table where that is no value.
std::string standardOf(const SettingRow& row) {
  if (row.setting == Setting::kStoreFile) {
    if (const auto file = store::userStoreFile()) { return file->string(); }
  }
  if (row.setting == Setting::kZone) { return store::Zone::ofUser().name(); }
  return std::string(row.standard);
}

/// As it was before the program put its own settings into the environment.
std::optional<SettingValue> setValue(const Settings& settings, Setting setting) {
  auto inFile = settings.fileValue(setting);
  if (setting == Setting::kScriptAtStart) { return inFile; }
  const auto value = settings.value(setting);
  return setting == Setting::kZone && inFile && value->text == inFile->text ? inFile : value;
}

std::vector<Shown> inForce(const Settings& settings, const GlobalOptions& options) {
  // Options went into the environment when the command began.
  const struct {
    Setting setting;
    bool given;
    const char* option;
  } given[] = {{Setting::kStoreFile, options.store.has_value(), "--store"},
               {Setting::kColor, options.color.has_value(), "--color"},
               {Setting::kSystemMinor, options.systemMinor.has_value(), "--system-minor"}};
  std::vector<Shown> all;
  for (const SettingRow& row : settingRows()) {
    const auto value = setValue(settings, row.setting);
    Shown shown{&row, value ? value->text : standardOf(row), value ? value->origin : kBuiltIn};
    for (const auto& [setting, isGiven, option] : given) {
      if (setting == row.setting && isGiven) { shown.origin = option; }
    }
    if (row.setting == Setting::kColor && options.color) { shown.value = *options.color; }
    all.push_back(std::move(shown));
  }
  return all;
}

nlohmann::json asJson(const std::vector<Shown>& all, const std::vector<std::string>& complaints) {
  nlohmann::json files = nlohmann::json::array();
  for (const auto& file : Settings::filesOfUser()) {
    std::error_code error;
    files.push_back({{"file", file.string()}, {"exists", std::filesystem::exists(file, error)}});
  }
  nlohmann::json settings = nlohmann::json::array();
  for (const auto& [row, value, origin] : all) {
    settings.push_back({{"section", row->section},
                        {"name", row->name},
                        {"value", value},
                        {"from", origin},
                        {"variable", row->variable.empty() ? nlohmann::json() : nlohmann::json(row->variable)},
                        {"meaning", row->meaning}});
  }
  return {{"files", files}, {"settings", settings}, {"problems", complaints}};
}

/// What holds where nobody set anything may be words of ours.
std::string shownValue(const std::string& value, const std::string& origin) {
  return origin == kBuiltIn ? translated(value) : value;
}

void print(const std::vector<Shown>& all, const Ink& ink, std::ostream& out) {
  for (const auto& file : Settings::filesOfUser()) {
    std::error_code error;
    out << fmt::format("{}{}\n", printable(file.string()),
                       std::filesystem::exists(file, error) ? "" : tr(" (not there)"));
  }
  std::size_t names = 0;
  std::size_t values = 0;
  for (const auto& [row, value, origin] : all) {
    names = std::max(names, displayWidth(row->name));
    values = std::max(values, std::min<std::size_t>(displayWidth(printable(shownValue(value, origin))), 32));
  }
  std::string_view section;
  for (const auto& [row, value, origin] : all) {
    if (row->section != section) { out << '\n' << ink.bold(fmt::format("[{}]", row->section)) << '\n'; }
    section = row->section;
    out << "  " << padded(row->name, names) << "  " << padded(printable(shownValue(value, origin)), values) << "  "
        << ink.dim(printable(translated(origin))) << '\n';
  }
}

Result<ExitStatus> runSettings(CommandContext& context) {
  const Settings settings = Settings::ofUser();
  const auto all = inForce(settings, context.options);
  if (context.options.json) {
    printJson(asJson(all, settings.complaints()), context.streams.out);
  } else {
    print(all, Ink(context.streams.colors), context.streams.out);
  }
  return settings.complaints().empty() ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace

void registerSettingsCommand(CommandLine& line) {
  line.add("settings", "Show what is set, and where: options, environment, settings files.", runSettings)
      .footer(tr("Ends with status 1 when a settings file has lines that cannot be understood.\n") +
              "  orlocal settings");
}

}  // namespace orlocal::host
