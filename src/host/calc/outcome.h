#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

/// What bounds a calculation. What runs into a bound is `?`, with the reason among the failures.
struct Limits {
  std::size_t iterations = 50'000;            ///< of one While, as in the host
  int depth = 1'000;                          ///< of calls within calls, through Evaluate too
  std::size_t textLength = 64 * 1024 * 1024;  ///< UTF-16 units of one text
};

/// What a calculation came to.
struct Outcome {
  Value value;
  std::vector<std::string> failures;  ///< why calls failed, in order; empty for most calculations
};

}  // namespace orlocal::host::calc
