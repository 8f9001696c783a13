#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// `help`, which shows what `--help` shows.
void registerHelpCommand(CommandLine& line);
/// `completion`, which prints what shells and `man` read, and the hidden command that those shells ask for names.
void registerCompletionCommands(CommandLine& line);

}  // namespace orlocal::host
