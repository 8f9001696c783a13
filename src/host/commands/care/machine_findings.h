#pragma once

#include <string>

#include "base/settings.h"
#include "host/commands/care/finding.h"
#include "store/time/time.h"
#include "store/time/zone.h"

namespace orlocal::host {

/// The default zone, and whether the plug-in's functions take dates in it: `partHours` is the setting that lets them.
/// `now` and the years around it are looked at.
Findings zoneFindings(const store::Zone& zone, bool partHours, store::Moment now);

/// The clock, where it is pinned, and what could not be understood in settings files.
Findings settingsFindings(const Settings& settings);

}  // namespace orlocal::host
