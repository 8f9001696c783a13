#include "bridge/call_frame.h"
#include "bridge/function_table.h"
#include "functions/back_end.h"

namespace orlocal {
namespace {

/// Alarm functions serve the current back end only; the older one's alarm methods are never reached from here.
template <class Message>
CallFrame::Outcome tellEventKit(const Message& message) {
  if (!g_bUseEK) {
    g_llasterror = kParameterNotSupported;
  } else if (g_sharedEKFunctions != nullptr) {
    message(*g_sharedEKFunctions);
  }
  return kDone;
}

}  // namespace

fmx::ErrorCode Orlo_AddAlarm(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const std::optional<Date> absoluteTrigger = frame.date(1);
  const OptionalText action = frame.text(2);
  const OptionalText emailAddress = frame.text(3);
  const OptionalText soundName = frame.text(5);
  const std::int32_t relativeTrigger = frame.number(4);
  return frame.run([&] {
    return tellEventKit([&](EK& backEnd) {
      backEnd.addAlarm(type, absoluteTrigger, action, emailAddress, relativeTrigger, soundName);
    });
  });
}

fmx::ErrorCode Orlo_RemoveAlarm(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const std::int32_t index = frame.number(1);
  return frame.run([&] { return tellEventKit([&](EK& backEnd) { backEnd.removeAlarmFrom(type, index); }); });
}

fmx::ErrorCode Orlo_RemoveAllAlarmsFrom(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments,
                                        fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  return frame.run([&] { return tellEventKit([&](EK& backEnd) { backEnd.removeAllAlarmsFrom(type); }); });
}

}  // namespace orlocal
