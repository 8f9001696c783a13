#pragma once

#include "host/commands/command_line/command.h"

namespace orlocal::host {

// Commands about invitations: what others ask of one, and what one answers.

void registerReplyCommand(CommandLine& line);  ///< reply

}  // namespace orlocal::host
