#pragma once

#include <chrono>
#include <cstdint>

#include "base/civil_date.h"
#include "store/time/time.h"

namespace orlocal::store {

/// Seconds of a wall clock since 1970-01-01 00:00:00 on it. Only within this layer, where rules are arithmetic.
using LocalSeconds = std::int64_t;
/// Days since 1970-01-01 on a wall clock.
using DayNumber = std::int64_t;

constexpr LocalSeconds kSecondsPerDay = 86400;
/// The last second of the year 9999; there is nothing after it.
constexpr LocalSeconds kLastLocalSecond = 253402300799;

inline LocalSeconds localSeconds(LocalTime time) { return time - LocalTime(); }
LocalTime localTime(LocalSeconds seconds);
/// Rounds down, also before 1970.
constexpr DayNumber dayOf(LocalSeconds seconds) { return floorDiv(seconds, kSecondsPerDay); }

std::chrono::year_month_day dateOf(DayNumber day);
DayNumber dayNumber(int year, int month, int day);
/// 0 Sunday to 6 Saturday.
int weekDayOf(DayNumber day);
int yearLength(int year);

/// A week's number in the year that has its middle day, from the front (1…) and from the back (-1…); ISO's when weeks
/// start on Monday (1).
struct WeekNumber {
  int fromFront, fromBack;
};
WeekNumber weekNumberOf(DayNumber day, int weekStart);

}  // namespace orlocal::store
