#include <fstream>
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
#include "host/calc/rendering.h"
#include "host/commands/command_line/trouble.h"
#include "host/commands/scripting/scripting_commands.h"
#include "host/commands/scripting/transcript_run.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

using OrderedJson = nlohmann::ordered_json;

/// Runs transcripts, tells what differs, and counts.
class TestRun {
 public:
  explicit TestRun(CommandContext& context) : m_context(context) {}

  Result<ExitStatus> run(const std::vector<std::string>& files) {
    for (const std::string& file : files) { ORLOCAL_CHECK(runOne(file)); }
    if (m_context.options.json) {
      m_context.streams.out << OrderedJson{{"passed", m_passed}, {"failed", m_failed}, {"examples", m_examples}}.dump(
                                   2, ' ', false, OrderedJson::error_handler_t::replace)
                            << '\n';
    } else {
      m_context.streams.out << fmt::format("{} passed, {} failed\n", m_passed, m_failed);
    }
    return m_failed == 0 ? ExitStatus::kDone : ExitStatus::kFailed;
  }

 private:
  Status runOne(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    const auto text = readWhole(stream, "it");
    if (!text) { return trouble(file, text.error().message); }
    const auto transcript = parseTranscript(*text, file.ends_with(".md"));
    if (!transcript) {
      return trouble(fmt::format("{}:{}", file, transcript.error().place.value_or(0)), transcript.error().message);
    }
    if (transcript->examples.empty()) { return trouble(file, tr("it holds no calculation")); }
    ORLOCAL_TRY(const TranscriptReport report, runTranscript(m_context, file, *transcript));
    for (const Verdict& verdict : report.verdicts) { take(file, verdict); }
    return report.trouble.empty() ? Status() : trouble(file, report.trouble);
  }

  /// Counts as one failure of a transcript, whatever was left undone; the others still run.
  Status trouble(const std::string& place, const std::string& reason) {
    ++m_failed;
    if (m_context.options.json) { m_examples.push_back({{"file", place}, {"passed", false}, {"trouble", reason}}); }
    tellTrouble(m_context.streams.err, reason, place);
    return {};
  }

  void take(const std::string& file, const Verdict& verdict) {
    ++(verdict.passed ? m_passed : m_failed);
    if (m_context.options.json) {
      m_examples.push_back({{"file", file},
                            {"line", verdict.line},
                            {"calculation", verdict.calculation},
                            {"expected", verdict.expected},
                            {"printed", verdict.printed},
                            {"passed", verdict.passed}});
    } else if (!verdict.passed) {
      m_context.streams.out << calc::harmlessLines(fmt::format("{}:{}: {}\n", file, verdict.line, verdict.calculation));
      show("expected", verdict.expected);
      show("printed ", verdict.printed);
    }
  }

  void show(std::string_view what, const std::vector<std::string>& lines) {
    if (lines.empty()) { m_context.streams.out << fmt::format("  {}  (nothing)\n", what); }
    for (const std::string& line : lines) {
      m_context.streams.out << fmt::format("  {}  {}\n", what, calc::harmless(line));
    }
  }

  CommandContext& m_context;
  int m_passed = 0;
  int m_failed = 0;
  OrderedJson m_examples = OrderedJson::array();
};

}  // namespace

void registerTestCommand(CommandLine& line) {
  const auto files = std::make_shared<std::vector<std::string>>();
  CLI::App& test = line.add("test", "Run transcripts and tell where results differ from what they expect.",
                            [files](CommandContext& context) { return TestRun(context).run(*files); });
  test.footer("  orlocal test solution.txt\n  orlocal test docs/functions.md");
  test.add_option("file", *files, "A transcript, or a Markdown page with blocks marked transcript")->required();
}

}  // namespace orlocal::host
