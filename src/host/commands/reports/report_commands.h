#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that write what is planned for others to look at.

void registerReportCommand(CommandLine& line);  ///< report

}  // namespace orlocal::host
