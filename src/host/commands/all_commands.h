#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// Every command of the program, room by room.
void registerAllCommands(CommandLine& line);

}  // namespace orlocal::host
