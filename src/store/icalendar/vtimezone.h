#pragma once

#include <string>
#include <string_view>

#include "base/result.h"
#include "store/time/zone_rules.h"

// VTIMEZONE (RFC 5545, 3.6.5).
namespace orlocal::store {

/// The rules of a VTIMEZONE component, BEGIN to END. Fails with the reason when there is no usable observance in it.
Result<ZoneRules> rulesOfVTimeZone(std::string_view text);

}  // namespace orlocal::store
