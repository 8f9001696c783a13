#include <algorithm>

#include "fakes/fake_calendar_store.h"

namespace orlocal::fakes {
namespace {

using Framework = FakeCalendarStoreFramework;

bool allWithin(const Framework::Numbers& numbers, long lowest, long highest) {
  return !numbers.empty() &&
         std::ranges::all_of(numbers, [&](long n) { return n != 0 && n >= lowest && n <= highest; });
}

std::shared_ptr<FakeCalRecurrenceRule> rule(CalRecurrenceType type, int interval, const Framework::End& end) {
  if (interval < 1) return nullptr;
  auto made = std::make_shared<FakeCalRecurrenceRule>();
  made->m_recurrenceType = static_cast<int>(type);
  made->m_recurrenceInterval = interval;
  made->m_end = end;
  return made;
}

std::shared_ptr<FakeCalRecurrenceRule> nthDayRule(CalRecurrenceType type, int interval, int day, int week,
                                                  const Framework::End& end) {
  if (day < 1 || day > 7 || week < -1 || week == 0 || week > 5) return nullptr;
  auto made = rule(type, interval, end);
  if (made) made->m_nthWeekDays.push_back(std::make_shared<FakeCalNthWeekDay>(week, day));
  return made;
}

}  // namespace

std::shared_ptr<CalCalendar> Framework::calendar() { return std::make_shared<FakeCalCalendar>(); }
std::shared_ptr<CalEvent> Framework::event() { return std::make_shared<FakeCalEvent>(); }
std::shared_ptr<CalTask> Framework::task() { return std::make_shared<FakeCalTask>(); }
std::shared_ptr<CalAlarm> Framework::alarm() { return std::make_shared<FakeCalAlarm>(); }

Framework::End Framework::recurrenceEndWithEndDate(Date date) {
  auto end = std::make_shared<FakeCalRecurrenceEnd>();
  end->m_endDate = date;
  return end;
}

Framework::End Framework::recurrenceEndWithOccurrenceCount(int count) {
  if (count < 1) return nullptr;
  auto end = std::make_shared<FakeCalRecurrenceEnd>();
  end->m_occurrenceCount = count;
  return end;
}

Framework::Rule Framework::initDailyRecurrenceWithInterval(int interval, const End& end) {
  return rule(CalRecurrenceType::kDaily, interval, end);
}

Framework::Rule Framework::initWeeklyRecurrenceWithInterval(int interval, const End& end) {
  return rule(CalRecurrenceType::kWeekly, interval, end);
}

Framework::Rule Framework::initWeeklyRecurrenceWithInterval(int interval, const Numbers& days, const End& end) {
  auto made = rule(CalRecurrenceType::kWeekly, interval, end);
  if (!made || !allWithin(days, 1, 7)) return nullptr;
  made->m_daysOfTheWeek = days;
  return made;
}

Framework::Rule Framework::initMonthlyRecurrenceWithInterval(int interval, const End& end) {
  return rule(CalRecurrenceType::kMonthly, interval, end);
}

Framework::Rule Framework::initMonthlyRecurrenceWithInterval(int interval, const Numbers& days, const End& end) {
  auto made = rule(CalRecurrenceType::kMonthly, interval, end);
  if (!made || !allWithin(days, -31, 31)) return nullptr;
  made->m_daysOfTheMonth = days;
  return made;
}

Framework::Rule Framework::initMonthlyRecurrenceWithInterval(int interval, int day, int week, const End& end) {
  return nthDayRule(CalRecurrenceType::kMonthly, interval, day, week, end);
}

Framework::Rule Framework::initYearlyRecurrenceWithInterval(int interval, const End& end) {
  return rule(CalRecurrenceType::kYearly, interval, end);
}

Framework::Rule Framework::initYearlyRecurrenceWithInterval(int interval, const Numbers& months, const End& end) {
  auto made = rule(CalRecurrenceType::kYearly, interval, end);
  if (!made || !allWithin(months, 1, 12)) return nullptr;
  made->m_monthsOfTheYear = months;
  return made;
}

Framework::Rule Framework::initYearlyRecurrenceWithInterval(int interval, int day, int week, const Numbers& months,
                                                            const End& end) {
  auto made = nthDayRule(CalRecurrenceType::kYearly, interval, day, week, end);
  if (!made || !allWithin(months, 1, 12)) return nullptr;
  made->m_monthsOfTheYear = months;
  return made;
}

}  // namespace orlocal::fakes
