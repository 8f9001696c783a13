#pragma once

#include <string>

#include "results.h"

namespace orlocal::bench {

/// A picture (SVG) of how things grow with the store: a panel for each, in which the cost of one row of each side is
/// drawn over the number of events, both axes logarithmic. A level curve costs what its answer costs. It is readable on
/// light and dark ground.
std::string growthCurves(const Results& results);

}  // namespace orlocal::bench
