#include "host/commands/command_line/command_guide.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/text.h"
#include "base/translation.h"

namespace orlocal::host {

namespace {

constexpr std::string_view kProgram = "orlocal";
constexpr std::string_view kExampleIndent = "  ";

/// What the checks of an option allow, out of its type's name: "WHEN:{auto,always,never}".
std::vector<std::string> choicesIn(const std::string& type) {
  const std::size_t open = type.find(":{");
  const std::size_t close = type.find('}', open);
  if (open == std::string::npos || close == std::string::npos) { return {}; }
  return CLI::detail::split(type.substr(open + 2, close - open - 2), ',');
}

WordGuide guideOf(const CLI::Option& option) {
  WordGuide guide;
  for (const std::string& name : option.get_snames()) { guide.names.push_back("-" + name); }
  for (const std::string& name : option.get_lnames()) { guide.names.push_back("--" + name); }
  const bool inPlace = guide.names.empty();
  if (inPlace) { guide.names.push_back(option.get_name(true)); }
  const std::string type = option.get_type_name();
  guide.choices = choicesIn(type);
  guide.value = type.substr(0, type.find(':'));
  // Without a name of its own, the type is the one that the library has for it.
  const bool unnamed = guide.value == "TEXT" || guide.value == "INT" || guide.value == "UINT";
  if (inPlace && unnamed) { guide.value = inCapitals(guide.names.front()); }
  if (option.get_items_expected_max() == 0) { guide.value.clear(); }
  guide.text = translated(option.get_description());
  guide.standard = option.get_default_str();
  guide.required = option.get_required();
  guide.repeats = option.get_items_expected_max() > 1;
  return guide;
}

CommandGuide guideOf(const CLI::App& app, const std::string& path) {
  CommandGuide guide;
  guide.path = path;
  guide.group = translated(app.get_group());
  guide.text = translated(app.get_description());
  guide.footer = app.get_footer();
  guide.needsWord = app.get_require_subcommand_min() > 0;
  for (const CLI::Option* option : app.get_options()) {
    // The flag for help is the same everywhere: the program's own stands for all.
    if (option->get_group().empty() || (!path.empty() && option == app.get_help_ptr())) { continue; }
    (option->nonpositional() ? guide.options : guide.places).push_back(guideOf(*option));
  }
  for (const CLI::App* word : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (word->get_group().empty()) { continue; }
    guide.words.push_back(guideOf(*word, path.empty() ? word->get_name() : path + " " + word->get_name()));
  }
  return guide;
}

std::vector<std::string> linesIn(const std::string& text) {
  return text.empty() ? std::vector<std::string>() : CLI::detail::split(text, '\n');
}

bool isExample(const std::string& line) { return line.starts_with(kExampleIndent); }

}  // namespace

std::string WordGuide::shown() const {
  if (!names.front().starts_with('-')) { return (required ? value : "[" + value + "]") + (repeats ? "…" : ""); }
  return fmt::format("{}{}{}", fmt::join(names, ", "), value.empty() ? "" : " ", value);
}

std::string CommandGuide::name() const { return path.substr(path.rfind(' ') + 1); }

std::string CommandGuide::typed() const {
  return path.empty() ? std::string(kProgram) : fmt::format("{} {}", kProgram, path);
}

std::vector<std::string> CommandGuide::exampleLines() const {
  std::vector<std::string> examples;
  for (const std::string& line : linesIn(footer)) {
    if (isExample(line)) { examples.push_back(line.substr(kExampleIndent.size())); }
  }
  return examples;
}

std::vector<std::string> CommandGuide::paragraphs() const {
  std::vector<std::string> found;
  bool open = false;
  for (const std::string& line : linesIn(footer)) {
    const bool part = !line.empty() && !isExample(line);
    if (part && open) {
      found.back() += " " + line;
    } else if (part) {
      found.push_back(line);
    }
    open = part;
  }
  return found;
}

CommandGuide guideOf(const CLI::App& app) { return guideOf(app, ""); }

const CommandGuide* findCommand(const CommandGuide& program, std::string_view path) {
  const CommandGuide* found = nullptr;
  eachCommand(program, [&](const CommandGuide& command) {
    if (command.path == path) { found = &command; }
  });
  return found;
}

}  // namespace orlocal::host
