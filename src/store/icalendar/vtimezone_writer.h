#pragma once

#include <string>

namespace orlocal::store {

/// Appends a VTIMEZONE (RFC 5545, 3.6.5) with everything the zone's clock does from the beginning of `fromYear` on; a
/// private zone as it came. Nothing for a zone that is not known.
void writeZone(std::string& out, const std::string& name, int fromYear);

}  // namespace orlocal::store
