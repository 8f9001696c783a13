#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orlocal::host {

/// What a text in an argument of the plug-in's functions may be. The program knows the plug-in through its C interface
/// only, which tells no keywords: they stand here once more, for a person who types them.
enum class WordKind {
  kType,
  kRule,  ///< the further type whose properties are those of a rule
  kSpan,
  kProperty,
  kRecurrence,
  kAction,
  kPriority,
  kStatus,
  kForm,   ///< of an answer about an error
  kTitle,  ///< the title of a calendar or list: the store knows
};

struct PluginWord {
  WordKind kind;
  std::string_view word;
  const char* meaning;  ///< in English, to be translated
};
std::span<const PluginWord> pluginWords();

/// The kinds that the argument (from 0) of a function takes; none for another function or argument. Names are compared
/// without case.
std::vector<WordKind> kindsFor(std::string_view function, std::size_t argument);

/// "span", "property": what a word of the kind is called; in English, to be translated.
const char* nameOf(WordKind kind);

/// A call of the function that can be typed as it is; empty for a function that is not known.
std::string_view exampleOf(std::string_view function);

}  // namespace orlocal::host
