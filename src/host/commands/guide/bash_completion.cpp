#include <string>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commands/guide/completed_values.h"
#include "host/commands/guide/completion_scripts.h"

namespace orlocal::host {

namespace {

/// What the script does with the tables; `%ASK%` is the command that answers what the store has.
constexpr std::string_view kBashMachine = R"bash(
# Of the words before the cursor: the command's path, the option that waits for its value, and how many other words.
_orlocal_read() {
  local i word
  path='' option='' place=1 store=()
  for ((i = 1; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    # "--color=always" comes as three words.
    if [[ $word == '=' ]]; then continue; fi
    if [[ -n $option ]]; then
      if [[ $option == --store ]]; then store=(--store "${word/#\~/$HOME}"); fi
      option=''
    elif [[ $word == -* ]]; then
      if [[ -n $(_orlocal_values "$path" "$word") ]]; then option=$word; fi
    elif [[ " $(_orlocal_words "$path") " == *" $word "* ]]; then
      path=${path:+$path }$word
    else
      place=$((place + 1))
    fi
  done
}

# Titles that begin as the word at the cursor does, quoted as that word is.
_orlocal_ask() {
  local title typed=$cur
  if [[ $cur == [\"\']* ]]; then typed=${cur:1}; else typed=${cur//\\/}; fi
  while IFS= read -r title; do
    if [[ $title != "$typed"* ]]; then continue; fi
    if [[ $cur != [\"\']* ]]; then printf -v title '%q' "$title"; fi
    COMPREPLY+=("$title")
  done < <("${COMP_WORDS[0]/#\~/$HOME}" "${store[@]}" %ASK% "$1" 2>/dev/null)
}

_orlocal() {
  local cur=${COMP_WORDS[COMP_CWORD]} path option place
  local -a store values
  COMPREPLY=()
  if [[ $cur == '=' ]]; then cur=''; fi
  _orlocal_read
  if [[ -z $option && $cur == -* ]]; then
    COMPREPLY=($(compgen -W "$(_orlocal_options "$path") $(_orlocal_options '')" -- "$cur"))
    return
  fi
  if [[ -z $option ]]; then
    COMPREPLY=($(compgen -W "$(_orlocal_words "$path")" -- "$cur"))
    option=$place
  fi
  values=($(_orlocal_values "$path" "$option"))
  case ${values[0]} in
    file | folder)
      compopt -o filenames 2>/dev/null
      local IFS=$'\n'
      if [[ ${values[0]} == file ]]; then
        COMPREPLY+=($(compgen -f -- "$cur"))
      else
        COMPREPLY+=($(compgen -d -- "$cur"))
      fi
      ;;
    one-of) COMPREPLY+=($(compgen -W "${values[*]:1}" -- "$cur")) ;;
    ask) _orlocal_ask "${values[1]}" ;;
  esac
}
complete -F _orlocal orlocal
)bash";

/// "file", "one-of auto always never", "ask calendars".
std::string bashValues(const CommandGuide& program, const WordGuide& word) {
  const ValueKind kind = valueKindOf(word);
  if (kind == ValueKind::kFile) { return "file"; }
  if (kind == ValueKind::kFolder) { return "folder"; }
  if (!askedWord(kind).empty()) { return fmt::format("ask {}", askedWord(kind)); }
  const auto values = fixedValues(program, word);
  return values.empty() ? "anything" : fmt::format("one-of {}", fmt::join(values, " "));
}

template <class List>
std::string bashTable(std::string_view function, std::string_view meaning, const CommandGuide& program, List list) {
  std::string text = fmt::format("\n# {}\n{}() {{\n  case $1 in\n", meaning, function);
  eachCommand(program, [&](const CommandGuide& command) {
    const std::vector<std::string> names = list(command);
    if (!names.empty()) {
      text += fmt::format("    {}) echo {} ;;\n", inShellQuotes(command.path),
                          inShellQuotes(fmt::format("{}", fmt::join(names, " "))));
    }
  });
  return text + "  esac\n}\n";
}

std::string bashValueTable(const CommandGuide& program) {
  std::string text =
      "\n# What may follow an option, or stand in a place, of a command; nothing for a flag.\n_orlocal_values() {\n"
      "  case \"$1|$2\" in\n";
  eachCommand(program, [&](const CommandGuide& command) {
    // Those of the program itself are every command's.
    const std::string path = command.path.empty() ? "*" : inShellQuotes(command.path);
    for (const WordGuide& option : command.options) {
      if (option.value.empty()) { continue; }
      for (const std::string& name : option.names) {
        text += fmt::format("    {}'|{}') echo {} ;;\n", path, name, inShellQuotes(bashValues(program, option)));
      }
    }
    for (std::size_t i = 0; i < command.places.size(); ++i) {
      const WordGuide& place = command.places[i];
      text += fmt::format("    {}'|'{}) echo {} ;;\n", path, place.repeats ? "[1-9]*" : std::to_string(i + 1),
                          inShellQuotes(bashValues(program, place)));
    }
  });
  return text + "  esac\n}\n";
}

}  // namespace

std::string inShellQuotes(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') {
      quoted += "'\\''";
    } else {
      quoted += c == '\n' ? ' ' : c;
    }
  }
  return quoted + "'";
}

std::string bashCompletion(const CommandGuide& program) {
  std::string machine(kBashMachine);
  constexpr std::string_view kAsk = "%ASK%";
  machine.replace(machine.find(kAsk), kAsk.size(), kAskingCommand);
  return "# Completion of orlocal for bash; `orlocal completion bash` prints it.\n" +
         bashTable("_orlocal_words", "The commands, and the words after them.", program,
                   [](const CommandGuide& command) {
                     std::vector<std::string> names;
                     for (const CommandGuide& word : command.words) { names.push_back(word.name()); }
                     return names;
                   }) +
         bashTable("_orlocal_options", "The options of a command; those of the program are everybody's.", program,
                   [](const CommandGuide& command) {
                     std::vector<std::string> names;
                     for (const WordGuide& option : command.options) {
                       names.insert(names.end(), option.names.begin(), option.names.end());
                     }
                     return names;
                   }) +
         bashValueTable(program) + machine;
}

}  // namespace orlocal::host
