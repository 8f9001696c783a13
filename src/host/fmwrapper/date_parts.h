#pragma once

#include <cstdint>

#include "base/civil_date.h"

namespace orlocal::host {

/// Where the system's clock begins: 1 January 1970.
inline constexpr std::int64_t kDayOf1970 = 719163;

/// Days since the last day before year 1, so that 1 January of year 1 is 1.
constexpr std::int64_t dayOf(CivilDate date) { return dayNumberOf(date) + kDayOf1970; }

constexpr CivilDate dateOf(std::int64_t day) { return civilDateOf(day - kDayOf1970); }

static_assert(dayOf({1, 1, 1}) == 1);
static_assert(dayOf({4000, 12, 31}) == 1460970);

}  // namespace orlocal::host
