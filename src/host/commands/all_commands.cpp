#include "host/commands/all_commands.h"

#include "host/commands/accounts/account_commands.h"
#include "host/commands/alarms/alarm_commands.h"
#include "host/commands/care/care_commands.h"
#include "host/commands/changes/change_commands.h"
#include "host/commands/scripting/scripting_commands.h"
#include "host/commands/settings/settings_commands.h"
#include "host/commands/transfer/transfer_commands.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/watching/watching_commands.h"

namespace orlocal::host {

void registerAllCommands(CommandLine& line) {
  registerConsole(line);
  registerCalcCommands(line);
  registerTestCommand(line);
  registerListingCommands(line);
  CLI::App& calendars = registerCalendarsCommand(line);
  registerAgendaCommand(line);
  registerNewCommand(line);
  registerEditCommand(line);
  registerRemoveCommand(line);
  registerMoveCommand(line);
  registerReminderCommands(line);
  registerUndoCommand(line);
  registerImportCommands(line);
  registerExportCommand(line);
  registerBackupCommands(line);
  registerAlarmCommands(line);
  registerWatchCommand(line);
  registerAccountCommands(line);
  registerSyncCommand(line);
  registerSubscribeCommands(line);
  registerConflictCommands(line);
  registerCalendarChanges(line, calendars);
  registerSettingsCommand(line);
  registerDoctorCommand(line);
}

}  // namespace orlocal::host
