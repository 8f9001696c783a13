#include "platform/legacy/cal_framework_face.h"

#include <utility>

#include "platform/legacy/cal_store_face.h"
#include "platform/legacy/calendar_face.h"
#include "platform/legacy/event_face.h"
#include "platform/legacy/recurrence_faces.h"
#include "platform/legacy/task_face.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

constexpr int kLastWeek = -1, kWeeksOfAMonth = 5;

class CalFrameworkFace final : public CalFramework {
 public:
  CalFrameworkFace(Platform& platform, Date (*now)()) : m_surroundings{platform, now} {}

  std::shared_ptr<CalCalendarStore> defaultCalendarStore() override {
    if (!m_face) { m_face = std::make_shared<CalCalendarStoreFace>(store(), m_surroundings); }
    return m_face;
  }

  std::shared_ptr<CalCalendar> calendar() override {
    return faceOf<CalendarFace>(kit().calendarForEntityType(EKEntityType::kEvent, store()));
  }
  std::shared_ptr<CalEvent> event() override {
    return faceOf<EventFace>(kit().eventWithEventStore(store()), m_surroundings);
  }
  std::shared_ptr<CalTask> task() override {
    return faceOf<TaskFace>(kit().reminderWithEventStore(store()), m_surroundings);
  }
  std::shared_ptr<CalAlarm> alarm() override { return faceOf<AlarmFace>(kit().alarmWithRelativeOffset(0), true); }

  End recurrenceEndWithEndDate(Date date) override {
    return faceOf<RecurrenceEndFace>(kit().recurrenceEndWithEndDate(date));
  }
  End recurrenceEndWithOccurrenceCount(int count) override {
    return count < 1 ? nullptr : faceOf<RecurrenceEndFace>(kit().recurrenceEndWithOccurrenceCount(count));
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
      asked.daysOfTheWeek->push_back(kit().dayOfWeek(day, 0));
      if (!asked.daysOfTheWeek->back()) { return nullptr; }
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
  EventKit& kit() { return m_surroundings.platform.eventKit(); }

  const std::shared_ptr<EKEventStore>& store() {
    if (!m_store) { m_store = kit().eventStoreWithAccessToEntityTypes(EventKit::kMaskEvent | EventKit::kMaskReminder); }
    return m_store;
  }

  static EKRecurrenceRuleParts parts(EKRecurrenceFrequency frequency, int interval, const End& end) {
    EKRecurrenceRuleParts parts;
    parts.frequency = frequency;
    parts.interval = interval;
    parts.end = behind<RecurrenceEndFace>(end);
    return parts;
  }

  Rule made(const EKRecurrenceRuleParts& parts) { return faceOf<RecurrenceRuleFace>(kit().recurrenceRule(parts).rule); }

  Rule madeOnNthDay(EKRecurrenceRuleParts parts, int day, int week) {
    if (week < kLastWeek || week == 0 || week > kWeeksOfAMonth) { return nullptr; }
    const auto nthDay = kit().dayOfWeek(day, week);
    parts.daysOfTheWeek = {nthDay};
    return nthDay ? made(parts) : nullptr;
  }

  Surroundings m_surroundings;
  std::shared_ptr<EKEventStore> m_store;
  std::shared_ptr<CalCalendarStore> m_face;
};

}  // namespace

std::unique_ptr<CalFramework> makeCalFramework(Platform& platform, Date (*now)()) {
  return std::make_unique<CalFrameworkFace>(platform, now);
}

}  // namespace orlocal
