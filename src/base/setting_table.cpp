#include "base/setting_table.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "base/text.h"
#include "base/translation.h"

namespace orlocal {
namespace {

bool isNumber(std::string_view value, int longest) {
  return !value.empty() && value.size() <= static_cast<std::size_t>(longest) &&
         std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string objectionToFile(std::string_view value) {
  if (value.starts_with('/') || value.starts_with("~/")) { return {}; }
  return tr("a file is named by its whole path, from \"/\" or \"~/\" on");
}
std::string objectionToSeconds(std::string_view value) {
  constexpr int kMostSeconds = 3600;
  const bool right = isNumber(value, 4) && std::stoi(std::string(value)) <= kMostSeconds;
  return right ? std::string() : tr("this is a number of seconds from 0 to 3600");
}
std::string objectionToZone(std::string_view value) {
  // Zones come from the system's own files; where those stand, the name is a path below them.
  const char* set = std::getenv("TZDIR");
  const std::filesystem::path folder = set != nullptr && *set != '\0' ? set : "/usr/share/zoneinfo";
  std::error_code error;
  const bool known =
      value == "UTC" || (!value.empty() && value.front() != '/' && value.find("..") == std::string_view::npos &&
                         std::filesystem::is_regular_file(folder / value, error));
  return known ? std::string() : tr("no time zone of the system has this name; it is one such as Europe/Berlin");
}
std::string objectionToColor(std::string_view value) {
  const bool right = value == "auto" || value == "always" || value == "never";
  return right ? std::string() : tr("this is auto, always or never");
}
std::string objectionToNumber(std::string_view value) {
  return isNumber(value, 9) ? std::string() : tr("this is a number");
}
std::string objectionToYesNo(std::string_view value) {
  return yesOrNo(value) ? std::string() : tr("this is yes or no");
}

constexpr SettingRow kRows[] = {
    {Setting::kStoreFile, "store", "file", "ORLOCAL_STORE", translatable("calendar.db in the user's data folder"),
     translatable("The calendar store's file"), objectionToFile},
    {Setting::kStoreWait, "store", "wait", "ORLOCAL_WAIT", "10",
     translatable("Seconds that a writer waits for its turn"), objectionToSeconds},
    {Setting::kZone, "calendar", "zone", "TZ", translatable("the system's zone"),
     translatable("The time zone that calendars are seen in"), objectionToZone},
    {Setting::kEventCalendar, "calendar", "events", "", translatable("the store's default"),
     translatable("The calendar that new events go to, by title or identifier"), nullptr},
    {Setting::kReminderList, "calendar", "reminders", "", translatable("the store's default"),
     translatable("The list that new reminders go to, by title or identifier"), nullptr},
    {Setting::kOwnAddresses, "person", "addresses", "", "none",
     translatable("The mail addresses under which you are invited, with commas between"), nullptr},
    {Setting::kLanguage, "display", "language", "", translatable("the environment's, else English"),
     translatable("The language of texts where the environment names none"), nullptr},
    {Setting::kColor, "display", "color", "", "auto", translatable("Colours: auto (on a terminal), always or never"),
     objectionToColor},
    {Setting::kScriptFile, "update-script", "file", "", "none",
     translatable("The solution's file whose script the plug-in starts when calendars change elsewhere"), nullptr},
    {Setting::kScriptName, "update-script", "script", "", "none", translatable("That script's name"), nullptr},
    {Setting::kScriptAtStart, "update-script", "at-start", "ORLOCAL_UPDATE_SCRIPT",
     translatable("yes in a database host"),
     translatable("Whether the plug-in names that script to the host when it starts up"), objectionToYesNo},
    {Setting::kSystemMinor, "plug-in", "system-minor", "ORLOCAL_SYSTEM_MINOR", "15",
     translatable("The system's minor version that the plug-in sees; up to 7 it takes the older back end"),
     objectionToNumber},
    {Setting::kPartHourZones, "plug-in", "dates-in-part-hour-zones", "", "no",
     translatable("Dates arrive in zones whose offset is no whole hour, where they otherwise do not"),
     objectionToYesNo},
};

}  // namespace

std::span<const SettingRow> settingRows() { return kRows; }

const SettingRow& rowOf(Setting setting) {
  return *std::find_if(std::begin(kRows), std::end(kRows),
                       [setting](const SettingRow& row) { return row.setting == setting; });
}

const SettingRow* rowOf(std::string_view section, std::string_view name) {
  const auto* found = std::find_if(std::begin(kRows), std::end(kRows),
                                   [&](const SettingRow& row) { return row.section == section && row.name == name; });
  return found == std::end(kRows) ? nullptr : found;
}

std::optional<bool> yesOrNo(std::string_view word) {
  for (const std::string_view yes : {"yes", "true", "on", "1"}) {
    if (equalsNoCase(word, yes)) { return true; }
  }
  for (const std::string_view no : {"no", "false", "off", "0"}) {
    if (equalsNoCase(word, no)) { return false; }
  }
  return std::nullopt;
}

}  // namespace orlocal
