#include "host/commands/guide/man_page.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/settings.h"
#include "base/text.h"
#include "host/commands/command_line/help_text.h"

namespace orlocal::host {

namespace {

/// On one line that is no request, with hyphens that can be typed.
std::string inRoff(std::string_view text) {
  std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
  for (const char c : text) {
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-') {
      escaped += "\\-";
    } else {
      escaped += c == '\n' ? ' ' : c;
    }
  }
  return escaped;
}

std::string section(std::string_view heading) { return fmt::format(".SH {}\n", heading); }

std::string entry(std::string_view name, std::string_view meaning) {
  return fmt::format(".TP\n\\fB{}\\fR\n{}\n", inRoff(name), inRoff(meaning));
}

std::string entries(const std::vector<WordGuide>& words) {
  std::string text;
  for (const WordGuide& word : words) { text += entry(word.shown(), meaningOf(word)); }
  return text;
}

std::string literal(const std::vector<std::string>& lines) {
  if (lines.empty()) { return ""; }
  std::string text = ".PP\n.nf\n.RS\n";
  for (const std::string& line : lines) { text += inRoff(line) + '\n'; }
  return text + ".RE\n.fi\n";
}

/// What a command is and takes; its words follow as parts of their own.
std::string about(const CommandGuide& command) {
  std::string text = inRoff(command.text) + '\n';
  for (const std::string& paragraph : command.paragraphs()) { text += ".PP\n" + inRoff(paragraph) + '\n'; }
  return text + entries(command.places) + entries(command.options) + literal(command.exampleLines());
}

std::string commandSections(const CommandGuide& command) {
  std::string text = section("SYNOPSIS");
  text += "\\fB" + inRoff(usageOf(command)) + "\\fR\n";
  for (const CommandGuide& word : command.words) { text += ".br\n\\fB" + inRoff(usageOf(word)) + "\\fR\n"; }
  text += section("DESCRIPTION") + about(command);
  for (const CommandGuide& word : command.words) {
    text += fmt::format(".SS {}\n", inRoff(word.typed())) + about(word);
  }
  return text + section("OPTIONS") + "Those of every command stand in\n.BR orlocal (1).\n";
}

std::string programSections(const CommandGuide& program) {
  std::string text = section("SYNOPSIS") + "\\fBorlocal\\fR\n.br\n\\fBorlocal\\fR \\fICOMMAND\\fR …\n" +
                     section("DESCRIPTION") + inRoff(program.text) +
                     "\n.PP\nWithout a command it opens a console for calculations.\n" + section("COMMANDS");
  for (const CommandGuide& command : program.words) { text += entry(command.typed(), command.text); }
  text += section("OPTIONS") + entries(program.options) + section("SETTINGS");
  for (const SettingRow& row : settingRows()) {
    text += entry(fmt::format("{}.{}", row.section, row.name),
                  row.variable.empty()
                      ? fmt::format("{} (default: {})", row.meaning, row.standard)
                      : fmt::format("{} (environment: {}; default: {})", row.meaning, row.variable, row.standard));
  }
  return text + section("FILES") + entry("/etc/orlocal/orlocal.conf", "What is set for everybody on the machine.") +
         entry("~/.config/orlocal/orlocal.conf", "What its user has set, which counts more.");
}

}  // namespace

std::string manPageFile(const CommandGuide& command) {
  return command.path.empty() ? "orlocal.1" : fmt::format("orlocal-{}.1", command.path);
}

std::string manPage(const CommandGuide& program, const CommandGuide& command, std::string_view version) {
  const std::string title = command.path.empty() ? "orlocal" : "orlocal-" + command.path;
  std::string text = fmt::format(".TH {} 1 \"\" \"{}\" \"Orlocal\"\n", inRoff(inCapitals(title)), inRoff(version));
  // What lists pages wants one line, without a full stop.
  std::string summary = command.text;
  if (summary.ends_with('.')) { summary.pop_back(); }
  text += section("NAME") + fmt::format("{} \\- {}\n", inRoff(title), inRoff(summary));
  text += command.path.empty() ? programSections(program) : commandSections(command);
  text += section("\"EXIT STATUS\"");
  for (const auto& [status, meaning] : exitStatuses()) { text += entry(status, meaning); }
  text += section("\"SEE ALSO\"");
  if (!command.path.empty()) { return text + ".BR orlocal (1)\n"; }
  for (const CommandGuide& each : program.words) {
    text += fmt::format(".BR {} (1){}\n", inRoff("orlocal-" + each.path), &each == &program.words.back() ? "" : ",");
  }
  return text;
}

}  // namespace orlocal::host
