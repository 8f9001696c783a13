#pragma once

#include <string>
#include <string_view>

#include "host/commands/command_line/command_guide.h"

namespace orlocal::host {

/// "orlocal-agenda.1"; for the program itself "orlocal.1".
std::string manPageFile(const CommandGuide& command);

/// The page about the program, or about one of its commands and the words after it, as `man` reads it.
std::string manPage(const CommandGuide& program, const CommandGuide& command, std::string_view version);

}  // namespace orlocal::host
