#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that show what the store holds.

void registerAgendaCommand(CommandLine& line);     ///< agenda
void registerRemindersCommand(CommandLine& line);  ///< reminders
void registerSearchCommand(CommandLine& line);     ///< search
void registerShowCommand(CommandLine& line);       ///< show

/// calendars, which lists them. What comes after the word belongs to others: the command is theirs to add to.
CLI::App& registerCalendarsCommand(CommandLine& line);

}  // namespace orlocal::host
