#include "host/commands/command_line/usage_error.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/text.h"
#include "base/translation.h"
#include "host/commands/command_line/command_guide.h"
#include "host/commands/command_line/nearest_word.h"

namespace orlocal::host {

namespace {

using Names = std::vector<std::string>;

/// "add, list or show".
std::string alternatives(const Names& names) {
  if (names.size() < 2) { return fmt::format("{}", fmt::join(names, "")); }
  return tr("{} or {}", fmt::join(names.begin(), names.end() - 1, ", "), names.back());
}

std::string suggestion(std::string_view word, const Names& known) {
  const auto nearest = nearestWord(word, known);
  return nearest ? tr("; did you mean \"{}\"?", *nearest) : ".";
}

Names wordsAfter(const CommandGuide& command) {
  Names names;
  for (const CommandGuide& word : command.words) { names.push_back(word.name()); }
  return names;
}

/// What the words were read as, and against.
class Diagnosis {
 public:
  Diagnosis(const CommandGuide& program, const CommandGuide& command) : m_program(program), m_command(command) {}

  std::string ofUnknown(const std::string& word) const {
    if (word.size() > 1 && word.starts_with('-')) { return ofUnknownOption(word.substr(0, word.find('='))); }
    const Names words = wordsAfter(m_command);
    if (words.empty()) { return tr("\"{}\" is one word too many{}.", word, here()); }
    return m_command.path.empty() ? tr("There is no command \"{}\"{}", word, suggestion(word, words))
                                  : tr("There is no \"{}\"{}{}", word, here(), suggestion(word, words));
  }

  std::string ofError(const CLI::ParseError& error) const {
    const std::string_view said = error.what();
    const WordGuide* const word = concerned(said);
    if (word == nullptr) {
      const Names words = wordsAfter(m_command);
      if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && !words.empty()) {
        return tr("A word is missing{}: {}.", here(), alternatives(words));
      }
      return fmt::format("{}.", said);
    }
    const std::string name = nameOf(*word);
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) { return tr("{} is missing.", name); }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
      return said.ends_with("missing") ? tr("A value is missing after {}.", name)
                                       : tr("{} is given more than once.", name);
    }
    if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
      return tr("{} is given with {} only.", name, lastWordOf(said));
    }
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
      return tr("{} and {} exclude each other.", name, lastWordOf(said));
    }
    if (dynamic_cast<const CLI::ConversionError*>(&error) != nullptr) {
      return tr("{} takes a number, and not \"{}\".", name, after(said, " = "));
    }
    const std::string_view objection = after(said, ": ");
    if (word->choices.empty()) { return ofObjection(name, objection); }
    const std::string_view given = objection.substr(0, objection.rfind(" not in {"));
    return tr("{} is {}, and not \"{}\"{}", name, alternatives(word->choices), given, suggestion(given, word->choices));
  }

 private:
  static std::string nameOf(const WordGuide& word) {
    if (word.names.front().starts_with('-')) { return word.names.back(); }
    // "mine|theirs" says what there is to choose from, not what it is.
    return word.choices.empty() ? word.value : inCapitals(word.names.front());
  }
  /// " after calendars new"; nothing where no command was named.
  std::string here() const { return m_command.path.empty() ? "" : tr(" after {}", m_command.path); }
  static std::string_view after(std::string_view text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    return at == std::string_view::npos ? text : text.substr(at + mark.size());
  }
  static std::string_view lastWordOf(std::string_view text) { return text.substr(text.rfind(' ') + 1); }

  /// Our own checks object in the user's language; the library's has one sentence that people see.
  static std::string ofObjection(const std::string& name, std::string_view objection) {
    constexpr std::string_view kValue = "Value ", kRange = " not in range ";
    const std::size_t range = objection.find(kRange);
    if (!objection.starts_with(kValue) || range == objection.npos) { return fmt::format("{}: {}.", name, objection); }
    return tr("{}: Value {} not in range {}.", name, objection.substr(kValue.size(), range - kValue.size()),
              objection.substr(range + kRange.size()));
  }

  std::string ofUnknownOption(const std::string& option) const {
    Names known;
    for (const auto* command : {&m_command, &m_program}) {
      for (const WordGuide& word : command->options) {
        known.insert(known.end(), word.names.begin(), word.names.end());
      }
    }
    return tr("There is no option \"{}\"{}{}", option, here(), suggestion(option, known));
  }

  /// The option or the word in its place whose name the library's sentence begins with; conversions have it later.
  const WordGuide* concerned(std::string_view said) const {
    constexpr std::string_view kConversion = "Could not convert: ";
    if (said.starts_with(kConversion)) { said.remove_prefix(kConversion.size()); }
    const std::string_view name = said.substr(0, said.find_first_of(": "));
    for (const auto* words : {&m_command.options, &m_command.places, &m_program.options}) {
      for (const WordGuide& word : *words) {
        if (std::find(word.names.begin(), word.names.end(), name) != word.names.end()) { return &word; }
      }
    }
    return nullptr;
  }

  const CommandGuide& m_program;
  const CommandGuide& m_command;
};

}  // namespace

std::string pathNamed(const CLI::App& app) {
  std::string path;
  for (const CLI::App* at = &app; !at->get_subcommands().empty();) {
    at = at->get_subcommands().back();
    path += (path.empty() ? "" : " ") + at->get_name();
  }
  return path;
}

std::string usageSentence(const CLI::App& app, const CLI::ParseError& error) {
  const CommandGuide program = guideOf(app);
  const CommandGuide* named = findCommand(program, pathNamed(app));
  // A hidden command has no guide.
  const CommandGuide& command = named != nullptr ? *named : program;
  const Diagnosis diagnosis(program, command);
  const auto unknown = app.remaining(true);
  return tr("{} See `{} --help`.", unknown.empty() ? diagnosis.ofError(error) : diagnosis.ofUnknown(unknown.front()),
            command.typed());
}

}  // namespace orlocal::host
