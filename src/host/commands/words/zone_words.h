#pragma once

#include <string>

#include "store/time/zone.h"

namespace orlocal::host {

/// The zone of that name; the user's for none.
store::Zone zoneAskedFor(const std::string& name);

/// What is wrong with a zone's name, in a sentence; empty when there is such a zone, as the command line's checks want
/// it.
std::string objectionToZone(const std::string& name);

}  // namespace orlocal::host
