// DateTime. The interface's name hides the object's, which is named in full.
#include "host/fmwrapper/handles.h"

namespace fmx {

using namespace orlocal::host;

namespace {

using Moment = orlocal::host::DateTime;

/// A timestamp, a date or a time, whichever the text is; empty when it is none of them.
Moment momentOf(std::u16string_view text) {
  if (const auto timestamp = Moment::parseTimestamp(text)) { return *timestamp; }
  return Moment::parseTime(text).value_or(Moment());
}

/// Replaces the date part; an impossible one leaves all as it was.
ErrorCode setDate(void* self, const std::optional<Moment>& date) {
  Moment& moment = selfOf<fmx::DateTime>(self);
  if (!date) { return Registry::kRefused; }
  moment.setDateOf(*date);
  return 0;
}

ErrorCode setTime(void* self, const std::optional<Moment>& time) {
  Moment& moment = selfOf<fmx::DateTime>(self);
  if (!time) { return Registry::kRefused; }
  moment.setTimeOf(*time);
  return 0;
}

/// Calls a getter of the object behind `self`.
template <class Result>
Result part(const void* self, Exception* x, Result (Moment::*get)() const noexcept) noexcept {
  return guarded(x, [&] { return (selfOf<fmx::DateTime>(self).*get)(); });
}

}  // namespace

FM_FUNCTION fmx::DateTime* FM_DateTime_Constructor1(Exception* x) {
  return guarded(x, [] { return makeHandle<fmx::DateTime>(); });
}
FM_FUNCTION fmx::DateTime* FM_DateTime_Constructor2(const char16_t* dateString, std::uint32_t dateLength,
                                                    const fmx::Locale* intl, Exception* x) {
  return guarded(x, [&] {
    of(intl);
    if (dateString == nullptr && dateLength != 0) { throw Misuse{}; }
    return makeHandle<fmx::DateTime>(momentOf({dateString, dateLength}));
  });
}
FM_FUNCTION fmx::DateTime* FM_DateTime_Constructor3(const Text* dateText, const fmx::Locale* intl, Exception* x) {
  return guarded(x, [&] {
    of(intl);
    return makeHandle<fmx::DateTime>(momentOf(of(dateText)));
  });
}
FM_FUNCTION bool FM_DateTime_operatorEQ(const void* self, const fmx::DateTime* that, Exception* x) {
  return guarded(x, [&] { return selfOf<fmx::DateTime>(self) == of(that); });
}
FM_FUNCTION bool FM_DateTime_operatorNE(const void* self, const fmx::DateTime* that, Exception* x) {
  return guarded(x, [&] { return !(selfOf<fmx::DateTime>(self) == of(that)); });
}
FM_FUNCTION bool FM_DateTime_IsLeapYear(const void* self, Exception* x) { return part(self, x, &Moment::isLeapYear); }
FM_FUNCTION std::int16_t FM_DateTime_DayOfWeek(const void* self, Exception* x) {
  return part(self, x, &Moment::dayOfWeek);
}
FM_FUNCTION std::int16_t FM_DateTime_DayOfYear(const void* self, Exception* x) {
  return part(self, x, &Moment::dayOfYear);
}
FM_FUNCTION std::int16_t FM_DateTime_WeekOfYear(const void* self, Exception* x) {
  return part(self, x, &Moment::weekOfYear);
}
FM_FUNCTION void FM_DateTime_Now(void* self, Exception* x) {
  guarded(x, [&] { selfOf<fmx::DateTime>(self) = Moment::now(); });
}
FM_FUNCTION void FM_DateTime_SetDate(void* self, const fmx::DateTime* datetime, Exception* x) {
  guarded(x, [&] { selfOf<fmx::DateTime>(self).setDateOf(of(datetime)); });
}
FM_FUNCTION ErrorCode FM_DateTime_SetNormalizedDate1(void* self, std::int16_t month, std::int16_t day,
                                                     std::int16_t year, Exception* x) {
  return guarded(x, [&] { return setDate(self, Moment::fromDate(year, month, day)); });
}
FM_FUNCTION ErrorCode FM_DateTime_SetNormalizedDate2(void* self, const FixPt* year, const FixPt* month,
                                                     const FixPt* day, Exception* x) {
  return guarded(
      x, [&] { return setDate(self, Moment::fromDate(of(year).toInt64(), of(month).toInt64(), of(day).toInt64())); });
}
FM_FUNCTION void FM_DateTime_SetDaysSinceEpoch(void* self, std::int64_t days, Exception* x) {
  // Without an error to return, days beyond the calendar leave no date.
  guarded(x, [&] { selfOf<fmx::DateTime>(self).setDateOf(Moment::fromDays(Number(days)).value_or(Moment())); });
}
FM_FUNCTION void FM_DateTime_SetTime(void* self, const fmx::DateTime* datetime, Exception* x) {
  guarded(x, [&] { selfOf<fmx::DateTime>(self).setTimeOf(of(datetime)); });
}
FM_FUNCTION ErrorCode FM_DateTime_SetNormalizedTime1(void* self, std::int64_t hour, std::int16_t minute,
                                                     std::int16_t sec, std::int32_t usec, Exception* x) {
  return guarded(x, [&] { return setTime(self, Moment::fromTime(hour, minute, sec, usec)); });
}
FM_FUNCTION ErrorCode FM_DateTime_SetNormalizedTime2(void* self, const FixPt* hour, const FixPt* minute,
                                                     const FixPt* sec, Exception* x) {
  return guarded(x, [&] {
    return setTime(self, Moment::fromSeconds(of(hour) * Number(3600) + of(minute) * Number(60) + of(sec)));
  });
}
FM_FUNCTION void FM_DateTime_SetSecsSinceMidnight(void* self, const FixPt* secs, Exception* x) {
  guarded(x, [&] { selfOf<fmx::DateTime>(self).setTimeOf(Moment::fromSeconds(of(secs)).value_or(Moment())); });
}
FM_FUNCTION void FM_DateTime_SetSecondsSinceEpoch(void* self, const FixPt* seconds, Exception* x) {
  guarded(x, [&] { selfOf<fmx::DateTime>(self) = Moment::fromSecondsSinceEpoch(of(seconds)).value_or(Moment()); });
}
FM_FUNCTION std::int16_t FM_DateTime_GetYear(const void* self, Exception* x) { return part(self, x, &Moment::year); }
FM_FUNCTION std::int16_t FM_DateTime_GetMonth(const void* self, Exception* x) { return part(self, x, &Moment::month); }
FM_FUNCTION std::int16_t FM_DateTime_GetDay(const void* self, Exception* x) { return part(self, x, &Moment::day); }
FM_FUNCTION std::int32_t FM_DateTime_GetDaysSinceEpoch(const void* self, Exception* x) {
  return part(self, x, &Moment::days);
}
FM_FUNCTION std::int32_t FM_DateTime_GetHour(const void* self, Exception* x) { return part(self, x, &Moment::hour); }
FM_FUNCTION std::int16_t FM_DateTime_GetMinute(const void* self, Exception* x) {
  return part(self, x, &Moment::minute);
}
FM_FUNCTION std::int16_t FM_DateTime_GetSec(const void* self, Exception* x) { return part(self, x, &Moment::second); }
FM_FUNCTION std::int32_t FM_DateTime_GetUSec(const void* self, Exception* x) {
  return part(self, x, &Moment::microsecond);
}
FM_FUNCTION void FM_DateTime_GetSeconds(const void* self, FixPt* results, Exception* x) {
  guarded(x, [&] {
    const Moment& moment = selfOf<fmx::DateTime>(self);
    of(results) = Number(moment.second()) + Number(moment.microsecond()) / Number(Moment::kMicrosPerSecond);
  });
}
FM_FUNCTION void FM_DateTime_GetSecsSinceMidnight(const void* self, FixPt* results, Exception* x) {
  guarded(x, [&] { of(results) = selfOf<fmx::DateTime>(self).secondsSinceMidnight(); });
}
FM_FUNCTION void FM_DateTime_GetSecondsSinceEpoch(const void* self, FixPt* results, Exception* x) {
  guarded(x, [&] { of(results) = selfOf<fmx::DateTime>(self).secondsSinceEpoch(); });
}
FM_FUNCTION void FM_DateTime_Delete(void* self, Exception*) { deleteHandle<fmx::DateTime>(self); }

}  // namespace fmx
