#include <string>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "host/commands/command_line/help_text.h"
#include "host/commands/guide/completed_values.h"
#include "host/commands/guide/completion_scripts.h"

namespace orlocal::host {

namespace {

/// Here a backslash and a quote want a backslash, also within single quotes.
std::string inFishQuotes(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') { quoted += '\\'; }
    quoted += c == '\n' ? ' ' : c;
  }
  return quoted + "'";
}

/// What follows an option's name, or stands in a place: "-x -a 'auto always never'".
std::string fishValue(const CommandGuide& program, const WordGuide& word) {
  const ValueKind kind = valueKindOf(word);
  if (kind == ValueKind::kFile || kind == ValueKind::kFolder) { return "-r -F"; }
  if (!askedWord(kind).empty()) { return fmt::format("-x -a '(__orlocal_ask {})'", askedWord(kind)); }
  const auto values = fixedValues(program, word);
  return values.empty() ? "-x" : fmt::format("-x -a {}", inFishQuotes(fmt::format("{}", fmt::join(values, " "))));
}

std::string fishOption(const CommandGuide& program, const CommandGuide& command, const WordGuide& option) {
  std::string line = "complete -c orlocal";
  if (!command.path.empty()) {
    line += fmt::format(" -n {}", inFishQuotes("__orlocal_at " + inFishQuotes(command.path)));
  }
  for (const std::string& name : option.names) {
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  if (!option.value.empty()) { line += " " + fishValue(program, option); }
  return line + fmt::format(" -d {}\n", inFishQuotes(meaningOf(option)));
}

std::string fishCommand(const CommandGuide& program, const CommandGuide& command) {
  std::string text;
  const std::string here = inFishQuotes("__orlocal_at " + inFishQuotes(command.path));
  for (const CommandGuide& word : command.words) {
    text += fmt::format("complete -c orlocal -n {} -a {} -d {}\n", here, word.name(), inFishQuotes(word.text));
  }
  for (const WordGuide& option : command.options) { text += fishOption(program, command, option); }
  for (const WordGuide& place : command.places) {
    text +=
        fmt::format("complete -c orlocal -n {} {} -d {}\n", here, fishValue(program, place), inFishQuotes(place.value));
  }
  return text;
}

/// The function that says which command stands before the cursor.
std::string fishPath(const CommandGuide& program) {
  std::vector<std::string> paths;
  std::vector<std::string> waiting;
  eachCommand(program, [&](const CommandGuide& command) {
    if (!command.path.empty()) { paths.push_back(inFishQuotes(command.path)); }
    for (const WordGuide& option : command.options) {
      if (option.value.empty()) { continue; }
      for (const std::string& name : option.names) {
        waiting.push_back(inFishQuotes((command.path.empty() ? "*" : command.path) + " " + name));
      }
    }
  });
  return fmt::format(R"(
function __orlocal_path
    set -l path ''
    set -l skip 0
    for word in (commandline -opc)[2..-1]
        if test $skip = 1
            set skip 0
            continue
        end
        switch "$path $word"
            case {}
                set skip 1
            case '*'
                set -l longer (string trim -- "$path $word")
                if contains -- "$longer" {}
                    set path $longer
                end
        end
    end
    echo $path
end
)",
                     fmt::join(waiting, " "), fmt::join(paths, " "));
}

}  // namespace

std::string fishCompletion(const CommandGuide& program) {
  std::string text = "# Completion of orlocal for fish; `orlocal completion fish` prints it.\n" + fishPath(program);
  text += fmt::format(R"(
function __orlocal_at
    set -l path (__orlocal_path)
    test "$path" = "$argv[1]"
end

# What the store has, one title a line.
function __orlocal_ask
    orlocal {} $argv[1] 2>/dev/null
end

complete -c orlocal -f
)",
                      kAskingCommand);
  eachCommand(program, [&](const CommandGuide& command) { text += fishCommand(program, command); });
  return text;
}

}  // namespace orlocal::host
