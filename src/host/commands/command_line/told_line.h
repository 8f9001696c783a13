#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "host/commands/command_line/command.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {

/// A sentence about what was done. On a terminal a long one goes on behind two blanks; elsewhere it is one line.
inline void tellLine(Streams& streams, std::string_view text) {
  if (!streams.outIsTerminal) {
    streams.out << text << '\n';
    return;
  }
  const char* indent = "";
  for (const std::string& line : foldedText(text, terminalWidth(true) - 2)) {
    streams.out << indent << line << '\n';
    indent = "  ";
  }
}

}  // namespace orlocal::host
