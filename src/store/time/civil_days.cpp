#include "store/time/civil_days.h"

namespace orlocal::store {

namespace chrono = std::chrono;

LocalTime localTime(LocalSeconds seconds) {
  // By the date's own arithmetic: adding to an epoch walks the years between.
  const CivilDateTime parts = civilDateTimeOf(seconds);
  return LocalTime(parts.date.year, parts.date.month, parts.date.day, parts.hour, parts.minute, parts.second);
}

chrono::year_month_day dateOf(DayNumber day) {
  return chrono::year_month_day(chrono::sys_days(chrono::days(static_cast<int>(day))));
}

DayNumber dayNumber(int year, int month, int day) {
  const chrono::year_month_day date(chrono::year(year), chrono::month(static_cast<unsigned>(month)),
                                    chrono::day(static_cast<unsigned>(day)));
  return chrono::sys_days(date).time_since_epoch().count();
}

int weekDayOf(DayNumber day) {
  return static_cast<int>(chrono::weekday(chrono::sys_days(chrono::days(day))).c_encoding());
}

int yearLength(int year) { return chrono::year(year).is_leap() ? 366 : 365; }

WeekNumber weekNumberOf(DayNumber day, int weekStart) {
  const DayNumber first = day - (weekDayOf(day) - weekStart + 7) % 7;
  const DayNumber middle = first + 3;  // the year that has it has the week
  const int year = static_cast<int>(dateOf(middle).year());
  const int fromFront = static_cast<int>((middle - dayNumber(year, 1, 1)) / 7) + 1;
  const int fromBack = static_cast<int>((dayNumber(year, 12, 31) - middle) / 7) + 1;
  return {fromFront, -fromBack};
}

}  // namespace orlocal::store
