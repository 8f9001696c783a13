#include "host/commands/scripting/transcript_run.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <ostream>
#include <sstream>
#include <thread>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "base/try.h"
#include "host/calc/calc_failure.h"
#include "host/calc/rendering.h"
#include "host/commands/command_line/child_process.h"
#include "host/commands/command_line/clock_setting.h"
#include "host/commands/command_line/temporary_folder.h"
#include "host/commands/scripting/expected_lines.h"
#include "host/commands/scripting/plugin_host.h"
#include "host/fmwrapper/unicode.h"
#include "host/plugin/update_script.h"

namespace orlocal::host {

namespace {

/// In the environment of all that a transcript runs: one that ran transcripts could run itself without an end.
constexpr const char* kWithinTranscript = "ORLOCAL_WITHIN_TRANSCRIPT";

/// The file that a word names: beside the transcript, else in the nearest folder above it, else as it stands.
std::string resolved(const std::filesystem::path& transcript, const std::string& word) {
  std::error_code error;
  std::filesystem::path folder = std::filesystem::absolute(transcript, error).parent_path();
  for (;;) {
    if (std::filesystem::is_regular_file(folder / word, error)) { return folder / word; }
    if (folder == folder.parent_path()) { return word; }
    folder = folder.parent_path();
  }
}

/// In a typed command: the transcript's own folder.
constexpr std::string_view kFolderWord = "$FOLDER";

void setEnvironment(const char* name, const std::optional<std::string>& value) {
  if (value) { ::setenv(name, value->c_str(), 1); }
}

/// The work of the transcript's own process. Each verdict is written as soon as it is known.
class Work {
 public:
  Work(CommandContext& context, const std::filesystem::path& file, const Transcript& transcript, std::ostream& out)
      : m_context(context), m_file(file), m_transcript(transcript), m_options(context.options), m_out(out) {}

  /// Trouble with the transcript is written too; a failure is one of the process itself.
  Status run() {
    ORLOCAL_CHECK(m_folder.make());
    putSettingsInForce();
    for (const Preparation& preparation : m_transcript.settings.preparations) {
      ORLOCAL_TRY(const ChildResult result, runCommand(preparation.command, preparation.words));
      if (!result.succeeded()) {
        writeTrouble(
            fmt::format("line {}: {} {}\n{}", preparation.line, preparation.command, result.ending, result.output));
        return {};
      }
    }
    CommandContext context{m_options, m_context.streams, m_context.programFile};
    const auto workbench = Workbench::open(context, Workbench::Need::kIfThere);
    if (!workbench) {
      writeTrouble(workbench.error().message);
      return {};
    }
    for (const Example& example : m_transcript.examples) {
      ORLOCAL_TRY(auto printed, perform(example, **workbench));
      addScriptStarts(example, **workbench, printed);
      write({{"printed", printed}});
    }
    return {};
  }

 private:
  Result<std::vector<std::string>> perform(const Example& example, Workbench& workbench) {
    switch (example.kind) {
      case Example::Kind::kRegister:
        return registerScript(example, workbench);
      case Example::Kind::kOutside:
        return runOutside(example);
      case Example::Kind::kTyped:
        return runTyped(example);
      case Example::Kind::kCalculation:
        break;
    }
    return printedLines(example.calculation, workbench.evaluate(example.calculation));
  }

  static std::vector<std::string> registerScript(const Example& example, Workbench& workbench) {
    if (workbench.plugin() == nullptr) { return {"! there is no plug-in to register with"}; }
    const auto done = registerUpdateScript(*workbench.plugin(), example.words.at(0), example.words.at(1));
    return done ? std::vector<std::string>() : std::vector<std::string>{"! " + done.error().message};
  }

  /// The process gets the settings of this one, through the environment and the global options.
  Result<std::vector<std::string>> runOutside(const Example& example) {
    std::vector<std::string> options{"--host-version", std::to_string(m_options.hostVersion)};
    if (m_options.plugin) { options.insert(options.end(), {"--plugin", *m_options.plugin}); }
    ORLOCAL_TRY(const ChildResult result,
                runCommand(example.words.front(), {example.words.begin() + 1, example.words.end()}, options));
    if (result.succeeded()) { return std::vector<std::string>(); }
    std::vector<std::string> lines{fmt::format("! {} {}", example.words.front(), result.ending)};
    std::istringstream output(result.output);
    for (std::string line; std::getline(output, line);) { lines.push_back("! " + line); }
    return lines;
  }

  Result<std::vector<std::string>> runTyped(const Example& example) {
    std::vector<std::string> words{m_context.programFile};
    for (std::string word : example.words) {
      if (const auto at = word.find(kFolderWord); at != std::string::npos) {
        word.replace(at, kFolderWord.size(), m_folder.path().string());
      }
      words.push_back(word);
    }
    std::error_code error;
    const auto folder = std::filesystem::absolute(m_file, error).parent_path();
    ORLOCAL_TRY(const ChildResult result, runProgram(words, folder));
    std::vector<std::string> lines;
    std::istringstream output(result.output);
    for (std::string line; std::getline(output, line);) { lines.push_back(line); }
    // What blank lines separate is decoration at the end of what is expected, and here, too.
    while (!lines.empty() && lines.back().empty()) { lines.pop_back(); }
    if (result.status != 0) {
      lines.push_back(result.status > 0 ? fmt::format("[{}]", result.status) : "! orlocal " + result.ending);
    }
    return lines;
  }

  /// Adds a line for each script that was started. The plug-in looks for changes at each idle message, so one would do
  /// for what has been committed when it is sent.
  static void addScriptStarts(const Example& example, Workbench& workbench, std::vector<std::string>& printed) {
    const auto expected = static_cast<std::size_t>(
        std::ranges::count_if(example.expected, [](const std::string& line) { return line.starts_with(kScriptLine); }));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    std::size_t started = 0;
    for (;;) {
      if (Plugin* plugin = workbench.plugin()) {
        if (const auto idle = plugin->idle(); !idle) { printed.push_back("! " + idle.error().message); }
      }
      for (const ScriptStart& start : Registry::instance().takeScriptStarts()) {
        const std::string parameter = start.parameter ? start.parameter->utf8() : std::string();
        printed.push_back(
            fmt::format("{}{} / {}: {}", kScriptLine, toUtf8(start.file), toUtf8(start.script), parameter));
        ++started;
      }
      if (started >= expected || std::chrono::steady_clock::now() >= deadline) { return; }
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }

  void putSettingsInForce() {
    ::setenv(kWithinTranscript, "1", 1);
    // What is printed depends on the transcript, not on who runs it.
    ::setenv("COLUMNS", "80", 1);
    ::setenv("TERM", "dumb", 1);
    ::setenv("ORLOCAL_SETTINGS", "", 0);
    const TranscriptSettings& settings = m_transcript.settings;
    setEnvironment("TZ", settings.timezone);
    setEnvironment("ORLOCAL_NOW", settings.now);
    putClockInForce(m_context.streams.err);
    setEnvironment("LANGUAGE", settings.language);
    setEnvironment("ORLOCAL_SYSTEM_MINOR", settings.systemMinor);
    // A store of the user's is touched only when a transcript or the command line names it.
    const bool named = settings.store ? *settings.store != "fresh" : m_options.store.has_value();
    if (!named) {
      ::setenv("ORLOCAL_STORE", (m_folder.path() / "calendar.db").c_str(), 1);
    } else if (settings.store) {
      ::setenv("ORLOCAL_STORE", resolved(m_file, *settings.store).c_str(), 1);
    }
    // From here on the environment says it all; what is typed is typed beside the transcript.
    if (named && !settings.store) {
      std::error_code error;
      ::setenv("ORLOCAL_STORE", std::filesystem::absolute(*m_options.store, error).c_str(), 1);
    }
    m_options.store.reset();
    m_options.systemMinor.reset();
    if (settings.hostVersion) { m_options.hostVersion = *settings.hostVersion; }
    if (settings.plugin) {
      m_options.plugin = *settings.plugin == kNoPlugin ? *settings.plugin : resolved(m_file, *settings.plugin);
    }
  }

  /// Runs the program itself with a command's words; the first ones may name files.
  Result<ChildResult> runCommand(const std::string& command, const std::vector<std::string>& words,
                                 const std::vector<std::string>& options = {}) {
    std::vector<std::string> all{m_context.programFile};
    all.insert(all.end(), options.begin(), options.end());
    all.push_back(command);
    bool files = true;
    for (const std::string& word : words) {
      files = files && !word.starts_with('-');
      all.push_back(files ? resolved(m_file, word) : word);
    }
    return runProgram(all);
  }

  void writeTrouble(const std::string& trouble) { write({{"trouble", trouble}}); }

  void write(const nlohmann::json& record) {
    m_out << record.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << std::endl;
  }

  CommandContext& m_context;
  const std::filesystem::path& m_file;
  const Transcript& m_transcript;
  GlobalOptions m_options;
  TemporaryFolder m_folder;
  std::ostream& m_out;
};

}  // namespace

std::vector<std::string> printedLines(const std::string& calculation, const Result<calc::Outcome>& outcome) {
  if (!outcome) {
    const std::string described = calc::describe(calculation, outcome.error());
    return {"! " + described.substr(0, described.find('\n'))};
  }
  if (outcome->failures.empty()) { return calc::linesOf(outcome->value); }
  std::vector<std::string> lines;
  for (const std::string& failure : outcome->failures) {
    lines.push_back("! " + failure.substr(0, failure.find('\n')));
  }
  return lines;
}

Result<TranscriptReport> runTranscript(CommandContext& context, const std::filesystem::path& file,
                                       const Transcript& transcript) {
  TranscriptReport report;
  if (std::getenv(kWithinTranscript) != nullptr) {
    report.trouble = "transcripts are not run from within a transcript";
    return report;
  }
  ORLOCAL_TRY(const ChildResult child,
              runInChild([&](std::ostream& out) { return Work(context, file, transcript, out).run(); }));
  std::istringstream lines(child.output);
  for (std::string line; std::getline(lines, line);) {
    const nlohmann::json record = nlohmann::json::parse(line, nullptr, false);
    if (record.contains("trouble")) { report.trouble = record["trouble"].get<std::string>(); }
    if (!record.contains("printed") || report.verdicts.size() == transcript.examples.size()) { continue; }
    const Example& example = transcript.examples[report.verdicts.size()];
    auto printed = record["printed"].get<std::vector<std::string>>();
    const bool passed = matchesLines(example.expected, printed);
    report.verdicts.push_back({example.line, example.calculation, example.expected, std::move(printed), passed});
  }
  if (report.trouble.empty() && !child.succeeded()) {
    const bool started = report.verdicts.size() < transcript.examples.size();
    const std::size_t line = started ? transcript.examples[report.verdicts.size()].line : 0;
    report.trouble = line == 0 ? fmt::format("the process {} at its end", child.ending)
                               : fmt::format("line {}: the process {}", line, child.ending);
  }
  return report;
}

}  // namespace orlocal::host
