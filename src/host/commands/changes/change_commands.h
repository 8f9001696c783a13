#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that make, change and remove events and reminders.

void registerNewCommand(CommandLine& line);        ///< new
void registerEditCommand(CommandLine& line);       ///< edit
void registerRemoveCommand(CommandLine& line);     ///< remove
void registerMoveCommand(CommandLine& line);       ///< move
void registerReminderCommands(CommandLine& line);  ///< done, reopen
void registerUndoCommand(CommandLine& line);       ///< undo

}  // namespace orlocal::host
