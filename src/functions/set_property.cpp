#include "backend/property_value.h"
#include "bridge/call_frame.h"
#include "bridge/function_table.h"
#include "functions/back_end.h"
#include "functions/property_kinds.h"

namespace orlocal {
namespace {

struct SetRequest {
  const OptionalText& property;  ///< as it was typed
  const PropertyValue& value;
};

template <auto Method>
constexpr auto property =
    [](auto& backEnd, const SetRequest& request) { (backEnd.*Method)(request.property, request.value); };

constexpr KeywordRow<SetRequest, void> kSet[] = {
    {"event", property<&EK::setEventProp>, property<&Legacy::setEventProp>},
    {"task", property<&EK::setReminderProp>, property<&Legacy::setTaskProp>},
    {"reminder", property<&EK::setReminderProp>, property<&Legacy::setTaskProp>},
    {"calendar", property<&EK::setCalendarProp>, property<&Legacy::setCalendarProp>},
    {"reminderlist", property<&EK::setCalendarProp>, property<&Legacy::setCalendarProp>},
    {"alarm", property<&EK::setAlarmProp>, kParameterNotSupported},
    // A rule is replaced with Orlo_AddRecurrence; setting a part of one is accepted and changes nothing.
    {"recurrencerule", kNoCall, kNoCall},
};

}  // namespace

fmx::ErrorCode Orlo_SetProperty(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const OptionalText name = frame.text(1);
  const OptionalText text = frame.text(2);
  const std::optional<Date> date = text ? frame.date(2) : std::nullopt;
  return frame.run([&] {
    if (!type || !name) { return kNothing; }
    PropertyValue value;
    if (isSetAsDate(lowercase(*name))) {
      if (!date) {
        g_llasterror = kMissingArgument;
        return kDone;
      }
      value = *date;
    } else if (text) {
      value = *text;
    }
    dispatch(kSet, *type, SetRequest{name, value});
    return kDone;
  });
}

}  // namespace orlocal
