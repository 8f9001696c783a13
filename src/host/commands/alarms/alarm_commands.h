#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands about alarms.

void registerAlarmCommands(CommandLine& line);  ///< alarms, alarms snooze, alarms dismiss

}  // namespace orlocal::host
