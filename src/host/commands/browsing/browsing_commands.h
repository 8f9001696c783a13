#pragma once

#include "host/commands/command_line/command.h"
#include "host/commands/scripting/commands_in_place.h"

namespace orlocal::host {

/// browse: a screen to move about in. `registerAll` gives a command line all commands: what the screen changes, it
/// changes by them.
void registerBrowseCommand(CommandLine& line, Registration registerAll);

}  // namespace orlocal::host
