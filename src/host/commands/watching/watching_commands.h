#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that stay and wait for something to happen.

void registerWatchCommand(CommandLine& line);  ///< watch

}  // namespace orlocal::host
