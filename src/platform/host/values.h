#pragma once

#include <cstdint>

#include "platform/host/call.h"

namespace orlocal {

/// A number of the host that we own, with the precision of the host's own numbers.
class HostNumber : public HostOwned<fmx::FixPt, &fmx::FM_FixPt_Delete> {
 public:
  static constexpr std::int32_t kPrecisionDigits = 16;

  HostNumber() : HostOwned(hostCall<fmx::FM_FixPt_Constructor1>(0, kPrecisionDigits)) {}
  void assign(std::int32_t value) { hostCall<fmx::FM_FixPt_AssignInt>(get(), value); }
};

/// The number as the host converts it to 32 bits.
inline std::int32_t numberOf(const fmx::FixPt* number) { return hostCall<fmx::FM_FixPt_AsLong>(number); }

/// A date, time or timestamp of the host that we own: a wall clock without a zone.
class HostDateTime : public HostOwned<fmx::DateTime, &fmx::FM_DateTime_Delete> {
 public:
  HostDateTime() : HostOwned(hostCall<fmx::FM_DateTime_Constructor1>()) {}
  void setDate(std::int16_t year, std::int16_t month, std::int16_t day) {
    hostCall<fmx::FM_DateTime_SetNormalizedDate1>(get(), month, day, year);
  }
  void setTime(std::int16_t hour, std::int16_t minute, std::int16_t second) {
    hostCall<fmx::FM_DateTime_SetNormalizedTime1>(get(), std::int64_t{hour}, minute, second, 0);
  }
};

/// The parts of a wall clock, as the host gives them.
struct HostDateTimeParts {
  int year;
  int month;
  int day;
  int hour;
  int minute;
  int second;
};

inline HostDateTimeParts partsOf(const fmx::DateTime* value) {
  return {hostCall<fmx::FM_DateTime_GetYear>(value),   hostCall<fmx::FM_DateTime_GetMonth>(value),
          hostCall<fmx::FM_DateTime_GetDay>(value),    hostCall<fmx::FM_DateTime_GetHour>(value),
          hostCall<fmx::FM_DateTime_GetMinute>(value), hostCall<fmx::FM_DateTime_GetSec>(value)};
}

/// A locale of the host that we own.
class HostLocale : public HostOwned<fmx::Locale, &fmx::FM_Locale_Delete> {
 public:
  explicit HostLocale(fmx::LocaleType type)
      : HostOwned(hostCall<fmx::FM_Locale_Constructor1>(static_cast<std::int32_t>(type))) {}
  void assign(const fmx::Locale* other) { hostCall<fmx::FM_Locale_operatorAS>(get(), other); }
};

/// Four characters that name something to the host.
class HostQuadChar : public HostOwned<fmx::QuadChar, &fmx::FM_QuadChar_Delete> {
 public:
  HostQuadChar(char c0, char c1, char c2, char c3)
      : HostOwned(hostCall<fmx::FM_QuadChar_Constructor2>(c0, c1, c2, c3)) {}
};

}  // namespace orlocal
