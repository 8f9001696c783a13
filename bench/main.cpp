// Measures the built plug-in, each thing beside a floor from the same run. Usage:
//   orlocal_bench PLUGIN FOLDER [--smoke] [--only PART] [--sizes N,N] [--report FILE] [--hostile [NAME]]
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "measurements.h"

namespace {

using namespace orlocal::bench;

struct Part {
  const char* name;
  void (*measure)(Report&, const Setting&);
};

// Everything that forks comes first: the parent must not have started the plug-in.
constexpr Part kParts[] = {
    {"hostile", measureHostile}, {"reading", measureReading},    {"saving", measureSaving},
    {"notices", measureNotices}, {"calls", measureCallOverhead},
};

/// The numbers between commas.
std::vector<std::size_t> sizesIn(const std::string& list) {
  std::vector<std::size_t> sizes;
  std::istringstream pieces(list);
  for (std::string piece; std::getline(pieces, piece, ',');) { sizes.push_back(std::stoul(piece)); }
  return sizes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs(
        "usage: orlocal_bench PLUGIN FOLDER [--smoke] [--only PART] [--sizes N,N] [--report FILE] [--hostile [NAME]]\n",
        stderr);
    return 2;
  }
  Setting setting;
  setting.program = argv[0];
  setting.plugin = argv[1];
  setting.folder = argv[2];
  std::string reportFile;
  bool hostileOnly = false;
  std::string onlyPart;
  bool peakOnly = false;  // what the program asks of itself, see peakOfFreshProcess
  for (int i = 3; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--smoke") {
      setting.sizes = {1'000};
      setting.rounds = 2;
      setting.smoke = true;
    } else if (word == "--sizes" && i + 1 < argc) {
      setting.sizes = sizesIn(argv[++i]);
    } else if (word == "--only" && i + 1 < argc) {
      onlyPart = argv[++i];
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
    bool any = false;
    for (const Part& part : kParts) {
      if (!onlyPart.empty() && onlyPart != part.name) { continue; }
      part.measure(report, setting);
      any = true;
    }
    if (!any) { throw std::runtime_error("there is no part \"" + onlyPart + "\" to measure"); }
    if (!reportFile.empty()) { std::ofstream(reportFile) << report.markdown(); }
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "orlocal_bench: %s\n", problem.what());
    return 1;
  }
  return 0;
}
