#include "platform/linux/plugin_settings.h"

#include <cstdlib>

#include "base/settings.h"
#include "platform/linux/system_log.h"

namespace orlocal {

PluginSettings readPluginSettings() {
  const Settings settings = Settings::ofUser();
  if (std::getenv(Settings::kToldVariable) == nullptr) {
    for (const auto& complaint : settings.complaints()) { writeToSystemLog("orlocal: " + complaint); }
  }
  PluginSettings plugin;
  plugin.datesInPartHourZones = settings.isOn(Setting::kPartHourZones, false);
  const auto file = settings.value(Setting::kScriptFile);
  const auto script = settings.value(Setting::kScriptName);
  if (!settings.isOn(Setting::kScriptAtStart, true)) { return plugin; }
  if (file && script) {
    plugin.updateScript = PluginSettings::UpdateScript{file->text, script->text};
  } else if (file || script) {
    writeToSystemLog("orlocal: " + (file ? file : script)->origin +
                     ": [update-script] needs both a file and a script; no script will be started");
  }
  return plugin;
}

}  // namespace orlocal
