#include <algorithm>
#include <cctype>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/translation.h"
#include "base/try.h"
#include "base/whole_input.h"
#include "host/calc/calc_failure.h"
#include "host/calc/rendering.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/scripting/calc_file.h"
#include "host/commands/scripting/plugin_host.h"
#include "host/commands/scripting/scripting_commands.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

/// Texts for JSON: what is no UTF-8 becomes U+FFFD instead of an exception.
std::string wellFormed(std::string_view text) { return toUtf8(toUtf16(text)); }

/// Evaluates calculations one after the other and prints each result.
class Printer {
 public:
  Printer(CommandContext& context, std::string file) : m_context(context), m_file(std::move(file)) {}

  /// All are read before the first is done, so that a slip in the last one does not leave half of the work behind.
  ExitStatus print(Workbench& workbench, const std::vector<Calculation>& calculations) {
    bool readable = true;
    for (const Calculation& calculation : calculations) {
      if (const Status read = workbench.session().check(calculation.text); !read) {
        tell(calculation, read.error());
        readable = false;
      }
    }
    if (!readable) { return ExitStatus::kFailed; }
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    bool failed = false;
    for (const Calculation& calculation : calculations) {
      const auto outcome = workbench.evaluate(calculation.text);
      if (!outcome) {
        // What it calls was unregistered by a calculation before it.
        tell(calculation, outcome.error());
        return ExitStatus::kFailed;
      }
      failed = failed || !outcome->failures.empty();
      report(calculation, *outcome);
      if (m_context.options.json) {
        list.push_back({{"calculation", wellFormed(calculation.text)},
                        {"line", calculation.line},
                        {"result", outcome->value.utf8()},
                        {"type", calc::typeName(outcome->value)},
                        {"failures", outcome->failures}});
      } else {
        show(outcome->value);
      }
    }
    if (m_context.options.json) { m_context.streams.out << list.dump(2) << '\n'; }
    return failed ? ExitStatus::kFailed : ExitStatus::kDone;
  }

 private:
  /// Says what keeps a calculation from being read.
  void tell(const Calculation& calculation, const Failure& why) {
    m_context.streams.err << calc::harmlessLines(calc::describe(calculation.text, why, {m_file, calculation.line}))
                          << '\n';
  }

  void show(const Value& value) {
    for (const std::string& line : calc::linesOf(value)) {
      m_context.streams.out << (m_context.streams.outIsTerminal ? calc::harmless(line) : line) << '\n';
    }
    m_context.streams.out.flush();
  }

  void report(const Calculation& calculation, const calc::Outcome& outcome) {
    for (const std::string& failure : outcome.failures) {
      const std::string place = m_file.empty() ? "orlocal" : fmt::format("{}:{}", m_file, calculation.line);
      tellTrouble(m_context.streams.err, failure, place);
    }
  }

  CommandContext& m_context;
  std::string m_file;
};

/// What `eval` and `run` are given.
struct CalcWords {
  std::vector<std::string> calculations;
  std::string file;
  std::vector<std::string> variables;  ///< "NAME=TEXT"
  bool strict = false;
};

/// Why "NAME=TEXT" sets no variable; empty when it does.
std::string objectionToAssignment(const std::string& words) {
  const std::string_view name = std::string_view(words).substr(0, words.find('='));
  const bool isName = !name.empty() && std::all_of(name.begin(), name.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 || c == '_' || c >= 0x80;
  });
  if (isName && name.size() < words.size()) { return ""; }
  return tr("\"{}\" sets no variable; write NAME=TEXT for $$NAME", words);
}

/// The calculation that does it.
std::string assignment(std::string_view words) {
  const std::size_t equals = words.find('=');
  std::string text;
  for (const char c : words.substr(equals + 1)) {
    if (c == '"' || c == '\\') { text += '\\'; }
    text += c;
  }
  return fmt::format("Let( $${} = \"{}\" ; \"\" )", words.substr(0, equals), text);
}

Result<ExitStatus> printAll(CommandContext& context, const CalcWords& words, const std::string& file,
                            const std::vector<Calculation>& calculations) {
  ORLOCAL_TRY(const auto workbench, Workbench::open(context, Workbench::Need::kIfThere));
  if (words.strict) { workbench->beStrict(); }
  for (const std::string& variable : words.variables) { ORLOCAL_CHECK(workbench->evaluate(assignment(variable))); }
  return Printer(context, file).print(*workbench, calculations);
}

Result<ExitStatus> evaluateWords(CommandContext& context, const CalcWords& words) {
  std::vector<Calculation> calculations;
  for (const std::string& word : words.calculations) { calculations.push_back({word, 1}); }
  return printAll(context, words, "", calculations);
}

Result<ExitStatus> runFile(CommandContext& context, const CalcWords& words) {
  const bool standard = words.file == "-";
  const std::string name = standard ? tr("standard input") : words.file;
  ORLOCAL_TRY(const std::string text, standard ? readWhole(context.streams.in, name) : readWholeFile(words.file));
  return printAll(context, words, name, readCalculations(text));
}

void addOptions(CLI::App& command, CalcWords& words) {
  command.add_option("--set", words.variables, "Give the variable $$NAME this text first; may be repeated")
      ->type_name("NAME=TEXT")
      ->check(objectionToAssignment)
      ->allow_extra_args(false);
  command.add_flag("--strict", words.strict,
                   "End with status 1 after any call that returned \"!!ERROR!!\", and say its reason");
}

}  // namespace

void registerCalcCommands(CommandLine& line) {
  const auto words = std::make_shared<CalcWords>();
  CLI::App& eval = line.add("eval", "Evaluate calculations and print each result.",
                            [words](CommandContext& context) { return evaluateWords(context, *words); });
  eval.footer("  orlocal eval '1 + 1'\n  orlocal eval 'Orlo_GetItemCountForType( \"event\" )' --json");
  eval.add_option("calculation", words->calculations, "A calculation, such as 'Orlo_GetItemCountForType( \"event\" )'")
      ->required();
  addOptions(eval, *words);

  const auto fileWords = std::make_shared<CalcWords>();
  CLI::App& run = line.add("run", "Run a file of calculations and print each result.",
                           [fileWords](CommandContext& context) { return runFile(context, *fileWords); });
  run.footer(
      "  orlocal run tomorrow.calc\n  orlocal run book.calc --set 'room=Room 4'\n  echo '2 * 21' | orlocal run -");
  run.add_option("file", fileWords->file,
                 "A calculation a line, going on while a bracket is open; # begins a comment; - reads the input")
      ->required();
  addOptions(run, *fileWords);
}

}  // namespace orlocal::host
