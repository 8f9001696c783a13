#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commands/command_line/help_text.h"
#include "host/commands/command_line/nearest_word.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/guide/guide_commands.h"

namespace orlocal::host {

namespace {

Result<ExitStatus> showHelp(const CommandLine& line, const std::vector<std::string>& words, CommandContext& context) {
  const CommandGuide program = line.guide();
  const std::string path = fmt::format("{}", fmt::join(words, " "));
  if (const CommandGuide* command = findCommand(program, path)) {
    context.streams.out << helpText(program, *command, terminalWidth(context.streams.outIsTerminal));
    return ExitStatus::kDone;
  }
  std::vector<std::string> known;
  eachCommand(program, [&](const CommandGuide& command) { known.push_back(command.path); });
  const auto nearest = nearestWord(path, known);
  tellTrouble(context.streams.err, fmt::format("There is no command \"{}\"{} See `orlocal --help`.", path,
                                               nearest ? fmt::format("; did you mean \"{}\"?", *nearest) : "."));
  return ExitStatus::kUsage;
}

}  // namespace

void registerHelpCommand(CommandLine& line) {
  const auto words = std::make_shared<std::vector<std::string>>();
  CLI::App& help = line.add("help", "Show what a command takes and does, as its --help does.",
                            [words, &line](CommandContext& context) { return showHelp(line, *words, context); });
  help.add_option("topic", *words, "The command, and a word after it")->type_name("COMMAND");
  help.footer("  orlocal help agenda\n  orlocal help calendars new");
}

}  // namespace orlocal::host
