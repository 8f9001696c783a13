#pragma once

#include "platform/plugin_settings.h"

namespace orlocal {

/// From the settings files. What could not be understood in them goes to the system's log.
PluginSettings readPluginSettings();

}  // namespace orlocal
