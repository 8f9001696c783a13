#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that look after a store.

void registerDoctorCommand(CommandLine& line);      ///< doctor
void registerPurgeCommand(CommandLine& line);       ///< purge
void registerDuplicatesCommand(CommandLine& line);  ///< duplicates
void registerLogCommand(CommandLine& line);         ///< log

}  // namespace orlocal::host
