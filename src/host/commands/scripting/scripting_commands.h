#pragma once

#include "host/commands/command_line/command.h"
#include "host/commands/scripting/commands_in_place.h"

namespace orlocal::host {

// Commands that have the plug-in loaded and call its functions.

void registerCalcCommands(CommandLine& line);     ///< eval, run
void registerTestCommand(CommandLine& line);      ///< test
void registerListingCommands(CommandLine& line);  ///< functions, steps
/// `registerAll` gives a command line all commands: those that the console runs.
void registerConsole(CommandLine& line, Registration registerAll);  ///< what runs without a command

}  // namespace orlocal::host
