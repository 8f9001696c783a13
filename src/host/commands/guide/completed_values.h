#pragma once

#include <string_view>

#include "host/commands/command_line/command_guide.h"

namespace orlocal::host {

/// What a shell offers where a value is wanted.
enum class ValueKind {
  kAnything,  ///< nothing is known of it
  kChoice,    ///< one of the guide's choices
  kCommand,   ///< a command of the program
  kFile,
  kFolder,
  kCalendar,  ///< the title of a calendar or reminder list
  kAccount,   ///< the name of an account or subscription
  kItem,      ///< the title of an event or reminder
};

ValueKind valueKindOf(const WordGuide& word);

/// What is known when the script is made: the choices, and the program's commands; empty for other kinds.
std::vector<std::string> fixedValues(const CommandGuide& program, const WordGuide& word);

/// The word by which a script asks the program for values that the store has; empty for other kinds.
std::string_view askedWord(ValueKind kind);

/// The hidden command that answers, with that word after it.
inline constexpr std::string_view kAskingCommand = "completion-values";

}  // namespace orlocal::host
