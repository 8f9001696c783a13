#include "bridge/call_frame.h"
#include "bridge/function_table.h"
#include "functions/back_end.h"

// A fetch answers 0, never its count: solutions ask for that with Orlo_GetItemCountForType.

namespace orlocal {

fmx::ErrorCode Orlo_EventsFetch(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments, fmx::Data* result) {
  CallFrame frame(arguments, result);
  const Date start = frame.date(0).value_or(distantPast());
  const Date end = frame.date(1).value_or(distantFuture());
  const OptionalText calendars = frame.text(2);
  const OptionalText uid = frame.text(3);
  return frame.run([&] {
    tellBackEnd([&](auto& backEnd) { return backEnd.fetchEventsWithStartDate(start, end, uid, calendars); });
    return kDone;
  });
}

fmx::ErrorCode Orlo_RemindersFetch(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments,
                                   fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText calendars = frame.text(0);
  const OptionalText type = frame.text(1);
  const std::optional<Date> date = frame.date(2);
  return frame.run([&] {
    tellBackEnd([&](EK& backEnd) { return backEnd.fetchReminders(calendars, type, date); },
                [&](Legacy& backEnd) { return backEnd.fetchTasks(calendars, type, date); });
    return kDone;
  });
}

}  // namespace orlocal
