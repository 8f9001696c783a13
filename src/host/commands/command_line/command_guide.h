#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
}

namespace orlocal::host {

/// An option, or a word that is known by its place.
struct WordGuide {
  std::vector<std::string> names;    ///< "-o", "--output"; for a word in its place the one that the program has for it
  std::string value;                 ///< how help calls what is given: "FILE"; empty for a flag
  std::vector<std::string> choices;  ///< all that may be given; empty when anything may
  std::string text;
  std::string standard;  ///< what holds when it is not given, where that can be said
  bool required = false;
  bool repeats = false;

  /// "-o, --output FILE", "[FILE…]".
  std::string shown() const;
};

/// What a command is called, takes and does: the one table that help, completions and man pages are made of.
struct CommandGuide {
  std::string path;   ///< "calendars new"; empty for the program itself
  std::string group;  ///< the heading under which the program's help lists it
  std::string text;
  std::string footer;  ///< what else is to be said; lines that begin with two blanks are examples
  std::vector<WordGuide> options;
  std::vector<WordGuide> places;
  std::vector<CommandGuide> words;  ///< that may follow its name: "new", "rename"
  bool needsWord = false;           ///< it does nothing by itself

  /// The last word of the path.
  std::string name() const;
  /// What is typed to run it: "orlocal calendars new".
  std::string typed() const;
  std::vector<std::string> exampleLines() const;
  std::vector<std::string> paragraphs() const;
};

/// The command of `app` and all below it, without those that are hidden (their group has no name).
CommandGuide guideOf(const CLI::App& app);

/// The words of `path`, apart by blanks, below `program`; null when there is no such command.
const CommandGuide* findCommand(const CommandGuide& program, std::string_view path);

/// `visit(command)` for the program and every command, each before its words.
template <class Visit>
void eachCommand(const CommandGuide& command, Visit visit) {
  visit(command);
  for (const CommandGuide& word : command.words) { eachCommand(word, visit); }
}

}  // namespace orlocal::host
