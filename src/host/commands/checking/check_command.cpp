#include <algorithm>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "host/check/check.h"
#include "host/commands/checking/check_run.h"
#include "host/commands/checking/checking_commands.h"
#include "host/commands/command_line/folded_text.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/scripting/plugin_host.h"

namespace orlocal::host {
namespace {

using check::Check;
using check::Level;

const std::vector<std::pair<std::string, Level>>& levels() {
  static const std::vector<std::pair<std::string, Level>> all{
      {"basic", Level::kBasic}, {"usual", Level::kUsual}, {"strict", Level::kStrict}};
  return all;
}
const std::string& wordFor(Level level) { return levels()[static_cast<std::size_t>(level)].first; }

struct CheckWords {
  std::string plugin;
  std::vector<std::string> only;
  std::string level;
  std::uint64_t seed = 1;
  unsigned patience = 60;
  bool list = false;
};

/// Those that are asked for.
Result<std::vector<Check>> chosen(const CheckWords& words) {
  std::vector<Check> checks = check::allChecks();
  for (const std::string& name : words.only) {
    if (std::none_of(checks.begin(), checks.end(), [&](const Check& each) { return each.name == name; })) {
      return failure(ErrorCode::kNotFound,
                     tr("There is no check \"{}\"; orlocal check --list shows all of them.", name));
    }
  }
  const std::string asked = !words.level.empty() ? words.level : words.list ? "strict" : "usual";
  const auto level =
      std::find_if(levels().begin(), levels().end(), [&](const auto& each) { return each.first == asked; });
  std::erase_if(checks, [&](const Check& each) {
    // One that is named is wanted whatever its level.
    if (!words.only.empty()) { return std::find(words.only.begin(), words.only.end(), each.name) == words.only.end(); }
    return each.level > level->second;
  });
  return checks;
}

void list(const std::vector<Check>& checks, CommandContext& context) {
  if (context.options.json) {
    nlohmann::ordered_json all = nlohmann::ordered_json::array();
    for (const Check& each : checks) {
      all.push_back({{"name", each.name}, {"level", wordFor(each.level)}, {"sentence", each.sentence}});
    }
    context.streams.out << all.dump(2) << '\n';
    return;
  }
  std::vector<std::pair<std::string, std::string>> rows;
  for (const Check& each : checks) {
    rows.emplace_back(each.name, fmt::format("{} ({})", each.sentence, wordFor(each.level)));
  }
  context.streams.out << foldedTable(rows, terminalWidth(context.streams.outIsTerminal));
}

/// Tells verdicts as they come.
class Teller {
 public:
  Teller(const CheckSetting& setting, const std::vector<Check>& checks, CommandContext& context)
      : m_setting(setting),
        m_out(context.streams.out),
        m_ink(context.streams.colors),
        m_json(context.options.json),
        m_width(terminalWidth(context.streams.outIsTerminal)) {
    for (const Check& each : checks) { m_nameWidth = std::max(m_nameWidth, std::string_view(each.name).size()); }
  }

  void tell(const Check& check, const CheckVerdict& verdict) {
    ++m_counts[static_cast<std::size_t>(verdict.kind)];
    if (m_json) {
      m_list.push_back(
          {{"name", check.name},
           {"level", wordFor(check.level)},
           {"sentence", check.sentence},
           {"verdict", host::wordFor(verdict.kind)},
           {"reasons", verdict.reasons},
           {"step", verdict.step.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(verdict.step)},
           {"seconds", verdict.seconds}});
      return;
    }
    const std::string word = translated(host::wordFor(verdict.kind));
    m_out << padded(check.name, m_nameWidth) << "  " << (verdict.isGood() ? word : m_ink.bold(word)) << '\n';
    if (verdict.kind == CheckVerdict::Kind::kPassed) {
      m_out.flush();
      return;
    }
    if (!verdict.isGood()) { note(check.sentence); }
    for (const std::string& reason : verdict.reasons) { note(reason); }
    if (!verdict.step.empty()) { note(tr("while: {}", verdict.step)); }
    if (!verdict.isGood()) {
      note(tr("again: orlocal check {} --only {} --seed {}", m_setting.plugin.string(), check.name, m_setting.seed));
    }
    m_out.flush();
  }

  void end() {
    if (m_json) {
      m_out << nlohmann::ordered_json(
                   {{"plugin", m_setting.plugin.string()}, {"seed", m_setting.seed}, {"checks", m_list}})
                   .dump(2)
            << '\n';
      return;
    }
    m_out << tr("\n{} passed, {} failed, {} crashed, {} hung, {} skipped\n", m_counts[0], m_counts[1], m_counts[2],
                m_counts[3], m_counts[4]);
  }

  bool isGood() const { return m_counts[1] + m_counts[2] + m_counts[3] == 0; }

 private:
  void note(std::string_view text) {
    for (const std::string& line : foldedText(text, m_width > 4 ? m_width - 4 : 1)) { m_out << "    " << line << '\n'; }
  }

  const CheckSetting& m_setting;
  std::ostream& m_out;
  Ink m_ink;
  bool m_json;
  std::size_t m_width, m_nameWidth = 0;
  std::size_t m_counts[5] = {};
  nlohmann::ordered_json m_list = nlohmann::ordered_json::array();
};

Result<ExitStatus> runChecks(const CheckWords& words, CommandContext& context) {
  ORLOCAL_TRY(const std::vector<Check> checks, chosen(words));
  if (words.list) {
    list(checks, context);
    return ExitStatus::kDone;
  }
  CheckSetting setting;
  if (words.plugin.empty()) {
    ORLOCAL_TRY(setting.plugin, pluginFile(context.options, context.programFile));
  } else {
    setting.plugin = words.plugin;
  }
  std::error_code error;
  setting.plugin = std::filesystem::absolute(setting.plugin, error);
  if (!std::filesystem::is_regular_file(setting.plugin, error)) {
    return failure(ErrorCode::kNotFound,
                   tr("{} is no file; name the plug-in's file, NAME.fmx.", setting.plugin.string()));
  }
  setting.seed = words.seed;
  setting.patience = std::chrono::seconds(words.patience);
  Teller teller(setting, checks, context);
  for (const Check& each : checks) {
    ORLOCAL_TRY(const CheckVerdict verdict, runCheck(each, setting));
    teller.tell(each, verdict);
  }
  teller.end();
  return teller.isGood() ? ExitStatus::kDone : ExitStatus::kFailed;
}

}  // namespace

void registerCheckCommand(CommandLine& line) {
  const auto words = std::make_shared<CheckWords>();
  CLI::App& command =
      line.add("check",
               "Judge a plug-in for this host, ours or another author's, by named checks: each runs in a "
               "process of its own, so that what crashes or hangs is told and the others go on.",
               [words](CommandContext& context) { return runChecks(*words, context); });
  command.footer("  orlocal check Sample.fmx --level strict\n  orlocal check --only call-random --seed 7");
  command.add_option("plugin", words->plugin, "The plug-in's file (default: the one that orlocal loads)")
      ->type_name("FILE");
  command.add_option("--level", words->level, "What is asked of it: basic, usual (default) or strict")
      ->type_name("LEVEL")
      ->check(CLI::IsMember({"basic", "usual", "strict"}));
  command.add_option("--only", words->only, "Only this check; may be repeated")
      ->type_name("NAME")
      ->allow_extra_args(false);
  command
      .add_option("--seed", words->seed,
                  "What random calls begin with; the same seed makes the same calls (default: 1)")
      ->type_name("N");
  command.add_option("--patience", words->patience, "Seconds until a check is taken to hang (default: 60)")
      ->type_name("SECONDS")
      ->check(CLI::Range(1U, 86'400U));
  command.add_flag("--list", words->list, "Show the checks, and run none");
}

}  // namespace orlocal::host
