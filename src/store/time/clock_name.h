#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "store/time/time.h"

namespace orlocal::store {

/// The name of the clock that a time is read on, as the store keeps it: "=date", "=floating", "=utc", or the zone's
/// name.
std::string_view clockName(const CalendarTime& time);
/// None for a clock that there is not.
std::optional<CalendarTime> timeOnClock(std::int64_t seconds, std::string_view clock);

}  // namespace orlocal::store
