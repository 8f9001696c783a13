#include "host/commands/all_commands.h"

#include "host/commands/accounts/account_commands.h"
#include "host/commands/alarms/alarm_commands.h"
#include "host/commands/availability/availability_commands.h"
#include "host/commands/browsing/browsing_commands.h"
#include "host/commands/care/care_commands.h"
#include "host/commands/changes/change_commands.h"
#include "host/commands/checking/checking_commands.h"
#include "host/commands/guide/guide_commands.h"
#include "host/commands/installing/installing_commands.h"
#include "host/commands/invitations/invitation_commands.h"
#include "host/commands/reports/report_commands.h"
#include "host/commands/scripting/scripting_commands.h"
#include "host/commands/settings/settings_commands.h"
#include "host/commands/transfer/transfer_commands.h"
#include "host/commands/views/view_commands.h"
#include "host/commands/watching/watching_commands.h"

namespace orlocal::host {

void registerAllCommands(CommandLine& line) {
  registerConsole(line, registerAllCommands);
  line.startGroup("Look");
  registerAgendaCommand(line);
  registerGridCommands(line);
  registerBrowseCommand(line, registerAllCommands);
  registerRemindersCommand(line);
  registerShowCommand(line);
  registerSearchCommand(line);
  registerFreeCommand(line);
  registerBusyCommand(line);
  line.startGroup("Change");
  registerNewCommand(line);
  registerEditCommand(line);
  registerRemoveCommand(line);
  registerMoveCommand(line);
  registerReminderCommands(line);
  registerUndoCommand(line);
  registerLogCommand(line);
  registerPurgeCommand(line);
  registerDuplicatesCommand(line);
  CLI::App& calendars = registerCalendarsCommand(line);
  registerCalendarChanges(line, calendars);
  line.startGroup("Files");
  registerImportCommands(line);
  registerExportCommand(line);
  registerBackupCommands(line);
  registerReportCommand(line);
  registerReplyCommand(line);
  line.startGroup("Watching");
  registerAlarmCommands(line);
  registerWatchCommand(line);
  line.startGroup("Accounts");
  registerAccountCommands(line);
  registerSyncCommand(line);
  registerSubscribeCommands(line);
  registerConflictCommands(line);
  line.startGroup("Scripting");
  registerCalcCommands(line);
  registerTestCommand(line);
  registerListingCommands(line);
  registerCheckCommand(line);
  line.startGroup("Set-up");
  registerSettingsCommand(line);
  registerDoctorCommand(line);
  registerInstallPluginCommand(line);
  registerCompletionCommands(line);
  registerHelpCommand(line);
}

}  // namespace orlocal::host
