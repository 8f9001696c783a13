#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands about when somebody has time.

void registerFreeCommand(CommandLine& line);  ///< free
void registerBusyCommand(CommandLine& line);  ///< busy

}  // namespace orlocal::host
