#include "host/commands/command_line/help_text.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/settings.h"
#include "base/translation.h"
#include "host/commands/command_line/folded_text.h"

namespace orlocal::host {

namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

/// The ones that a newcomer may want; `orlocal settings` shows all.
constexpr Setting kMainSettings[] = {Setting::kStoreFile, Setting::kZone, Setting::kEventCalendar, Setting::kLanguage,
                                     Setting::kColor};

std::string block(std::string_view heading, const Rows& rows, std::size_t width) {
  return rows.empty() ? "" : fmt::format("\n{}\n{}", heading, foldedTable(rows, width));
}

Rows rowsOf(const std::vector<WordGuide>& words) {
  Rows rows;
  for (const WordGuide& word : words) { rows.emplace_back(word.shown(), meaningOf(word)); }
  return rows;
}

Rows settingRowsShown() {
  Rows rows;
  for (const Setting setting : kMainSettings) {
    const SettingRow& row = rowOf(setting);
    rows.emplace_back(fmt::format("{}.{}", row.section, row.name),
                      row.variable.empty()
                          ? translated(std::string(row.meaning))
                          : tr("{} (environment: {})", translated(std::string(row.meaning)), row.variable));
  }
  return rows;
}

std::string settingsBlock(std::size_t width) {
  return block(tr("Settings"), settingRowsShown(), width) +
         foldedParagraph(
             tr("They stand in /etc/orlocal/orlocal.conf and ~/.config/orlocal/orlocal.conf; `orlocal settings` shows "
                "all of them, and where each comes from."),
             width, 2);
}

std::string programHelp(const CommandGuide& program, std::size_t width) {
  return foldedParagraph(program.text, width) + "\n" + tr("Usage") + "\n" +
         foldedTable({{"orlocal", tr("opens a console for calculations")},
                      {tr("orlocal COMMAND …"), tr("runs a command")},
                      {tr("orlocal COMMAND --help"), tr("says what a command takes")}},
                     width) +
         commandList(program, "", width) + block(tr("Options of every command"), rowsOf(program.options), width) +
         block(tr("Exit status"), exitStatuses(), width) + settingsBlock(width);
}

std::string commandHelp(const CommandGuide& program, const CommandGuide& command, std::size_t width) {
  std::string text = foldedParagraph(command.text, width) + "\n" + tr("Usage") + "\n  " + usageOf(command) + '\n';
  Rows words;
  for (const CommandGuide& word : command.words) { words.emplace_back(word.name(), word.text); }
  text += block(tr("Words"), words, width) + block(tr("What it takes"), rowsOf(command.places), width) +
          block(tr("Options"), rowsOf(command.options), width);
  for (const std::string& paragraph : command.paragraphs()) { text += '\n' + foldedParagraph(paragraph, width); }
  const auto examples = command.exampleLines();
  if (!examples.empty()) { text += '\n' + trn("Example", "Examples", examples.size()) + '\n'; }
  for (const std::string& example : examples) { text += "  " + example + '\n'; }
  return text + block(tr("Options of every command"), rowsOf(program.options), width);
}

}  // namespace

const Rows& exitStatuses() {
  static const Rows kRows{{"0", tr("done")},
                          {"1", tr("the work failed; the reason is on the error stream")},
                          {"2", tr("the words of the command line were off")}};
  return kRows;
}

std::string helpText(const CommandGuide& program, const CommandGuide& command, std::size_t width) {
  return command.path.empty() ? programHelp(program, width) : commandHelp(program, command, width);
}

std::string meaningOf(const WordGuide& word) {
  std::string text = word.text;
  // The name of the value may say it already.
  if (!word.choices.empty() && word.value != fmt::format("{}", fmt::join(word.choices, "|"))) {
    text += fmt::format(": {}", fmt::join(word.choices, ", "));
  }
  return word.standard.empty() ? text : tr("{} (default: {})", text, word.standard);
}

std::string usageOf(const CommandGuide& command) {
  std::string usage = command.typed();
  if (!command.words.empty()) { usage += command.needsWord ? tr(" WORD …") : tr(" [WORD …]"); }
  if (!command.options.empty()) { usage += tr(" [OPTIONS]"); }
  for (const WordGuide& place : command.places) { usage += " " + place.shown(); }
  return usage;
}

std::string commandList(const CommandGuide& program, std::string_view prefix, std::size_t width) {
  // In the order in which the groups were begun.
  std::vector<std::pair<std::string, Rows>> groups;
  for (const CommandGuide& command : program.words) {
    auto group =
        std::find_if(groups.begin(), groups.end(), [&](const auto& row) { return row.first == command.group; });
    if (group == groups.end()) { group = groups.insert(group, {command.group, {}}); }
    group->second.emplace_back(fmt::format("{}{}", prefix, command.name()), command.text);
  }
  std::string text;
  for (const auto& [name, rows] : groups) { text += block(name, rows, width); }
  return text;
}

}  // namespace orlocal::host
