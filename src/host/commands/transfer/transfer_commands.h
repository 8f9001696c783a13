#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that carry calendars between the store and files.

void registerImportCommands(CommandLine& line);  ///< import, import-contacts
void registerExportCommand(CommandLine& line);   ///< export
void registerBackupCommands(CommandLine& line);  ///< backup, restore

}  // namespace orlocal::host
