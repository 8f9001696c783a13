#pragma once

#include <iosfwd>

namespace orlocal::host {

/// Hands `ORLOCAL_NOW` as it stands to everything in this process that asks for the time. One that names no moment is
/// said on `err` and taken away, so that nobody else has to.
void putClockInForce(std::ostream& err);

}  // namespace orlocal::host
