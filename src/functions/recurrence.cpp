#include "bridge/call_frame.h"
#include "bridge/function_table.h"
#include "functions/back_end.h"

namespace orlocal {
namespace {

// The back ends can take a single weekday and a week of the month, too; no argument of the function sets them.
constexpr std::int32_t kNoDayOfTheWeek = 0;
constexpr std::int32_t kNoWeekOfTheMonth = 0;

}  // namespace

fmx::ErrorCode Orlo_AddRecurrence(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments,
                                  fmx::Data* result) {
  CallFrame frame(arguments, result);
  const OptionalText type = frame.text(0);
  const std::int32_t interval = frame.number(1);
  const OptionalText daysOfTheWeek = frame.text(2);
  const OptionalText daysOfTheMonth = frame.text(3);
  const OptionalText monthsOfTheYear = frame.text(4);
  const std::optional<Date> endDate = frame.date(5);
  const std::int32_t endCount = frame.number(6);
  return frame.run([&] {
    const auto days = NSStringToNSArrayDOW(daysOfTheWeek);
    const auto monthDays = NSStringToNSArrayInts(daysOfTheMonth);
    const auto months = NSStringToNSArrayInts(monthsOfTheYear);
    tellBackEnd(
        [&](EK& backEnd) {
          return backEnd.addRecurrence(type, interval, days, monthDays, kNoDayOfTheWeek, months, endDate, endCount);
        },
        [&](Legacy& backEnd) {
          return backEnd.addRecurrence(type, interval, days, monthDays, kNoDayOfTheWeek, kNoWeekOfTheMonth, months,
                                       endDate, endCount);
        });
    return kDone;
  });
}

fmx::ErrorCode Orlo_RemoveRecurrence(std::int16_t, const fmx::ExprEnv*, const fmx::DataVect* arguments,
                                     fmx::Data* result) {
  CallFrame frame(arguments, result);
  return frame.run([&] {
    tellBackEnd([](auto& backEnd) { return backEnd.removeRecurrence(); });
    return kDone;
  });
}

}  // namespace orlocal
