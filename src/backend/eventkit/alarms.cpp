#include <optional>

#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

std::size_t alarmCount(const EKCalendarItem& item) { return item.alarms().size(); }

/// What is set on an alarm decides what it does: without address, sound and URL it shows a message.
void makeDisplayAlarm(EKAlarm& alarm) {
  alarm.setEmailAddress(std::nullopt);
  alarm.setSoundName(std::nullopt);
  alarm.setUrl(std::nullopt);
}

/// The code with which `action` is refused for an alarm with that address and sound; 0 when it is not.
std::int64_t refusalOf(std::optional<AlarmAction> action, const OptionalText& address, const OptionalText& sound) {
  if (!action) { return kMissingArgument; }
  switch (*action) {
    case AlarmAction::kDisplay:
      return 0;
    case AlarmAction::kEmail:
      return address ? 0 : kAlarmEmailRequired;
    case AlarmAction::kSound:
      return sound ? 0 : kAlarmSoundRequired;
    case AlarmAction::kProcedure:
      return kAlarmProcedureNotSupported;
  }
  return kMissingArgument;
}

OptionalText actionText(const EKAlarm& alarm) {
  switch (static_cast<EKAlarmType>(alarm.type())) {
    case EKAlarmType::kDisplay:
      return std::string(alarmActionWord(AlarmAction::kDisplay));
    case EKAlarmType::kAudio:
      return std::string(alarmActionWord(AlarmAction::kSound));
    case EKAlarmType::kProcedure:
      return std::string(alarmActionWord(AlarmAction::kProcedure));
    case EKAlarmType::kEmail:
      return std::string(alarmActionWord(AlarmAction::kEmail));
  }
  return "";
}

OptionalText relativeTrigger(const EKAlarm& alarm) {
  if (alarm.absoluteDate()) { return ""; }
  const double seconds = alarm.relativeOffset();
  if (seconds == 0) { return std::nullopt; }
  return fixedText(seconds, 6);
}

constexpr PropertyGetter<const EKAlarm&> kAlarmGetters[] = {
    {"absolutetrigger", [](const EKAlarm& alarm) { return dateText(alarm.absoluteDate()); }},
    {"action", actionText},
    {"emailaddress", [](const EKAlarm& alarm) { return alarm.emailAddress(); }},
    {"sound", [](const EKAlarm& alarm) { return alarm.soundName(); }},
    {"url", [](const EKAlarm& alarm) { return alarm.url(); }},
    {"relativetrigger", relativeTrigger},
};

std::int32_t setAbsoluteTrigger(EKAlarm& alarm, const PropertyValue& value) {
  const auto date = dateOf(value);
  if (!date) { return failWith(kAbsoluteDateRequired); }
  alarm.setAbsoluteDate(date);
  return 0;
}

std::int32_t setRelativeTrigger(EKAlarm& alarm, const PropertyValue& value) {
  const auto text = textOf(value);
  if (!text) { return failWith(kRelativeOffsetRequired); }
  alarm.setRelativeOffset(integerValue(*text));
  return 0;
}

std::int32_t setAction(EKAlarm& alarm, const PropertyValue& value) {
  const auto action = alarmActionNamed(textOf(value));
  if (!action) { return failWith(kAlarmActionNotSpecified); }
  // The other actions follow from the address or the sound that is set.
  if (*action == AlarmAction::kDisplay) { makeDisplayAlarm(alarm); }
  return 0;
}

std::int32_t setEmailAddress(EKAlarm& alarm, const PropertyValue& value) {
  alarm.setEmailAddress(textOf(value));
  return 0;
}

std::int32_t setSound(EKAlarm& alarm, const PropertyValue& value) {
  alarm.setSoundName(textOf(value));
  return 0;
}

constexpr PropertySetter<EKAlarm, std::int32_t> kAlarmSetters[] = {
    {"absolutetrigger", setAbsoluteTrigger},
    {"relativetrigger", setRelativeTrigger},
    {"action", setAction},
    {"emailaddress", setEmailAddress},
    {"sound", setSound},
};

}  // namespace

EKCalendarItem* iCalEKFunctions::alarmOwner(const OptionalText& type, std::int64_t noReminder, std::int64_t noEvent) {
  const auto kind = itemKindNamed(type);
  if (kind == ItemKind::kReminder) {
    if (!m_ekReminder) { failWith(noReminder); }
    return m_ekReminder.get();
  }
  if (kind == ItemKind::kEvent) {
    if (!m_ekEvent) { failWith(noEvent); }
    return m_ekEvent.get();
  }
  failWith(kInvalidArgument);
  return nullptr;
}

std::int32_t iCalEKFunctions::addAlarm(const OptionalText& type, std::optional<Date> absTrigger,
                                       const OptionalText& action, const OptionalText& eaddr, std::int32_t relTrigger,
                                       const OptionalText& sound) {
  if (!type) { return failWith(kAlarmTypeRequired); }
  if (!action) { return failWith(kAlarmActionRequired); }
  m_ekAlarm.reset();
  if (!absTrigger && relTrigger == 0) { return failWith(kAlarmTriggerRequired); }
  auto* owner = alarmOwner(type, kNoReminderToAddAlarm, kNoEventToAddAlarm);
  if (owner == nullptr) { return -1; }

  auto& eventKit = platform().eventKit();
  const auto alarm =
      absTrigger ? eventKit.alarmWithAbsoluteDate(*absTrigger) : eventKit.alarmWithRelativeOffset(relTrigger);
  if (alarm && eaddr) { alarm->setEmailAddress(eaddr); }
  if (alarm && sound) { alarm->setSoundName(sound); }
  const auto kind = alarmActionNamed(action);
  if (const auto refusal = refusalOf(kind, eaddr, sound)) { return failWith(refusal); }
  if (alarm && kind == AlarmAction::kDisplay) { makeDisplayAlarm(*alarm); }

  const auto before = alarmCount(*owner);
  if (alarm) { owner->addAlarm(alarm); }
  return alarmCount(*owner) == before ? failWith(kAlarmNotAdded) : 0;
}

std::int32_t iCalEKFunctions::removeAlarmFrom(const OptionalText& type, std::int32_t at) {
  if (!type) { return failWith(kAlarmTypeRequired); }
  auto* owner = alarmOwner(type, kNoReminderToAddAlarm, kNoEventToAddAlarm);
  if (owner == nullptr) { return -1; }
  const auto alarms = owner->alarms();
  if (!owner->hasAlarms() || alarms.empty()) { return 0; }

  if (at == -1) {
    for (const auto& alarm : alarms) { owner->removeAlarm(alarm); }
    // Callers that pass -1 rely on the removal and on the range exception that the index then raises below.
  } else if (!isWithin(at, alarms.size())) {
    return failWith(kIndexOutOfBounds);
  }
  const auto before = alarmCount(*owner);
  owner->removeAlarm(objectAtIndex(alarms, std::int64_t{at} - 1));
  return alarmCount(*owner) == before ? failWith(kAlarmNotDeleted) : 0;
}

std::int32_t iCalEKFunctions::removeAllAlarmsFrom(const OptionalText& type) {
  if (!type) { return failWith(kMissingArgument); }
  auto* owner = alarmOwner(type, kInvalidCallOrder, kInvalidCallOrder);
  if (owner == nullptr) { return -1; }
  if (!owner->hasAlarms()) { return 0; }
  for (auto left = alarmCount(*owner); left > 0; --left) {
    const auto alarms = owner->alarms();
    if (alarms.empty()) { break; }
    owner->removeAlarm(alarms.front());
  }
  return 0;
}

std::int32_t iCalEKFunctions::openAlarmAt(std::int32_t index) {
  // The reminder comes first here, while counting alarms asks the event first; solutions know both.
  EKCalendarItem* owner = m_ekReminder ? static_cast<EKCalendarItem*>(m_ekReminder.get()) : m_ekEvent.get();
  if (owner == nullptr) { return failWith(kInvalidCallOrder); }
  const auto alarms = owner->alarms();
  if (!owner->hasAlarms() || alarms.empty()) { return failWith(kNoAlarms); }
  if (!isWithin(index, alarms.size())) { return failWith(kIndexOutOfBounds); }
  m_ekAlarm = objectAtIndex(alarms, index - 1);
  return m_ekAlarm ? 0 : failWith(kAlarmNotOpenedAtIndex);
}

std::int32_t iCalEKFunctions::setAlarmProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_ekAlarm) { return failWith(kInvalidCallOrder); }
  const auto* setter = property ? rowForAnyCase(kAlarmSetters, *property) : nullptr;
  return setter != nullptr ? setter->set(*m_ekAlarm, value) : failWith(kMissingArgument);
}

OptionalText iCalEKFunctions::getAlarmAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  const auto word = lowercased(property);
  if (word == "email") {
    // Answered from the current event, before any check: no alarm needs to be open.
    const auto alarms = m_ekEvent ? m_ekEvent->alarms() : std::vector<std::shared_ptr<EKAlarm>>();
    return alarms.empty() || !alarms.front() ? std::nullopt : alarms.front()->emailAddress();
  }
  if (!m_ekAlarm) { return noneWith(kNoAlarmToGetProperty); }
  if (!word) { return noneWith(kPropertyRequired); }
  const auto* getter = rowFor(kAlarmGetters, *word);
  return getter != nullptr ? getter->read(*m_ekAlarm) : noneWith(kInvalidProperty);
}

}  // namespace orlocal
