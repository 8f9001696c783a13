#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands that look after a store.

void registerDoctorCommand(CommandLine& line);  ///< doctor

}  // namespace orlocal::host
