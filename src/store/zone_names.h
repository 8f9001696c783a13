#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/result.h"
#include "store/zone_rules.h"

// Which zone the TZID of a calendar file means, from the most to the least trusted reading.
namespace orlocal::store {

/// The IANA name for an IANA name (also behind a vendor's prefix, "/mozilla.org/20050126_1/Europe/Berlin"), a Windows
/// name ("W. Europe Standard Time") or a display name ("(UTC+01:00) Amsterdam, Berlin"); none when it is none of these.
std::optional<std::string> systemZoneOf(std::string_view tzid);

/// The well-known IANA zone whose clock does from 2010 to 2037 what these rules do; none when there is no such zone.
std::optional<std::string> systemZoneByRules(const ZoneRules& rules);

/// A private zone, ready to be kept and registered.
struct PrivateZone {
  std::string name;       ///< the TZID and a number made from the rules, so that equal names with other rules differ
  std::string vtimezone;  ///< unfolded lines ended with "\n"; its TZID is `name`
};
PrivateZone privateZoneOf(std::string_view tzid, std::string_view vtimezone);

/// FNV-1a; names things by their content. The same everywhere and for ever.
std::uint64_t contentHash(std::string_view text);

}  // namespace orlocal::store
