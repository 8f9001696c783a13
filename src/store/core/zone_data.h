#pragma once

#include <string>

#include "base/result.h"

namespace orlocal::store {

class StoreCore;

/// The timeline keeps moments, and moments of zoned times move when a country changes its clocks. Puts every zoned item
/// where the system's zone data has it now, once for each newer version of that data; costs one look-up otherwise.
Status followZoneData(StoreCore& core, const std::string& version);

}  // namespace orlocal::store
