#pragma once

#include <memory>
#include <string_view>

#include "platform/zone.h"
#include "store/time/zone.h"

namespace orlocal {

std::shared_ptr<const TimeZone> makeTimeZone(store::Zone zone);

/// The zone of that IANA or private name; null when there is no such zone. Zones asked for once are kept.
std::shared_ptr<const TimeZone> timeZoneNamed(std::string_view name);

}  // namespace orlocal
