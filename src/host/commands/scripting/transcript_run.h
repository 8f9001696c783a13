#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/calc/outcome.h"
#include "host/commands/command_line/command.h"
#include "host/commands/scripting/transcript.h"

namespace orlocal::host {

/// How one calculation of a transcript came out.
struct Verdict {
  std::size_t line = 0;
  std::string calculation;
  std::vector<std::string> expected;
  std::vector<std::string> printed;
  bool passed = false;
};

/// What a calculation prints in a transcript: the lines of its result, or `! reason` for each failure.
std::vector<std::string> printedLines(const std::string& calculation, const Result<calc::Outcome>& outcome);

/// How a whole transcript came out.
struct TranscriptReport {
  std::vector<Verdict> verdicts;
  std::string trouble;  ///< why it did not come to its end; empty when it did
};

/// Runs a transcript in a process of its own: environment, plug-in and store are new for each, and a crash is a finding
/// about that transcript alone. Fails when no process can be started. Nothing of it stays behind but what it did to a
/// store that it named.
Result<TranscriptReport> runTranscript(CommandContext& context, const std::filesystem::path& file,
                                       const Transcript& transcript);

}  // namespace orlocal::host
