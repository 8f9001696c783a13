#pragma once

#include <string>
#include <string_view>

#include "base/result.h"

// Zones that a calendar file defines and the system does not have.
namespace orlocal::store {

/// A private zone, ready to be kept and registered.
struct PrivateZone {
  std::string name;       ///< the TZID and a number made from the rules, so that equal names with other rules differ
  std::string vtimezone;  ///< unfolded lines ended with "\n"; its TZID is `name`
};
PrivateZone privateZoneOf(std::string_view tzid, std::string_view vtimezone);

/// `Zone::registerPrivate` with the rules of a VTIMEZONE component (its text, BEGIN to END).
Status registerPrivateZone(const std::string& name, std::string_view vtimezone);
/// `Zone::announcePrivate` with the same.
void announcePrivateZone(std::string name, std::string vtimezone);

}  // namespace orlocal::store
