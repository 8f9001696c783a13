#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "store/time/zone_rules.h"

// Which zone the TZID of a calendar file means, from the most to the least trusted reading.
namespace orlocal::store {

/// The IANA name for an IANA name (also behind a vendor's prefix, "/mozilla.org/20050126_1/Europe/Berlin"), a Windows
/// name ("W. Europe Standard Time") or a display name ("(UTC+01:00) Amsterdam, Berlin"); none when it is none of these.
std::optional<std::string> systemZoneOf(std::string_view tzid);

/// The well-known IANA zone whose clock does from 2010 to 2037 what these rules do; none when there is no such zone.
std::optional<std::string> systemZoneByRules(const ZoneRules& rules);

}  // namespace orlocal::store
