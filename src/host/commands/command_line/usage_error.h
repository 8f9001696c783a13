#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace orlocal::host {

/// What is wrong with the words that `app` refused to read, in one line: it names the word, suggests the nearest one
/// that is known, and says whose help helps.
std::string usageSentence(const CLI::App& app, const CLI::ParseError& error);

/// The path of the command that the words named: "calendars new"; empty when they named none.
std::string pathNamed(const CLI::App& app);

}  // namespace orlocal::host
