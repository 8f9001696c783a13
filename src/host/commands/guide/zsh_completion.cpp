#include <algorithm>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commands/command_line/help_text.h"
#include "host/commands/guide/completed_values.h"
#include "host/commands/guide/completion_scripts.h"

namespace orlocal::host {

namespace {

/// What the functions of the commands stand on; `%ASK%` is the command that answers what the store has.
constexpr std::string_view kZshMachine = R"zsh(
# What the store has, one title a line: the last argument says what; those before it are for compadd.
_orlocal_ask() {
  local -a titles store
  if [[ -n $opt_args[--store] ]]; then store=(--store ${~${(Q)opt_args[--store]}}); fi
  titles=("${(@f)$(_call_program titles orlocal $store %ASK% $argv[-1] 2>/dev/null)}")
  compadd "${(@)argv[1,-2]}" -- ${titles:#}
}
)zsh";

/// Text in a specification of _arguments or _describe.
std::string inZshSpecification(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (std::string_view("[]:\\").find(c) != std::string_view::npos) { escaped += '\\'; }
    escaped += c;
  }
  return escaped;
}

/// The function that completes what follows a command.
std::string zshFunction(const CommandGuide& command) {
  std::string name = command.path.empty() ? "_orlocal" : "_orlocal " + command.path;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

/// ":FILE:_files"
std::string zshValue(const CommandGuide& program, const WordGuide& word) {
  const ValueKind kind = valueKindOf(word);
  std::string action = " ";
  const auto values = fixedValues(program, word);
  if (kind == ValueKind::kFile) {
    action = "_files";
  } else if (kind == ValueKind::kFolder) {
    action = "_files -/";
  } else if (!askedWord(kind).empty()) {
    action = fmt::format("_orlocal_ask {}", askedWord(kind));
  } else if (!values.empty()) {
    action = fmt::format("({})", fmt::join(values, " "));
  }
  return fmt::format(":{}:{}", inZshSpecification(word.value), action);
}

void addZshOptions(std::vector<std::string>& specifications, const CommandGuide& program, const CommandGuide& command) {
  for (const WordGuide& option : command.options) {
    for (const std::string& name : option.names) {
      const std::string before =
          option.repeats ? "*" : (option.names.size() > 1 ? fmt::format("({})", fmt::join(option.names, " ")) : "");
      specifications.push_back(
          inShellQuotes(fmt::format("{}{}[{}]{}", before, name, inZshSpecification(meaningOf(option)),
                                    option.value.empty() ? "" : zshValue(program, option))));
    }
  }
}

std::string zshCommand(const CommandGuide& program, const CommandGuide& command) {
  std::vector<std::string> specifications;
  addZshOptions(specifications, program, command);
  if (!command.path.empty()) { addZshOptions(specifications, program, program); }
  for (const WordGuide& place : command.places) {
    specifications.push_back(inShellQuotes((place.repeats ? "*" : "") + zshValue(program, place)));
  }
  if (!command.words.empty()) {
    specifications.emplace_back("'1: :->word'");
    specifications.emplace_back("'*:: :->rest'");
  }
  std::string text = fmt::format(
      "\n{}() {{\n  local curcontext=$curcontext state line\n  typeset -A opt_args\n  _arguments -C \\\n    {}\n",
      zshFunction(command), fmt::join(specifications, " \\\n    "));
  if (!command.words.empty()) {
    text += "  case $state in\n    word)\n      local -a words_here=(\n";
    for (const CommandGuide& word : command.words) {
      text += fmt::format("        {}\n", inShellQuotes(word.name() + ":" + inZshSpecification(word.text)));
    }
    text += "      )\n      _describe -t commands command words_here\n      ;;\n    rest)\n      case $line[1] in\n";
    for (const CommandGuide& word : command.words) {
      text += fmt::format("        {}) {} ;;\n", word.name(), zshFunction(word));
    }
    text += "      esac\n      ;;\n  esac\n";
  }
  return text + "}\n";
}

}  // namespace

std::string zshCompletion(const CommandGuide& program) {
  std::string machine(kZshMachine);
  constexpr std::string_view kAsk = "%ASK%";
  machine.replace(machine.find(kAsk), kAsk.size(), kAskingCommand);
  std::string text =
      "#compdef orlocal\n# Completion of orlocal for zsh; `orlocal completion zsh` prints it.\n" + machine;
  eachCommand(program, [&](const CommandGuide& command) { text += zshCommand(program, command); });
  // Read as a file it only defines; as the completion function itself it completes, too.
  return text + "\nif [[ $funcstack[1] == _orlocal ]]; then _orlocal \"$@\"; else compdef _orlocal orlocal; fi\n";
}

}  // namespace orlocal::host
