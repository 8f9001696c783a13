#include <array>
#include <optional>
#include <string_view>

#include "host/calc/arguments.h"
#include "host/calc/builtins.h"
#include "host/calc/operators.h"

namespace orlocal::host::calc {

namespace {

constexpr std::array<std::u16string_view, 7> kDays = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                                      u"Thursday", u"Friday", u"Saturday"};
constexpr std::array<std::u16string_view, 12> kMonths = {u"January",   u"February", u"March",    u"April",
                                                         u"May",       u"June",     u"July",     u"August",
                                                         u"September", u"October",  u"November", u"December"};

/// A value read as the type; "?" when it is none.
Value read(const Value& value, fmx::NativeType type) {
  Value result = value;
  result.convertTo(type);
  return result;
}

/// A function of a date: nothing for nothing, "?" for what is no date.
template <auto Function>
Value ofDatePart(CallContext&, Arguments a) {
  if (a[0].isEmpty() && a[0].isValid()) { return {}; }
  const Value date = read(a[0], fmx::kDate);
  if (!date.isValid() || !date.asDate().hasDate()) { return Value::invalid(); }
  return Function(date.asDate());
}

template <auto Function>
Value ofTimePart(CallContext&, Arguments a) {
  if (a[0].isEmpty() && a[0].isValid()) { return {}; }
  const Value time = read(a[0], fmx::kTime);
  return time.isValid() ? Function(time.asTime()) : time;
}

Value year(const DateTime& date) { return Value::ofNumber(date.year()); }
Value month(const DateTime& date) { return Value::ofNumber(date.month()); }
Value day(const DateTime& date) { return Value::ofNumber(date.day()); }
Value dayOfWeek(const DateTime& date) { return Value::ofNumber(date.dayOfWeek()); }
Value dayOfYear(const DateTime& date) { return Value::ofNumber(date.dayOfYear()); }
Value weekOfYear(const DateTime& date) { return Value::ofNumber(date.weekOfYear()); }
Value dayName(const DateTime& date) { return Value::ofText(kDays[static_cast<std::size_t>(date.dayOfWeek() - 1)]); }
Value monthName(const DateTime& date) { return Value::ofText(kMonths[static_cast<std::size_t>(date.month() - 1)]); }

Value hour(const DateTime& time) { return Value::ofNumber(time.hour()); }
Value minute(const DateTime& time) { return Value::ofNumber(time.minute()); }
Value seconds(const DateTime& time) {
  return Value::ofNumber(Number(time.second()) + Number(time.microsecond()) / Number(DateTime::kMicrosPerSecond));
}

/// The week of the year in which weeks start on a given day (1 Sunday to 7 Saturday) and the first has four days or
/// more in the year. A day before that week belongs to the last week of the year before.
Value weekOfYearFiscal(CallContext&, Arguments a) {
  const Value date = read(a[0], fmx::kDate);
  const std::int32_t start = smallAt(a, 1);
  if (!date.isValid() || !date.asDate().hasDate() || start < 1 || start > 7) { return Value::invalid(); }
  const std::int32_t intoWeek = (date.asDate().dayOfWeek() - start + 7) % 7;
  // The week belongs to the year of its fourth day.
  const std::optional<DateTime> fourth = DateTime::fromDays(Number(date.asDate().days() - intoWeek + 3));
  if (!fourth) { return Value::invalid(); }
  return Value::ofNumber((fourth->dayOfYear() - 1) / 7 + 1);
}

Value made(const std::optional<DateTime>& moment, Value (*make)(const DateTime&)) {
  return moment ? make(*moment) : Value::invalid();
}

/// `Date ( month ; day ; year )`, or one value to be read as a date.
Value date(CallContext&, Arguments a) {
  if (a.size() == 1) { return read(a[0], fmx::kDate); }
  return made(DateTime::fromDate(a[2].asNumber().toInt64(), a[0].asNumber().toInt64(), a[1].asNumber().toInt64()),
              Value::ofDate);
}

/// `Time ( hours ; minutes ; seconds )`, parts with fractions too, or one value to be read as a time.
Value time(CallContext&, Arguments a) {
  if (a.size() == 1) { return read(a[0], fmx::kTime); }
  const Number total = a[0].asNumber() * 3600 + a[1].asNumber() * 60 + a[2].asNumber();
  return made(total.isNumber() ? DateTime::fromSeconds(total) : std::nullopt, Value::ofTime);
}

/// `Timestamp ( date ; time )`, or one value to be read as a timestamp.
Value timestamp(CallContext&, Arguments a) {
  if (a.size() == 1) { return read(a[0], fmx::kTimeStamp); }
  const Value date = read(a[0], fmx::kDate);
  const Value time = read(a[1], fmx::kTime);
  if (!date.isValid() || !time.isValid() || !date.asDate().hasDate()) { return Value::invalid(); }
  return made(DateTime::combine(date.asDate(), time.asTime()), Value::ofTimestamp);
}

constexpr Builtin kFunctions[] = {
    {"Date", "Date ( month ; day ; year )", 1, 3, Form::kOneOrAll, date},
    {"Day", "Day ( date )", 1, 1, Form::kFunction, ofDatePart<day>},
    {"DayName", "DayName ( date )", 1, 1, Form::kFunction, ofDatePart<dayName>},
    {"DayOfWeek", "DayOfWeek ( date )", 1, 1, Form::kFunction, ofDatePart<dayOfWeek>},
    {"DayOfYear", "DayOfYear ( date )", 1, 1, Form::kFunction, ofDatePart<dayOfYear>},
    {"Hour", "Hour ( time )", 1, 1, Form::kFunction, ofTimePart<hour>},
    {"Minute", "Minute ( time )", 1, 1, Form::kFunction, ofTimePart<minute>},
    {"Month", "Month ( date )", 1, 1, Form::kFunction, ofDatePart<month>},
    {"MonthName", "MonthName ( date )", 1, 1, Form::kFunction, ofDatePart<monthName>},
    {"Seconds", "Seconds ( time )", 1, 1, Form::kFunction, ofTimePart<seconds>},
    {"Time", "Time ( hours ; minutes ; seconds )", 1, 3, Form::kOneOrAll, time},
    {"Timestamp", "Timestamp ( date ; time )", 1, 2, Form::kFunction, timestamp},
    {"WeekOfYear", "WeekOfYear ( date )", 1, 1, Form::kFunction, ofDatePart<weekOfYear>},
    {"WeekOfYearFiscal", "WeekOfYearFiscal ( date ; startingDay )", 2, 2, Form::kFunction, weekOfYearFiscal},
    {"Year", "Year ( date )", 1, 1, Form::kFunction, ofDatePart<year>},
};

}  // namespace

std::span<const Builtin> dateFunctions() { return kFunctions; }

}  // namespace orlocal::host::calc
