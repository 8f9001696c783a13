#pragma once

#include <chrono>
#include <cstdint>

// Dates of the Gregorian calendar, extended both ways, in years beyond those of std::chrono, which end at 32767: the
// calendar repeats itself every 400 years.
namespace orlocal {

/// Month and day from 1.
struct CivilDate {
  std::int64_t year = 0;
  int month = 0;
  int day = 0;
};

constexpr std::int64_t floorDiv(std::int64_t a, std::int64_t b) {
  return a / b - ((a % b != 0 && (a < 0) != (b < 0)) ? 1 : 0);
}

constexpr std::int64_t kYearsOfEra = 400;
constexpr std::int64_t kDaysOfEra = 146'097;

/// Days since 1970-01-01 of a date that exists.
constexpr std::int64_t dayNumberOf(CivilDate date) {
  const std::int64_t era = floorDiv(date.year, kYearsOfEra);
  const std::chrono::year_month_day inEra(std::chrono::year(static_cast<int>(date.year - era * kYearsOfEra)),
                                          std::chrono::month(static_cast<unsigned>(date.month)),
                                          std::chrono::day(static_cast<unsigned>(date.day)));
  return std::chrono::sys_days(inEra).time_since_epoch().count() + era * kDaysOfEra;
}

constexpr CivilDate civilDateOf(std::int64_t dayNumber) {
  const std::int64_t era = floorDiv(dayNumber, kDaysOfEra);
  const std::chrono::year_month_day inEra(std::chrono::sys_days(std::chrono::days(dayNumber - era * kDaysOfEra)));
  return {static_cast<int>(inEra.year()) + era * kYearsOfEra, static_cast<int>(static_cast<unsigned>(inEra.month())),
          static_cast<int>(static_cast<unsigned>(inEra.day()))};
}

/// A date with a time of day.
struct CivilDateTime {
  CivilDate date;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

/// `local` is in seconds since 1970-01-01 00:00:00 on the same wall clock.
constexpr CivilDateTime civilDateTimeOf(std::int64_t local) {
  constexpr std::int64_t kSecondsOfDay = 86'400;
  const std::int64_t day = floorDiv(local, kSecondsOfDay);
  const auto ofDay = static_cast<int>(local - day * kSecondsOfDay);
  return {civilDateOf(day), ofDay / 3600, ofDay / 60 % 60, ofDay % 60};
}

constexpr int monthLength(std::int64_t year, int month) {
  const std::chrono::year inEra(static_cast<int>(year % kYearsOfEra));
  const auto last = inEra / std::chrono::month(static_cast<unsigned>(month)) / std::chrono::last;
  return static_cast<int>(static_cast<unsigned>(last.day()));
}

static_assert(dayNumberOf({1970, 1, 1}) == 0 && dayNumberOf({2000, 2, 29}) == 11'016);
static_assert(civilDateOf(-719'162).year == 1 && civilDateOf(-719'163).year == 0);

}  // namespace orlocal
