#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands about how the program itself is set up.

void registerSettingsCommand(CommandLine& line);  ///< settings

}  // namespace orlocal::host
