#include "host/commands/all_commands.h"

namespace orlocal::host {

void registerAllCommands(CommandLine& line) {
  registerConsole(line);
  registerCalcCommands(line);
  registerTestCommand(line);
  registerListingCommands(line);
  registerCalendarsCommand(line);
  registerAgendaCommand(line);
  registerImportCommands(line);
  registerExportCommand(line);
  registerBackupCommands(line);
  registerWatchCommand(line);
  registerAccountCommands(line);
  registerSyncCommand(line);
  registerSubscribeCommands(line);
  registerConflictCommands(line);
}

}  // namespace orlocal::host
