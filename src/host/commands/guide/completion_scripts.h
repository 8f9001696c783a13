#pragma once

#include <string>
#include <string_view>

#include "host/commands/command_line/command_guide.h"

namespace orlocal::host {

/// What each shell reads to complete the program's words. All come from the same guide; titles and names of what is in
/// the store they ask the program for, when somebody presses the key.
std::string bashCompletion(const CommandGuide& program);
std::string zshCompletion(const CommandGuide& program);
std::string fishCompletion(const CommandGuide& program);

/// `text` as one word of those shells, in single quotes, on one line.
std::string inShellQuotes(std::string_view text);

}  // namespace orlocal::host
