#include "backend/legacy/recurrence_choice.h"

namespace orlocal {

std::shared_ptr<CalRecurrenceRule> makeRecurrenceRule(CalFramework& framework, std::string_view kind,
                                                      const RecurrenceWishes& wishes) {
  const bool nthWeekDay = wishes.dayOfTheWeek >= 1 && wishes.weekOfTheMonth >= -1;
  if (kind == "weekly") {
    return wishes.daysOfTheWeek
               ? framework.initWeeklyRecurrenceWithInterval(wishes.interval, *wishes.daysOfTheWeek, wishes.end)
               : framework.initWeeklyRecurrenceWithInterval(wishes.interval, wishes.end);
  }
  if (kind == "monthly") {
    if (nthWeekDay) {
      return framework.initMonthlyRecurrenceWithInterval(wishes.interval, wishes.dayOfTheWeek, wishes.weekOfTheMonth,
                                                         wishes.end);
    }
    return wishes.daysOfTheMonth
               ? framework.initMonthlyRecurrenceWithInterval(wishes.interval, *wishes.daysOfTheMonth, wishes.end)
               : framework.initMonthlyRecurrenceWithInterval(wishes.interval, wishes.end);
  }
  if (kind == "yearly") {
    if (nthWeekDay && wishes.monthsOfTheYear) {
      return framework.initYearlyRecurrenceWithInterval(wishes.interval, wishes.dayOfTheWeek, wishes.weekOfTheMonth,
                                                        *wishes.monthsOfTheYear, wishes.end);
    }
    return wishes.monthsOfTheYear
               ? framework.initYearlyRecurrenceWithInterval(wishes.interval, *wishes.monthsOfTheYear, wishes.end)
               : framework.initYearlyRecurrenceWithInterval(wishes.interval, wishes.end);
  }
  return framework.initDailyRecurrenceWithInterval(wishes.interval, wishes.end);
}

}  // namespace orlocal
