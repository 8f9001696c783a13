#pragma once

#include <span>
#include <string_view>

namespace orlocal::host {

/// What a function of the language does, with an example.
struct LanguageHelp {
  std::string_view name;
  const char* meaning;  ///< in English, to be translated
  std::string_view example;
  std::string_view result;  ///< of the example; empty when it is another one each time
};

/// Of every function of the language; the words of Get stand under their own names.
std::span<const LanguageHelp> languageHelp();

/// Compared without case; null for what is no function of the language.
const LanguageHelp* languageHelpOn(std::string_view name);

}  // namespace orlocal::host
