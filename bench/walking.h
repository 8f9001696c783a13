#pragma once

#include <cstddef>

#include "questions.h"

namespace orlocal::bench {

/// Has the plug-in that this process has started answer the range, opens each of its occurrences by position and reads
/// five properties of it. Returns how many there were.
std::size_t walk(const Range& range);

}  // namespace orlocal::bench
