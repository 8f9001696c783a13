#pragma once

#include "host/commands/care/finding.h"
#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// The plug-in: which one, whether a process of its own can load it and which functions it offers there; and whether a
/// database host's server on this machine has it.
Findings pluginFindings(const CommandContext& context);

}  // namespace orlocal::host
