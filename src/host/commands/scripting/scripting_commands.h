#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that have the plug-in loaded and call its functions.

void registerCalcCommands(CommandLine& line);     ///< eval, run
void registerTestCommand(CommandLine& line);      ///< test
void registerListingCommands(CommandLine& line);  ///< functions, steps
void registerConsole(CommandLine& line);          ///< what runs without a command

}  // namespace orlocal::host
