#pragma once

#include <string>

#include "results.h"

namespace orlocal::bench {

/// How it is decided that something became slower or faster, in a sentence for the help.
std::string ruleOfChange();

/// What changed from `before` to `now`, as text.
std::string changesSince(const Results& before, const Results& now);

}  // namespace orlocal::bench
