#include "platform/linux/calendar_store_linux_items.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "platform/linux/eventkit_participant.h"
#include "store/time/zone.h"

namespace orlocal {
namespace {

using Action = store::Alarm::Action;
using Status = store::Attendee::Status;

struct ActionRow {
  Action stored;
  std::string_view text;
};
constexpr ActionRow kActions[] = {
    {Action::kDisplay, CalAlarmActionDisplay},
    {Action::kAudio, CalAlarmActionSound},
    {Action::kProcedure, CalAlarmActionProcedure},
    {Action::kEmail, CalAlarmActionEmail},
};

struct TypeRow {
  store::Source::Type stored;
  const char* text;
};
constexpr TypeRow kCalendarTypes[] = {
    {store::Source::Type::kLocal, "Local"},       {store::Source::Type::kCalDav, "CalDav"},
    {store::Source::Type::kExchange, "Exchange"}, {store::Source::Type::kSubscription, "Subscription"},
    {store::Source::Type::kBirthday, "Birthday"},
};

/// RFC 5545, 3.2.12. Who said nothing has not answered yet.
struct StatusRow {
  Status stored;
  const char* text;
};
constexpr StatusRow kStatuses[] = {
    {Status::kUnknown, "NEEDS-ACTION"}, {Status::kPending, "NEEDS-ACTION"}, {Status::kAccepted, "ACCEPTED"},
    {Status::kDeclined, "DECLINED"},    {Status::kTentative, "TENTATIVE"},  {Status::kDelegated, "DELEGATED"},
    {Status::kCompleted, "COMPLETED"},  {Status::kInProcess, "IN-PROCESS"},
};

class CalNthWeekDayObject final : public CalNthWeekDay {
 public:
  explicit CalNthWeekDayObject(const EKRecurrenceDayOfWeek& day)
      : m_weekNumber(static_cast<int>(day.weekNumber())), m_dayOfTheWeek(static_cast<int>(day.dayOfTheWeek())) {}
  int weekNumber() const override { return m_weekNumber; }
  int dayOfTheWeek() const override { return m_dayOfTheWeek; }

 private:
  int m_weekNumber;
  int m_dayOfTheWeek;
};

class CalAttendeeObject final : public CalAttendee {
 public:
  explicit CalAttendeeObject(store::Attendee attendee) : m_attendee(std::move(attendee)) {}
  OptionalText address() const override { return urlText(presentText(m_attendee.address)); }
  OptionalText commonName() const override { return m_attendee.name; }
  OptionalText status() const override {
    for (const StatusRow& row : kStatuses) {
      if (row.stored == m_attendee.status) return row.text;
    }
    return std::nullopt;
  }

 private:
  store::Attendee m_attendee;
};

}  // namespace

OptionalText CalCalendarObject::type() const {
  for (const TypeRow& row : kCalendarTypes) {
    if (row.stored == m_calendar->stored().type) return row.text;
  }
  return std::nullopt;
}

// Alarms. The current platform derives the action from what was set last; the older one keeps the one that was named.

OptionalText CalAlarmObject::action() const {
  if (!m_hasAction) return std::nullopt;
  for (const ActionRow& row : kActions) {
    if (static_cast<int>(row.stored) == m_alarm->type()) return std::string(row.text);
  }
  return std::nullopt;
}

void CalAlarmObject::setAction(const OptionalText& action) {
  for (const ActionRow& row : kActions) {
    if (action != row.text) continue;
    m_alarm->setType(static_cast<EKAlarmType>(row.stored));
    m_hasAction = true;
  }
}

void CalAlarmObject::setEmailAddress(const OptionalText& address) {
  const OptionalText before = action();
  m_alarm->setEmailAddress(address);
  setAction(before);
}

void CalAlarmObject::setSound(const OptionalText& name) {
  const OptionalText before = action();
  m_alarm->setSoundName(name);
  setAction(before);
}

void CalAlarmObject::setUrl(const OptionalText& url) {
  const OptionalText before = action();
  m_alarm->setUrl(url);
  setAction(before);
}

// Rules

std::shared_ptr<CalRecurrenceEnd> CalRecurrenceRuleObject::recurrenceEnd() const {
  auto end = m_rule->recurrenceEnd();
  return end ? std::make_shared<CalRecurrenceEndObject>(std::move(end)) : nullptr;
}

std::vector<long> CalRecurrenceRuleObject::daysOfTheWeek() const {
  std::vector<long> days;
  for (const auto& day : m_rule->daysOfTheWeek()) {
    if (day->weekNumber() == 0) days.push_back(day->dayOfTheWeek());
  }
  return days;
}

std::vector<std::shared_ptr<CalNthWeekDay>> CalRecurrenceRuleObject::nthWeekDaysOfTheMonth() const {
  std::vector<std::shared_ptr<CalNthWeekDay>> days;
  for (const auto& day : m_rule->daysOfTheWeek()) {
    if (day->weekNumber() != 0) days.push_back(std::make_shared<CalNthWeekDayObject>(*day));
  }
  return days;
}

// Items

template <class Interface, class Object>
std::shared_ptr<CalCalendar> CalItemObject<Interface, Object>::calendar() const {
  auto calendar = std::dynamic_pointer_cast<CalendarObject>(m_object->calendar());
  return calendar ? std::make_shared<CalCalendarObject>(std::move(calendar)) : nullptr;
}

template <class Interface, class Object>
void CalItemObject<Interface, Object>::setCalendar(std::shared_ptr<CalCalendar> calendar) {
  const auto ours = std::dynamic_pointer_cast<CalCalendarObject>(calendar);
  m_object->setCalendar(ours ? ours->calendar() : nullptr);
}

template <class Interface, class Object>
std::optional<Date> CalItemObject<Interface, Object>::nextAlarmDate() const {
  const auto anchor = alarmAnchor();
  const Date now = store::now();
  std::optional<Date> next;
  for (const auto& alarm : m_object->alarms()) {
    auto date = alarm->absoluteDate();
    if (!date && anchor) date = *anchor + std::chrono::seconds(std::llround(alarm->relativeOffset()));
    if (date && *date >= now && (!next || *date < *next)) next = date;
  }
  return next;
}

template <class Interface, class Object>
std::vector<std::shared_ptr<CalAlarm>> CalItemObject<Interface, Object>::alarms() const {
  std::vector<std::shared_ptr<CalAlarmObject>> faces;
  for (const auto& each : m_object->alarms()) {
    auto alarm = std::dynamic_pointer_cast<AlarmObject>(each);
    const auto known = std::ranges::find(m_alarms, alarm, &CalAlarmObject::alarm);
    faces.push_back(known != m_alarms.end() ? *known : std::make_shared<CalAlarmObject>(std::move(alarm), false));
  }
  m_alarms = faces;
  return {faces.begin(), faces.end()};
}

template <class Interface, class Object>
void CalItemObject<Interface, Object>::addAlarm(std::shared_ptr<CalAlarm> alarm) {
  const auto ours = std::dynamic_pointer_cast<CalAlarmObject>(alarm);
  if (!ours) return;
  m_object->addAlarm(ours->alarm());
  m_alarms.push_back(ours);
}

template <class Interface, class Object>
void CalItemObject<Interface, Object>::removeAlarm(const std::shared_ptr<CalAlarm>& alarm) {
  if (const auto ours = std::dynamic_pointer_cast<CalAlarmObject>(alarm)) m_object->removeAlarm(ours->alarm());
}

template <class Interface, class Object>
void CalItemObject<Interface, Object>::removeAlarms(const std::vector<std::shared_ptr<CalAlarm>>& alarms) {
  for (const auto& alarm : alarms) removeAlarm(alarm);
}

template class CalItemObject<CalEvent, EventObject>;
template class CalItemObject<CalTask, ReminderObject>;

std::shared_ptr<CalRecurrenceRule> CalEventObject::recurrenceRule() const {
  const auto rules = m_object->recurrenceRules();
  return rules && !rules->empty() ? std::make_shared<CalRecurrenceRuleObject>(rules->front()) : nullptr;
}

void CalEventObject::setRecurrenceRule(std::shared_ptr<CalRecurrenceRule> rule) {
  const auto ours = std::dynamic_pointer_cast<CalRecurrenceRuleObject>(rule);
  if (ours) {
    m_object->setRecurrenceRules(std::vector{ours->rule()});
  } else {
    m_object->setRecurrenceRules(std::nullopt);
  }
}

std::optional<std::vector<std::shared_ptr<CalAttendee>>> CalEventObject::attendees() const {
  std::vector<std::shared_ptr<CalAttendee>> attendees;
  // Nobody changes attendees through the platform, so those of the row are the event's.
  for (const auto& attendee : m_object->original().attendees) {
    if (isInvited(attendee)) attendees.push_back(std::make_shared<CalAttendeeObject>(attendee));
  }
  if (attendees.empty()) return std::nullopt;
  return attendees;
}

std::optional<Date> CalTaskObject::dueDate() const {
  const auto parts = m_object->dueDateComponents();
  return parts ? m_access->defaultTimeZone()->dateFromComponents(*parts) : std::nullopt;
}

void CalTaskObject::setDueDate(std::optional<Date> date) {
  if (!date) return m_object->setDueDateComponents(std::nullopt);
  // The moment stays what it is for whoever looks from elsewhere.
  const auto& zone = *m_access->defaultTimeZone();
  DateComponents parts = zone.components(*date);
  parts.timeZone = zone.name();
  m_object->setDueDateComponents(parts);
}

}  // namespace orlocal
