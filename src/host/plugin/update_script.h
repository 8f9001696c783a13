#pragma once

#include <string>
#include <string_view>

#include "host/plugin/plugin.h"

namespace orlocal::host {

/// Has the plug-in start a script of a file whenever the calendars change outside the host: calls its
/// `Orlo_RegisterUpdateScript`, which it exports and does not register. Each call subscribes once more. The plug-in
/// notices changes when it gets idle messages.
Status registerUpdateScript(const Plugin& plugin, std::string_view file, std::string_view script);

}  // namespace orlocal::host
