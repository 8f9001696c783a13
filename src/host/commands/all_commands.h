#pragma once

#include "host/commands/command.h"

namespace orlocal::host {

// One for each source of commands; `registerAllCommands` calls them all.

void registerCalcCommands(CommandLine& line);       ///< eval, run
void registerTestCommand(CommandLine& line);        ///< test
void registerListingCommands(CommandLine& line);    ///< functions, steps
void registerConsole(CommandLine& line);            ///< what runs without a command
void registerCalendarsCommand(CommandLine& line);   ///< calendars
void registerAgendaCommand(CommandLine& line);      ///< agenda
void registerImportCommands(CommandLine& line);     ///< import, import-contacts
void registerExportCommand(CommandLine& line);      ///< export
void registerBackupCommands(CommandLine& line);     ///< backup, restore
void registerWatchCommand(CommandLine& line);       ///< watch
void registerAccountCommands(CommandLine& line);    ///< account
void registerSyncCommand(CommandLine& line);        ///< sync
void registerSubscribeCommands(CommandLine& line);  ///< subscribe, unsubscribe
void registerConflictCommands(CommandLine& line);   ///< conflicts
/// calendars new, rename, recolour, remove
void registerCalendarChanges(CommandLine& line, CLI::App& calendars);

}  // namespace orlocal::host
