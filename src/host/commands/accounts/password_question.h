#pragma once

#include <optional>
#include <string>

#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// Asks on the terminal, which shows nothing of what is typed; none where there is no terminal, or nothing was typed. A
/// signal that ends the program brings the terminal back first.
std::optional<std::string> askPassword(Streams& streams, const std::string& question);

}  // namespace orlocal::host
