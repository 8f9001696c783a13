#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "base/result.h"
#include "host/check/check.h"

namespace orlocal::host {

/// How a check ended.
struct CheckVerdict {
  enum class Kind : std::uint8_t { kPassed, kFailed, kCrashed, kHung, kSkipped };

  Kind kind = Kind::kPassed;
  std::vector<std::string> reasons;  ///< sentences: what does not hold, how it ended, why it was skipped
  std::string step;                  ///< what was done last, of one that crashed or hung
  double seconds = 0;

  bool isGood() const { return kind == Kind::kPassed || kind == Kind::kSkipped; }
};
/// "passed", "failed", "crashed", "hung", "skipped".
const char* wordFor(CheckVerdict::Kind kind);

struct CheckSetting {
  std::filesystem::path plugin;  ///< absolute
  std::uint64_t seed = 1;
  std::chrono::milliseconds patience{60'000};
};

/// Runs it in a process of its own, with a home folder, an environment and a calendar store of its own, all of which
/// are gone afterwards. What the plug-in prints is thrown away. Fails when there is no process or
/// no folder to be had.
Result<CheckVerdict> runCheck(const check::Check& check, const CheckSetting& setting);

}  // namespace orlocal::host
