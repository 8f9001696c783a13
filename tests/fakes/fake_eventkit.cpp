#include <algorithm>

#include "fakes/fake_event_store.h"

namespace orlocal::fakes {
namespace {

bool anyOutside(const std::optional<std::vector<long>>& numbers, long most, bool negativeToo) {
  if (!numbers) { return false; }
  return std::any_of(numbers->begin(), numbers->end(),
                     [=](long number) { return number == 0 || number > most || number < (negativeToo ? -most : 1); });
}

/// RFC 5545, 3.3.10, as far as the back ends can go against it.
const char* objectionTo(const EKRecurrenceRuleParts& parts) {
  if (parts.interval < 1) { return "The interval is not positive."; }
  if (anyOutside(parts.daysOfTheMonth, 31, true)) { return "There is no such day of the month."; }
  if (anyOutside(parts.monthsOfTheYear, 12, false)) { return "There is no such month."; }
  if (parts.daysOfTheMonth && !parts.daysOfTheMonth->empty() && parts.frequency == EKRecurrenceFrequency::kWeekly) {
    return "A weekly rule has no days of the month.";
  }
  return nullptr;
}

}  // namespace

std::shared_ptr<EKEventStore> FakeEventKit::eventStoreWithAccessToEntityTypes(unsigned mask) {
  m_mask = mask;
  return m_store;
}

std::shared_ptr<EKCalendar> FakeEventKit::calendarForEntityType(EKEntityType type,
                                                                const std::shared_ptr<EKEventStore>&) {
  auto calendar = std::make_shared<FakeCalendar>();
  calendar->m_kind = type;
  return calendar;
}

std::shared_ptr<EKEvent> FakeEventKit::eventWithEventStore(const std::shared_ptr<EKEventStore>&) {
  return std::make_shared<FakeEvent>();
}

std::shared_ptr<EKReminder> FakeEventKit::reminderWithEventStore(const std::shared_ptr<EKEventStore>&) {
  return std::make_shared<FakeReminder>(m_store ? m_store->m_now : fakeNow());
}

std::shared_ptr<EKAlarm> FakeEventKit::alarmWithAbsoluteDate(Date date) {
  auto alarm = std::make_shared<FakeAlarm>();
  alarm->m_absoluteDate = date;
  return alarm;
}

std::shared_ptr<EKAlarm> FakeEventKit::alarmWithRelativeOffset(double seconds) {
  auto alarm = std::make_shared<FakeAlarm>();
  alarm->m_relativeOffset = seconds;
  return alarm;
}

std::shared_ptr<EKRecurrenceDayOfWeek> FakeEventKit::dayOfWeek(long day, long weekNumber) {
  if (day < 1 || day > 7 || weekNumber < -53 || weekNumber > 53) { return nullptr; }
  return std::make_shared<FakeDayOfWeek>(day, weekNumber);
}

std::shared_ptr<EKRecurrenceEnd> FakeEventKit::recurrenceEndWithEndDate(Date date) {
  auto end = std::make_shared<FakeRecurrenceEnd>();
  end->m_endDate = date;
  return end;
}

std::shared_ptr<EKRecurrenceEnd> FakeEventKit::recurrenceEndWithOccurrenceCount(int count) {
  auto end = std::make_shared<FakeRecurrenceEnd>();
  end->m_count = count;
  return end;
}

EKRecurrenceRuleMade FakeEventKit::recurrenceRule(const EKRecurrenceRuleParts& parts) {
  if (const char* objection = objectionTo(parts)) { return {nullptr, Error{"No such rule.", objection}}; }
  auto rule = std::make_shared<FakeRecurrenceRule>();
  rule->m_frequency = static_cast<int>(parts.frequency);
  rule->m_interval = parts.interval;
  if (parts.daysOfTheWeek) { rule->m_daysOfTheWeek = *parts.daysOfTheWeek; }
  if (parts.daysOfTheMonth) { rule->m_daysOfTheMonth = *parts.daysOfTheMonth; }
  if (parts.monthsOfTheYear) { rule->m_monthsOfTheYear = *parts.monthsOfTheYear; }
  rule->m_end = parts.end;
  return {rule, std::nullopt};
}

}  // namespace orlocal::fakes
