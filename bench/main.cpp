// Measures the built plug-in, each thing beside a floor from the same run. Usage:
//   orlocal_bench PLUGIN FOLDER [--smoke] [--report FILE] [--hostile [NAME]]
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>

#include "measurements.h"

int main(int argc, char** argv) {
  using namespace orlocal::bench;
  if (argc < 3) {
    std::fputs("usage: orlocal_bench PLUGIN FOLDER [--smoke] [--report FILE] [--hostile [NAME]]\n", stderr);
    return 2;
  }
  Setting setting;
  setting.program = argv[0];
  setting.plugin = argv[1];
  setting.folder = argv[2];
  std::string reportFile;
  bool hostileOnly = false;
  bool peakOnly = false;  // what the program asks of itself, see peakOfFreshProcess
  for (int i = 3; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--smoke") {
      setting.sizes = {1'000};
      setting.rounds = 2;
      setting.smoke = true;
    } else if (word == "--hostile") {
      hostileOnly = true;
      if (i + 1 < argc && argv[i + 1][0] != '-') { setting.only = argv[++i]; }
    } else if (word == "--peak") {
      peakOnly = true;
    } else if (word == "--report" && i + 1 < argc) {
      reportFile = argv[++i];
    } else {
      std::fprintf(stderr, "orlocal_bench: unknown word %s\n", word.c_str());
      return 2;
    }
  }
  try {
    setenv("TZ", "Europe/Berlin", 1);
    setenv("ORLOCAL_NOW", "2026-11-02T08:00:00Z", 1);
    if (peakOnly) {
      printPeakOfReading(setting);
      return 0;
    }
    std::filesystem::remove_all(setting.folder);
    std::filesystem::create_directories(setting.folder);
    Report report;
    if (hostileOnly) {
      measureHostile(report, setting);
      return 0;
    }
    // Everything that forks comes first: the parent must not have started the plug-in.
    measureHostile(report, setting);
    measureReading(report, setting);
    measureSaving(report, setting);
    measureNotices(report, setting);
    measureCallOverhead(report, setting);
    if (!reportFile.empty()) { std::ofstream(reportFile) << report.markdown(); }
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "orlocal_bench: %s\n", problem.what());
    return 1;
  }
  return 0;
}
