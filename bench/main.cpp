// Measures the built plug-in, each thing beside floors from the same run.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "against.h"
#include "growth_curves.h"
#include "parts.h"
#include "tables.h"

namespace {

using namespace orlocal::bench;

struct Part {
  const char* name;
  void (*measure)(Report&, const Setting&);
};

// Those that fork come first: the parent must not have started the plug-in, as it does for the notices.
constexpr Part kParts[] = {
    {"hostile", measureHostile},
    {"import", measureImport},
    {"turns", measureTurns},
    {"reading", measureReading},
    {"walking", measureWalking},
    {"saving", measureSaving},
    {"memory", measureMemory},
    {"sharing", measureSharing},
    {"idling", measureIdling},
    {"calls", measureCalls},
    {"instructions", measureInstructions},
    {"notices", measureNotices},
};

const std::vector<std::size_t> kSizes{1'000, 10'000, 100'000}, kSmallSizes{200, 400};
constexpr std::size_t kLargeSize = 1'000'000;

/// What the command line asks for.
struct Wanted {
  Setting setting;
  std::vector<std::string> only;
  bool large = false, instructions = false;
  const CLI::Option* hostile = nullptr;
  std::string report, picture, json, against, show;
  std::string peak, task;  ///< what the program asks of itself
};

bool wants(const Wanted& wanted, const std::string& part) {
  if (wanted.hostile->count() > 0) { return part == "hostile"; }
  const bool named = std::find(wanted.only.begin(), wanted.only.end(), part) != wanted.only.end();
  if (part == "instructions" && (wanted.instructions || wanted.setting.smoke)) { return true; }
  return named || (wanted.only.empty() && part != "instructions");
}

void describe(CLI::App& line, Wanted& wanted) {
  Setting& setting = wanted.setting;
  std::vector<std::string> parts;
  for (const Part& part : kParts) { parts.emplace_back(part.name); }
  // What ./run bench fills in.
  line.add_option("plugin", setting.plugin)->required()->group("");
  line.add_option("folder", setting.folder)->required()->group("");
  line.add_flag("--smoke", setting.smoke, "once, in small stores: that everything runs");
  line.add_option("--sizes", setting.sizes, "stores to measure in, by their events (1000,10000,100000)")
      ->delimiter(',')
      ->check(CLI::PositiveNumber);
  line.add_flag("--large", wanted.large, "with a store of 1,000,000 events, too: half an hour and 2 GB of disk more");
  line.add_option("--only", wanted.only, "these parts alone")->delimiter(',')->check(CLI::IsMember(parts));
  line.add_flag("--instructions", wanted.instructions, "count the instructions of some small tasks, too (valgrind)");
  line.add_option("--report", wanted.report,
                  "write the results as Markdown: between the marked lines of a page that has them");
  line.add_option("--picture", wanted.picture, "write how things grow as SVG");
  line.add_option("--json", wanted.json, "write the results as JSON");
  line.add_option("--against", wanted.against, "say what changed since a run that was written with --json")
      ->check(CLI::ExistingFile);
  line.add_option("--show", wanted.show, "measure nothing: take the results that --json wrote")
      ->check(CLI::ExistingFile);
  wanted.hostile =
      line.add_option("--hostile", setting.hostileOnly, "inputs made to hurt alone, or those with this in their name")
          ->expected(0, 1);
  line.add_option("--peak", wanted.peak)->group("");
  line.add_option("--task", wanted.task)->group("");
  line.footer(ruleOfChange());
}

Report measured(const Wanted& wanted) {
  std::filesystem::remove_all(wanted.setting.folder);
  std::filesystem::create_directories(wanted.setting.folder);
  Report report;
  for (const Part& part : kParts) {
    if (wants(wanted, part.name)) { part.measure(report, wanted.setting); }
  }
  return report;
}

void write(const std::string& text, const std::filesystem::path& file) {
  std::ofstream out(file, std::ios::binary);
  out << text;
  if (!out.flush()) { throw std::runtime_error("cannot write " + file.string()); }
}

int run(Wanted& wanted) {
  setenv("TZ", "Europe/Berlin", 1);
  setenv("ORLOCAL_NOW", "2026-11-02T08:00:00Z", 1);
  if (!wanted.peak.empty()) {
    printPeakOf(wanted.setting, wanted.peak);
    return 0;
  }
  if (!wanted.task.empty()) {
    doTask(wanted.setting, wanted.task);
    return 0;
  }
  std::vector<std::size_t>& sizes = wanted.setting.sizes;
  if (sizes.empty()) { sizes = wanted.setting.smoke ? kSmallSizes : kSizes; }
  if (wanted.setting.smoke) { wanted.setting.rounds = 1; }
  if (wanted.large) { sizes.push_back(kLargeSize); }
  std::sort(sizes.begin(), sizes.end());
  // Read first: it may be a file that is written below, or none at all.
  const Results before = wanted.against.empty() ? Results() : readResults(wanted.against);
  bool comparedLike = true;
  Results results;
  if (wanted.show.empty()) {
    const Report report = measured(wanted);
    results = report.results();
    comparedLike = report.comparedLike();
  } else {
    results = readResults(wanted.show);
    std::fputs(reportText(results).c_str(), stdout);
  }
  if (!wanted.json.empty()) { writeResults(results, wanted.json); }
  if (!wanted.report.empty()) { writeReport(results, wanted.report); }
  if (!wanted.picture.empty()) { write(growthCurves(results), wanted.picture); }
  if (!wanted.against.empty()) { std::fputs(changesSince(before, results).c_str(), stdout); }
  return comparedLike ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App line("Measures the plug-in, each thing beside floors from the same run.", "orlocal_bench");
  Wanted wanted;
  wanted.setting.program = argv[0];
  describe(line, wanted);
  CLI11_PARSE(line, argc, argv);
  try {
    return run(wanted);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "orlocal_bench: %s\n", problem.what());
    return 1;
  }
}
