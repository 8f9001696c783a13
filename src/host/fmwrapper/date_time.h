#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/fmwrapper/export.h"
#include "host/fmwrapper/number.h"

namespace orlocal::host {

/// A date, a time of day, or both: the wall clock as the user sees it, without a zone.
///
/// Days count from 1 January of year 1, which is day 1, to 31 December 4000 in the Gregorian calendar; day 0 is "no
/// date". A time may exceed a day or be negative, as it is also a duration; its parts then carry its sign. Which part
/// counts is the value's business (see Value), as one object stands for a date, a time or a timestamp.
///
/// The host's system format, which all texts here are written in, is year-month-day with a 24-hour clock:
/// "2026-11-02", "09:00:00", "2026-11-02 09:00:00", a fraction of a second after a point when there is one.
class ORLOCAL_HOST_API DateTime {
 public:
  static constexpr std::int32_t kLastDay = 1460970;  ///< 31 December 4000
  static constexpr std::int64_t kSecondsPerDay = 86400;
  static constexpr std::int64_t kMicrosPerSecond = 1'000'000;
  static constexpr std::int64_t kMicrosPerDay = kSecondsPerDay * kMicrosPerSecond;

  DateTime() noexcept = default;

  /// The wall clock in the zone of `TZ`.
  static DateTime now();
  /// The moment that counts as now, since 1970-01-01 00:00:00 UTC: the system's, unless the clock is pinned to one.
  static std::chrono::microseconds currentMoment();
  static void pinClock(std::optional<std::chrono::microseconds> sinceEpoch);

  /// A date from parts that may lie outside their range: month 14 is February of the next year, day 0 the last day
  /// of the month before. Absent when the result lies outside year 1 to 4000.
  static std::optional<DateTime> fromDate(std::int64_t year, std::int64_t month, std::int64_t day);
  /// A time from parts that may lie outside their range: 90 minutes are an hour and a half.
  static DateTime fromTime(std::int64_t hour, std::int64_t minute, std::int64_t second, std::int64_t micros = 0);
  static DateTime fromMicros(std::int64_t micros);
  /// From the numbers that the host takes for them. Fractions of a day are dropped, those of a microsecond rounded.
  static std::optional<DateTime> fromDays(const Number& days);
  static std::optional<DateTime> fromSeconds(const Number& secondsSinceMidnight);
  static std::optional<DateTime> fromSecondsSinceEpoch(const Number& seconds);
  /// The date of one and the time of the other; a time beyond a day carries into the date.
  static std::optional<DateTime> combine(const DateTime& date, const DateTime& time);

  /// What users type: "2026-11-02", "11/2/2026", "11/2/26" (70 years back to 30 ahead), "11/2" (this year); month
  /// first unless the year leads. A time of day may follow and is read, too.
  static std::optional<DateTime> parseDate(std::u16string_view text);
  /// "9:00", "09:00:00.25", "9 PM", "30:00:00", "-1:30"; a date before it is left out.
  static std::optional<DateTime> parseTime(std::u16string_view text);
  /// A date with or without a time ("2026-11-02T09:00", "11/2/2026 9:00:00 AM"); midnight when there is none. An
  /// offset from Greenwich at the end is skipped: the wall clock is what counts.
  static std::optional<DateTime> parseTimestamp(std::u16string_view text);

  bool isEmpty() const noexcept { return m_day == 0 && !m_hasTime; }
  bool hasDate() const noexcept { return m_day != 0; }
  bool hasTime() const noexcept { return m_hasTime; }

  std::int32_t days() const noexcept { return m_day; }
  std::int64_t micros() const noexcept { return m_micros; }

  std::int16_t year() const noexcept;
  std::int16_t month() const noexcept;
  std::int16_t day() const noexcept;
  std::int16_t dayOfWeek() const noexcept;   ///< 1 Sunday to 7 Saturday, 0 without a date
  std::int16_t dayOfYear() const noexcept;   ///< 1 to 366
  std::int16_t weekOfYear() const noexcept;  ///< 1 to 54; weeks start on Sunday and the first may be short
  bool isLeapYear() const noexcept;
  std::int32_t hour() const noexcept;  ///< may exceed 23 for a time that is a duration
  std::int16_t minute() const noexcept;
  std::int16_t second() const noexcept;
  std::int32_t microsecond() const noexcept;

  Number secondsSinceMidnight() const;
  /// Seconds since the midnight that began 1 January of year 1; a time alone counts from there.
  Number secondsSinceEpoch() const;

  void setDateOf(const DateTime& other) noexcept { m_day = other.m_day; }
  void setTimeOf(const DateTime& other) noexcept;
  DateTime dateOnly() const noexcept;
  DateTime timeOnly() const noexcept;

  /// "" for a missing part; a timestamp without a time is at midnight.
  std::u16string dateText() const;
  std::u16string timeText() const;
  std::u16string timestampText() const;

  friend bool operator==(const DateTime& left, const DateTime& right) noexcept {
    return left.m_day == right.m_day && left.m_micros == right.m_micros;
  }

 private:
  std::int64_t m_micros = 0;  ///< since midnight
  std::int32_t m_day = 0;
  bool m_hasTime = false;
};

}  // namespace orlocal::host
