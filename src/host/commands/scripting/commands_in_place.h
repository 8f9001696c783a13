#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// Gives a command line its commands.
using Registration = void (*)(CommandLine&);

/// The program's commands, run from within one that is running: each on a command line of its own, on the same store
/// and with the same options, unless its words say otherwise for itself.
class CommandsInPlace {
 public:
  CommandsInPlace(CommandContext& context, Registration registerAll) : m_context(context), m_registerAll(registerAll) {}

  /// The words as somebody typed them; see `quotedWords`. What is wrong with them is told on the error stream.
  ExitStatus run(std::string_view words);
  /// The words as they are.
  ExitStatus run(const std::vector<std::string>& words);

  /// Of all commands that help shows.
  std::vector<std::string> names() const;

 private:
  CommandContext& m_context;
  Registration m_registerAll;
};

}  // namespace orlocal::host
