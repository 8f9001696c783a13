#pragma once

#include <cstdint>

namespace orlocal::host {

/// A date taken apart; month and day from 1.
struct DateParts {
  std::int64_t year = 0;
  int month = 0;
  int day = 0;
};

/// Where the system's clock begins: 1 January 1970.
inline constexpr std::int64_t kDayOf1970 = 719163;

constexpr bool isLeapYear(std::int64_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

constexpr int daysOfMonth(std::int64_t year, int month) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && isLeapYear(year) ? 29 : kDays[month - 1];
}

/// Days since the last day before year 1, so that 1 January of year 1 is 1. Counted in years that begin in March, as
/// the leap day then comes last; years before the first are negative and come out right.
constexpr std::int64_t dayOf(DateParts parts) {
  constexpr std::int64_t kDaysOf400Years = 146097;
  const std::int64_t year = parts.year - (parts.month <= 2 ? 1 : 0);
  const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t monthFromMarch = (parts.month + 9) % 12;
  const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + parts.day - 1;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  constexpr std::int64_t kFirstOfMarchOfYearZeroBefore = 305;
  return era * kDaysOf400Years + dayOfEra - kFirstOfMarchOfYearZeroBefore;
}

/// The date of a day from 1 on.
constexpr DateParts partsOf(std::int64_t day) {
  // By the mean length of a year, which is at most one short.
  std::int64_t year = day * 400 / 146097;
  if (year < 1) { year = 1; }
  while (day >= dayOf({year + 1, 1, 1})) { ++year; }
  std::int64_t rest = day - dayOf({year, 1, 1});
  int month = 1;
  while (rest >= daysOfMonth(year, month)) { rest -= daysOfMonth(year, month++); }
  return {year, month, static_cast<int>(rest) + 1};
}

static_assert(dayOf({1, 1, 1}) == 1);
static_assert(dayOf({1970, 1, 1}) == kDayOf1970);
static_assert(dayOf({4000, 12, 31}) == 1460970);

}  // namespace orlocal::host
