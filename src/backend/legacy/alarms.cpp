#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/legacy/current_item.h"
#include "backend/legacy/ical_functions.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

struct ActionConstant {
  AlarmAction action;
  std::string_view constant;
};

constexpr ActionConstant kActions[] = {
    {AlarmAction::kDisplay, CalAlarmActionDisplay},
    {AlarmAction::kEmail, CalAlarmActionEmail},
    {AlarmAction::kProcedure, CalAlarmActionProcedure},
    {AlarmAction::kSound, CalAlarmActionSound},
};

/// None for a word that names no action.
OptionalText constantNamed(const OptionalText& word) {
  const auto action = alarmActionNamed(word);
  for (const auto& row : kActions) {
    if (row.action == action) { return std::string(row.constant); }
  }
  return std::nullopt;
}

/// As `constantNamed`, but callers that add an alarm spell the procedure's word "pocedure", and "procedure" is refused.
OptionalText constantToAddNamed(const OptionalText& word) {
  const OptionalText lower = lowercased(word);
  if (lower == "procedure") { return std::nullopt; }
  return constantNamed(lower == "pocedure" ? OptionalText("procedure") : lower);
}

OptionalText wordOfConstant(const OptionalText& constant) {
  for (const auto& row : kActions) {
    if (constant == row.constant) { return std::string(alarmActionWord(row.action)); }
  }
  return "none";
}

constexpr PropertyGetter<const CalAlarm&> kAlarmGetters[] = {
    {"absolutetrigger", [](const CalAlarm& alarm) { return dateText(alarm.absoluteTrigger()); }},
    {"action", [](const CalAlarm& alarm) { return wordOfConstant(alarm.action()); }},
    {"email", [](const CalAlarm& alarm) { return alarm.emailAddress(); }},
    {"relativetrigger", [](const CalAlarm& alarm) { return OptionalText(fixedText(alarm.relativeTrigger(), 6)); }},
    {"sound", [](const CalAlarm& alarm) { return alarm.sound(); }},
    {"url", [](const CalAlarm& alarm) { return alarm.url(); }},
};

std::int32_t setAbsoluteTrigger(CalAlarm& alarm, const PropertyValue& value) {
  alarm.setAbsoluteTrigger(dateOf(value));
  return 0;
}

std::int32_t setAction(CalAlarm& alarm, const PropertyValue& value) {
  const auto action = constantNamed(textOf(value));
  if (!action) { return failWith(kMissingArgument); }
  alarm.setAction(action);
  return 0;
}

std::int32_t setEmailAddress(CalAlarm& alarm, const PropertyValue& value) {
  alarm.setEmailAddress(textOf(value));
  return 0;
}

std::int32_t setRelativeTrigger(CalAlarm& alarm, const PropertyValue& value) {
  alarm.setRelativeTrigger(integerValue(textOf(value).value_or("")));
  return 0;
}

std::int32_t setSound(CalAlarm& alarm, const PropertyValue& value) {
  alarm.setSound(textOf(value));
  return 0;
}

std::int32_t setUrl(CalAlarm& alarm, const PropertyValue& value) {
  alarm.setUrl(urlWithString(textOf(value)));
  return 0;
}

constexpr PropertySetter<CalAlarm, std::int32_t> kAlarmSetters[] = {
    {"absolutetrigger", setAbsoluteTrigger}, {"action", setAction}, {"email", setEmailAddress},
    {"relativetrigger", setRelativeTrigger}, {"sound", setSound},   {"url", setUrl},
};

}  // namespace

CalCalendarItem* iCalFunctions::ownerToAddAlarmTo(const OptionalText& type) {
  const std::string word = lowercase(type.value_or(""));
  CalCalendarItem* owner = nullptr;
  if (word == "task" || word == "reminder") {
    owner = m_task.get();
  } else if (word == "event") {
    owner = m_event.get();
  } else {
    failWith(kInvalidArgument);
    return nullptr;
  }
  if (!owner) { failWith(kInvalidCallOrder); }
  return owner;
}

CalCalendarItem* iCalFunctions::ownerToRemoveAlarmsFrom(const OptionalText& type) {
  if (!type) {
    failWith(kMissingArgument);
    return nullptr;
  }
  // Unlike adding, removing knows a task by one word only: callers with "reminder" are refused.
  if (lowercase(*type) == "reminder") {
    failWith(kInvalidArgument);
    return nullptr;
  }
  return ownerToAddAlarmTo(type);
}

std::int32_t iCalFunctions::addAlarm(const OptionalText& type, std::optional<Date> absTrigger,
                                     const OptionalText& action, const OptionalText& eaddr, std::int32_t relTrigger,
                                     const OptionalText& sound, const OptionalText& url) {
  if (!type) { return failWith(kMissingArgument); }
  m_alarm.reset();
  CalCalendarItem* owner = ownerToAddAlarmTo(type);
  if (!owner) { return -1; }
  const auto alarm = platform().calFramework().alarm();
  if (!alarm) { return failWith(kLegacyItemNotCreated); }
  if (absTrigger) { alarm->setAbsoluteTrigger(absTrigger); }
  if (eaddr) { alarm->setEmailAddress(eaddr); }
  if (relTrigger != 0) { alarm->setRelativeTrigger(relTrigger); }
  if (sound) { alarm->setSound(sound); }
  if (url) { alarm->setUrl(urlWithString(url)); }
  if (action) {
    const auto constant = constantToAddNamed(action);
    if (!constant) { return failWith(kMissingArgument); }
    alarm->setAction(constant);
  }
  owner->addAlarm(alarm);
  return 0;
}

std::int32_t iCalFunctions::removeAlarmFrom(const OptionalText& type, std::int32_t at) {
  CalCalendarItem* owner = ownerToRemoveAlarmsFrom(type);
  if (!owner) { return -1; }
  if (!owner->hasAlarm()) { return 0; }
  const auto alarms = owner->alarms();
  if (at == -1) {
    owner->removeAlarms(alarms);
    return 0;
  }
  std::shared_ptr<CalAlarm> alarm;
  if (openItemAt(at, alarms, alarm) != 0) { return -1; }
  owner->removeAlarm(alarm);
  return 0;
}

std::int32_t iCalFunctions::removeAllAlarmsFrom(const OptionalText& type) {
  CalCalendarItem* owner = ownerToRemoveAlarmsFrom(type);
  if (!owner) { return -1; }
  if (owner->hasAlarm()) { owner->removeAlarms(owner->alarms()); }
  return 0;
}

std::int32_t iCalFunctions::openAlarmAt(std::int32_t index) {
  const CalCalendarItem* owner = m_task.get();
  if (!owner) { owner = m_event.get(); }
  if (!owner) { return failWith(kInvalidCallOrder); }
  if (!owner->hasAlarm()) { return failWith(kNoAlarms); }
  // A failed open leaves the alarm that was current before it.
  return openItemAt(index, owner->alarms(), m_alarm);
}

std::int32_t iCalFunctions::setAlarmProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_alarm) { return failWith(kInvalidCallOrder); }
  const auto* setter = property ? rowForAnyCase(kAlarmSetters, *property) : nullptr;
  return setter != nullptr ? setter->set(*m_alarm, value) : failWith(kMissingArgument);
}

OptionalText iCalFunctions::getAlarmAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_alarm) { return noneWith(kInvalidCallOrder); }
  if (!property) { return noneWith(kMissingArgument); }
  const auto* getter = rowForAnyCase(kAlarmGetters, *property);
  return getter != nullptr ? getter->read(*m_alarm) : noneWith(kInvalidArgument);
}

}  // namespace orlocal
