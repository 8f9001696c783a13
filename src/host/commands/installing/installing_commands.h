#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that put what this program brings where others look for it.

void registerInstallPluginCommand(CommandLine& line);  ///< install-plugin

}  // namespace orlocal::host
