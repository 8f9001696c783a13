#pragma once

#include "host/commands/command_line/command.h"

// Judging plug-ins from outside.
namespace orlocal::host {

/// `orlocal check`.
void registerCheckCommand(CommandLine& line);

}  // namespace orlocal::host
