#pragma once

#include <memory>

#include "platform/eventkit.h"
#include "platform/exception.h"

namespace orlocal::fakes {

class FakeDayOfWeek : public EKRecurrenceDayOfWeek {
 public:
  explicit FakeDayOfWeek(long day) : m_day(day) {}
  long dayOfTheWeek() const override { return m_day; }
  long weekNumber() const override { return 0; }

 private:
  long m_day;
};

/// A calendar platform that makes weekdays and nothing else. A day that a test asks for throws.
class FakeWeekdays : public EventKit {
 public:
  long m_dayThatThrows = 0;

  std::shared_ptr<EKRecurrenceDayOfWeek> dayOfWeek(long day) override {
    if (m_dayThatThrows != 0 && day == m_dayThatThrows) throw Exception("NSInvalidArgumentException", "no such day");
    if (day < 1 || day > 7) return nullptr;
    return std::make_shared<FakeDayOfWeek>(day);
  }

  std::shared_ptr<EKEventStore> eventStoreWithAccessToEntityTypes(unsigned) override { return nullptr; }
  std::shared_ptr<EKCalendar> calendarForEntityType(EKEntityType, const std::shared_ptr<EKEventStore>&) override {
    return nullptr;
  }
  std::shared_ptr<EKEvent> eventWithEventStore(const std::shared_ptr<EKEventStore>&) override { return nullptr; }
  std::shared_ptr<EKReminder> reminderWithEventStore(const std::shared_ptr<EKEventStore>&) override { return nullptr; }
  std::shared_ptr<EKAlarm> alarmWithAbsoluteDate(Date) override { return nullptr; }
  std::shared_ptr<EKAlarm> alarmWithRelativeOffset(double) override { return nullptr; }
  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithEndDate(Date) override { return nullptr; }
  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithOccurrenceCount(int) override { return nullptr; }
  EKRecurrenceRuleMade recurrenceRule(const EKRecurrenceRuleParts&) override { return {}; }
};

}  // namespace orlocal::fakes
