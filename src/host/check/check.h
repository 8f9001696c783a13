#pragma once

#include <cstdint>
#include <vector>

namespace orlocal::host::check {

class Trial;

/// How much is asked of a plug-in; each level asks what those before it do, too.
enum class Level : std::uint8_t {
  kBasic,   ///< what a host breaks without
  kUsual,   ///< what a host and its users rely on
  kStrict,  ///< what a careful author sees to
};

/// One thing that a plug-in is held to.
struct Check {
  const char* name;      ///< of small letters and dashes, for --only
  const char* sentence;  ///< what holds of a plug-in that passes
  Level level;
  void (*run)(Trial&);
};

/// All of them, in the order in which they are told.
std::vector<Check> allChecks();

// Those of one subject each; a source for each.
std::vector<Check> fileChecks();
std::vector<Check> loadingChecks();
std::vector<Check> stringChecks();
std::vector<Check> startChecks();
std::vector<Check> messageChecks();
std::vector<Check> registrationChecks();
std::vector<Check> stepChecks();
std::vector<Check> callChecks();
std::vector<Check> keepingChecks();
std::vector<Check> hostFailureChecks();
std::vector<Check> surroundingsChecks();

}  // namespace orlocal::host::check
