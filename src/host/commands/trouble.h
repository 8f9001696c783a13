#pragma once

#include <ostream>
#include <string_view>

#include "host/calc/rendering.h"

namespace orlocal::host {

/// Writes what went wrong, after the place that it is about, as a line of its own. Both may quote anything (paths,
/// names of calendars, what a plug-in said): it cannot steer the terminal.
inline void tellTrouble(std::ostream& err, std::string_view sentence, std::string_view place = "orlocal") {
  err << calc::harmless(place) << ": " << calc::harmlessLines(sentence) << std::endl;
}

}  // namespace orlocal::host
