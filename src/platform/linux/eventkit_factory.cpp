#include <cstdlib>
#include <utility>

#include "platform/eventkit.h"
#include "platform/linux/eventkit_alarm.h"
#include "platform/linux/eventkit_calendar.h"
#include "platform/linux/eventkit_event.h"
#include "platform/linux/eventkit_recurrence.h"
#include "platform/linux/eventkit_reminder.h"
#include "platform/linux/eventkit_store.h"
#include "platform/linux/platform.h"
#include "store/time/zone.h"

namespace orlocal {
namespace {

constexpr long kDaysOfAWeek = 7, kMostWeeks = 53;

std::shared_ptr<const store::Item> newItem(store::ItemKind kind) {
  auto item = std::make_shared<store::Item>();
  item->kind = kind;
  return item;
}

class LinuxEventKit final : public EventKit {
 public:
  explicit LinuxEventKit(std::shared_ptr<StoreAccess> access) : m_access(std::move(access)) {}

  std::shared_ptr<EKEventStore> eventStoreWithAccessToEntityTypes(unsigned) override {
    return std::make_shared<EventStoreObject>(m_access);
  }

  std::shared_ptr<EKCalendar> calendarForEntityType(EKEntityType type,
                                                    const std::shared_ptr<EKEventStore>& store) override {
    if (!store) { return nullptr; }
    store::Calendar calendar;
    calendar.kind = type == EKEntityType::kEvent ? store::CalendarKind::kEvents : store::CalendarKind::kReminders;
    return std::make_shared<CalendarObject>(m_access, std::move(calendar));
  }

  std::shared_ptr<EKEvent> eventWithEventStore(const std::shared_ptr<EKEventStore>& store) override {
    if (!store) { return nullptr; }
    return std::make_shared<EventObject>(m_access, newItem(store::ItemKind::kEvent), std::nullopt);
  }

  std::shared_ptr<EKReminder> reminderWithEventStore(const std::shared_ptr<EKEventStore>& store) override {
    if (!store) { return nullptr; }
    return std::make_shared<ReminderObject>(m_access, newItem(store::ItemKind::kReminder));
  }

  std::shared_ptr<EKAlarm> alarmWithAbsoluteDate(Date date) override {
    auto alarm = std::make_shared<AlarmObject>(store::Alarm(), store::now());
    alarm->setAbsoluteDate(date);
    return alarm;
  }

  std::shared_ptr<EKAlarm> alarmWithRelativeOffset(double offset) override {
    auto alarm = std::make_shared<AlarmObject>(store::Alarm(), store::now());
    alarm->setRelativeOffset(offset);
    return alarm;
  }

  std::shared_ptr<EKRecurrenceDayOfWeek> dayOfWeek(long day, long weekNumber) override {
    if (day < 1 || day > kDaysOfAWeek || std::abs(weekNumber) > kMostWeeks) { return nullptr; }
    return std::make_shared<DayOfWeekObject>(day, weekNumber);
  }

  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithEndDate(Date date) override {
    return std::make_shared<RecurrenceEndObject>(date);
  }

  std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithOccurrenceCount(int count) override {
    return count > 0 ? std::make_shared<RecurrenceEndObject>(count) : nullptr;
  }

  EKRecurrenceRuleMade recurrenceRule(const EKRecurrenceRuleParts& parts) override {
    return makeRecurrenceRule(parts, m_access->viewer());
  }

 private:
  std::shared_ptr<StoreAccess> m_access;
};

}  // namespace

std::unique_ptr<EventKit> makeEventKit(std::shared_ptr<StoreAccess> access) {
  return std::make_unique<LinuxEventKit>(std::move(access));
}

}  // namespace orlocal
