#include "host/commands/command.h"

namespace orlocal::host {

// One declaration and one call for each source of commands.

void registerAllCommands(CommandLine& line) { static_cast<void>(line); }

}  // namespace orlocal::host
