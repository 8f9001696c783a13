#include "bridge/call_frame.h"
#include "bridge/function_table.h"
#include "functions/back_end.h"
#include "functions/property_kinds.h"
#include "platform/exception.h"
#include "platform/platform.h"
#include "platform/zone.h"

namespace orlocal {
namespace {

struct GetRequest {
  const OptionalText& property;     ///< lower-case
  const OptionalText& subProperty;  ///< lower-case
};

constexpr std::int32_t kFirst = 1;

template <auto Method>
constexpr auto attribute = [](auto& backEnd, const GetRequest& request) -> OptionalText {
  return (backEnd.*Method)(request.property, kFirst, std::nullopt);
};

template <auto Method>
constexpr auto ruleAttribute = [](auto& backEnd, const GetRequest& request) -> OptionalText {
  return (backEnd.*Method)(request.property, request.subProperty);
};

/// Alarm properties are readable on the current back end only: here the value is dropped, and what stands in its place
/// is no text. Callers on older systems know the failure.
OptionalText alarmAttributeWithoutValue(Legacy& backEnd, const GetRequest& request) {
  backEnd.getAlarmAttribute(request.property, kFirst, std::nullopt);
  if (g_llasterror == 0) {
    throw Exception("NSInvalidArgumentException", "alarm properties cannot be read on this system");
  }
  return std::nullopt;
}

constexpr KeywordRow<GetRequest, OptionalText> kGet[] = {
    {"event", attribute<&EK::getEventAttribute>, attribute<&Legacy::getEventAttribute>},
    {"task", attribute<&EK::getReminderAttribute>, attribute<&Legacy::getTaskAttribute>},
    {"reminder", attribute<&EK::getReminderAttribute>, attribute<&Legacy::getTaskAttribute>},
    {"calendar", attribute<&EK::getCalendarAttribute>, attribute<&Legacy::getCalendarAttribute>},
    {"reminderlist", attribute<&EK::getCalendarAttribute>, attribute<&Legacy::getCalendarAttribute>},
    {"alarm", attribute<&EK::getAlarmAttribute>, &alarmAttributeWithoutValue},
    {"attendee", attribute<&EK::getParticipantAttribute>, attribute<&Legacy::getAttendeeAttribute>},
    {"recurrencerule", ruleAttribute<&EK::getEventRecurrenceRuleAttribute>,
     ruleAttribute<&Legacy::getEventRecurrenceRuleAttribute>},
};

ValueKind kindOf(const GetRequest& request) {
  // The end of a recurrence rule, whatever the rule's property is called.
  const ValueKind kind = kindOfProperty(*request.property);
  return kind != ValueKind::kTimeStamp && request.subProperty == "enddate" ? ValueKind::kTimeStamp : kind;
}

std::int16_t shortPart(std::optional<int> part) { return static_cast<std::int16_t>(part.value_or(0)); }

/// Stores the moment that `text` names as a wall clock of the default zone. Leaves the result as it is when it names
/// none.
void assignDate(const OptionalText& text, ValueKind kind, fmx::Data* result) {
  const auto date = text ? dateWithString(*text) : std::nullopt;
  if (!date) { return; }
  const DateComponents parts = platform().defaultTimeZone().components(*date);
  HostDateTime value;
  value.setDate(shortPart(parts.year), shortPart(parts.month), shortPart(parts.day));
  value.setTime(shortPart(parts.hour), shortPart(parts.minute), shortPart(parts.second));
  if (kind == ValueKind::kDate) {
    setDate(result, value);
  } else {
    setTimeStamp(result, value);
  }
}

}  // namespace

fmx::ErrorCode Orlo_GetProperty(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const OptionalText property = frame.word(1);
  const OptionalText subProperty = frame.word(2);
  return frame.run([&] {
    if (!type || !property) { return kNothing; }
    const GetRequest request{property, subProperty};
    const OptionalText value = dispatch(kGet, *type, request);
    if (g_llasterror != 0) { return kNothing; }
    const ValueKind kind = kindOf(request);
    if (kind == ValueKind::kText) {
      AssignStringResult(value ? std::string_view(*value) : std::string_view(), result);
    } else {
      assignDate(value, kind, result);
    }
    return kNothing;
  });
}

}  // namespace orlocal
