#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands about calendars that live elsewhere.

void registerAccountCommands(CommandLine& line);    ///< account
void registerSyncCommand(CommandLine& line);        ///< sync
void registerSubscribeCommands(CommandLine& line);  ///< subscribe, unsubscribe
void registerConflictCommands(CommandLine& line);   ///< conflicts

/// calendars new, rename, recolour, remove, default: they reach the server of an account as well.
void registerCalendarChanges(CommandLine& line, CLI::App& calendars);

}  // namespace orlocal::host
