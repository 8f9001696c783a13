#include <utility>

#include "platform/calendar_store.h"
#include "platform/linux/calendar_store_linux.h"
#include "platform/linux/calendar_store_linux_items.h"
#include "platform/linux/platform_linux.h"
#include "store/time/zone.h"

namespace orlocal {
namespace {

constexpr int kLastWeek = -1, kWeeksOfAMonth = 5;

template <class Object>
std::shared_ptr<Object> newItem(const std::shared_ptr<StoreAccess>& access, store::ItemKind kind) {
  auto item = std::make_shared<store::Item>();
  item->kind = kind;
  if constexpr (std::is_same_v<Object, EventObject>) {
    return std::make_shared<Object>(access, std::move(item), std::nullopt);
  } else {
    return std::make_shared<Object>(access, std::move(item));
  }
}

class LinuxCalendarStoreFramework final : public CalendarStoreFramework {
 public:
  explicit LinuxCalendarStoreFramework(std::shared_ptr<StoreAccess> access) : m_access(std::move(access)) {}

  std::shared_ptr<CalCalendarStore> defaultCalendarStore() override {
    if (!m_store) m_store = std::make_shared<CalendarStoreObject>(m_access);
    return m_store;
  }

  std::shared_ptr<CalCalendar> calendar() override {
    return std::make_shared<CalCalendarObject>(std::make_shared<CalendarObject>(m_access, store::Calendar()));
  }
  std::shared_ptr<CalEvent> event() override {
    return std::make_shared<CalEventObject>(m_access, newItem<EventObject>(m_access, store::ItemKind::kEvent));
  }
  std::shared_ptr<CalTask> task() override {
    return std::make_shared<CalTaskObject>(m_access, newItem<ReminderObject>(m_access, store::ItemKind::kReminder));
  }
  std::shared_ptr<CalAlarm> alarm() override {
    return std::make_shared<CalAlarmObject>(std::make_shared<AlarmObject>(store::Alarm(), store::now()), true);
  }

  End recurrenceEndWithEndDate(Date date) override {
    return std::make_shared<CalRecurrenceEndObject>(std::make_shared<RecurrenceEndObject>(date));
  }
  End recurrenceEndWithOccurrenceCount(int count) override {
    if (count < 1) return nullptr;
    return std::make_shared<CalRecurrenceEndObject>(std::make_shared<RecurrenceEndObject>(count));
  }

  Rule initDailyRecurrenceWithInterval(int interval, const End& end) override {
    return made(parts(EKRecurrenceFrequency::kDaily, interval, end));
  }
  Rule initWeeklyRecurrenceWithInterval(int interval, const End& end) override {
    return made(parts(EKRecurrenceFrequency::kWeekly, interval, end));
  }
  Rule initWeeklyRecurrenceWithInterval(int interval, const Numbers& days, const End& end) override {
    auto asked = parts(EKRecurrenceFrequency::kWeekly, interval, end);
    asked.daysOfTheWeek.emplace();
    for (const long day : days) {
      if (day < 1 || day > 7) return nullptr;
      asked.daysOfTheWeek->push_back(std::make_shared<DayOfWeekObject>(day, 0));
    }
    return days.empty() ? nullptr : made(asked);
  }
  Rule initMonthlyRecurrenceWithInterval(int interval, const End& end) override {
    return made(parts(EKRecurrenceFrequency::kMonthly, interval, end));
  }
  Rule initMonthlyRecurrenceWithInterval(int interval, const Numbers& days, const End& end) override {
    auto asked = parts(EKRecurrenceFrequency::kMonthly, interval, end);
    asked.daysOfTheMonth = days;
    return days.empty() ? nullptr : made(asked);
  }
  Rule initMonthlyRecurrenceWithInterval(int interval, int day, int week, const End& end) override {
    return madeOnNthDay(parts(EKRecurrenceFrequency::kMonthly, interval, end), day, week);
  }
  Rule initYearlyRecurrenceWithInterval(int interval, const End& end) override {
    return made(parts(EKRecurrenceFrequency::kYearly, interval, end));
  }
  Rule initYearlyRecurrenceWithInterval(int interval, const Numbers& months, const End& end) override {
    auto asked = parts(EKRecurrenceFrequency::kYearly, interval, end);
    asked.monthsOfTheYear = months;
    return months.empty() ? nullptr : made(asked);
  }
  Rule initYearlyRecurrenceWithInterval(int interval, int day, int week, const Numbers& months,
                                        const End& end) override {
    auto asked = parts(EKRecurrenceFrequency::kYearly, interval, end);
    asked.monthsOfTheYear = months;
    return months.empty() ? nullptr : madeOnNthDay(std::move(asked), day, week);
  }

 private:
  static EKRecurrenceRuleParts parts(EKRecurrenceFrequency frequency, int interval, const End& end) {
    EKRecurrenceRuleParts parts;
    parts.frequency = frequency;
    parts.interval = interval;
    if (const auto ours = std::dynamic_pointer_cast<CalRecurrenceEndObject>(end)) parts.end = ours->end();
    return parts;
  }

  Rule made(const EKRecurrenceRuleParts& parts) const {
    auto rule = makeRecurrenceRule(parts, m_access->viewer()).rule;
    return rule ? std::make_shared<CalRecurrenceRuleObject>(std::move(rule)) : nullptr;
  }

  Rule madeOnNthDay(EKRecurrenceRuleParts parts, int day, int week) const {
    if (day < 1 || day > 7 || week < kLastWeek || week == 0 || week > kWeeksOfAMonth) return nullptr;
    parts.daysOfTheWeek.emplace(1, std::make_shared<DayOfWeekObject>(day, week));
    return made(parts);
  }

  std::shared_ptr<StoreAccess> m_access;
  std::shared_ptr<CalCalendarStore> m_store;
};

}  // namespace

std::unique_ptr<CalendarStoreFramework> makeCalendarStoreFramework(std::shared_ptr<StoreAccess> access) {
  return std::make_unique<LinuxCalendarStoreFramework>(std::move(access));
}

}  // namespace orlocal
