#pragma once

#include "host/commands/command.h"

namespace orlocal::host {

// One for each source of commands; `registerAllCommands` calls them all.

void registerCalcCommands(CommandLine& line);      ///< eval, run
void registerTestCommand(CommandLine& line);       ///< test
void registerListingCommands(CommandLine& line);   ///< functions, steps
void registerConsole(CommandLine& line);           ///< what runs without a command
void registerCalendarsCommand(CommandLine& line);  ///< calendars
void registerAgendaCommand(CommandLine& line);     ///< agenda
void registerImportCommands(CommandLine& line);    ///< import, import-contacts
void registerExportCommand(CommandLine& line);     ///< export
void registerBackupCommands(CommandLine& line);    ///< backup, restore
void registerWatchCommand(CommandLine& line);      ///< watch

}  // namespace orlocal::host
