#include "host/fmwrapper/date_time.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <ctime>
#include <limits>

#include "host/fmwrapper/date_parts.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

constexpr std::int64_t kMicrosPerHour = 3'600'000'000;
constexpr std::int64_t kMicrosPerMinute = 60'000'000;

/// Where the clock stands still; none while it runs.
std::optional<std::chrono::microseconds> g_pinned;

/// A number of units as a whole count of its millionths, when that fits with room to spare.
std::optional<std::int64_t> millionths(const Number& value) {
  const Number result = round(value * Number(DateTime::kMicrosPerSecond));
  const Number limit = Number(std::numeric_limits<std::int64_t>::max() / 4);
  if (!result.isNumber() || result > limit || result < -limit) { return std::nullopt; }
  return result.toInt64();
}

Number secondsOf(std::int64_t micros) {
  if (micros % DateTime::kMicrosPerSecond == 0) { return micros / DateTime::kMicrosPerSecond; }
  return Number(micros) / Number(DateTime::kMicrosPerSecond);
}

void appendPadded(std::u16string& text, std::int64_t value, std::size_t width) {
  std::array<char, 24> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  const auto length = static_cast<std::size_t>(end - buffer.data());
  if (length < width) { text.append(width - length, u'0'); }
  text.append(buffer.data(), end);
}

}  // namespace

void DateTime::pinClock(std::optional<std::chrono::microseconds> sinceEpoch) { g_pinned = sinceEpoch; }

std::chrono::microseconds DateTime::currentMoment() {
  if (g_pinned) { return *g_pinned; }
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch());
}

DateTime DateTime::now() {
  using namespace std::chrono;
  const microseconds moment = currentMoment();
  const auto whole = floor<seconds>(moment);
  const std::time_t time = whole.count();
  std::tm parts{};
  tzset();  // localtime_r alone need not read TZ again
  localtime_r(&time, &parts);
  DateTime result = fromTime(parts.tm_hour, parts.tm_min, parts.tm_sec, (moment - whole).count());
  result.m_day = static_cast<std::int32_t>(dayOf({parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday}));
  return result;
}

std::optional<DateTime> DateTime::fromDate(std::int64_t year, std::int64_t month, std::int64_t day) {
  constexpr std::int64_t kFar = 1'000'000'000;
  if (year < -kFar || year > kFar || month < -kFar || month > kFar || day < -kFar || day > kFar) {
    return std::nullopt;
  }
  std::int64_t months = year * 12 + month - 1;
  const std::int64_t fullYears = months >= 0 ? months / 12 : -((11 - months) / 12);
  months -= fullYears * 12;
  const std::int64_t first = dayOf({fullYears, static_cast<int>(months) + 1, 1});
  return fromDays(Number(first + day - 1));
}

DateTime DateTime::fromTime(std::int64_t hour, std::int64_t minute, std::int64_t second, std::int64_t micros) {
  // Hours come with 64 bits; beyond the range of microseconds the nearest limit stands.
  constexpr std::int64_t kMostHours = std::numeric_limits<std::int32_t>::max() / 2;
  hour = std::clamp(hour, -kMostHours, kMostHours);
  return fromMicros(hour * kMicrosPerHour + minute * kMicrosPerMinute + second * kMicrosPerSecond + micros);
}

DateTime DateTime::fromMicros(std::int64_t micros) {
  DateTime result;
  result.m_micros = micros;
  result.m_hasTime = true;
  return result;
}

std::optional<DateTime> DateTime::fromDays(const Number& days) {
  const std::int64_t whole = days.toInt64();
  if (whole < 1 || whole > kLastDay) { return std::nullopt; }
  DateTime result;
  result.m_day = static_cast<std::int32_t>(whole);
  return result;
}

std::optional<DateTime> DateTime::fromSeconds(const Number& secondsSinceMidnight) {
  const auto micros = millionths(secondsSinceMidnight);
  if (!micros) { return std::nullopt; }
  return fromMicros(*micros);
}

std::optional<DateTime> DateTime::fromSecondsSinceEpoch(const Number& seconds) {
  const auto micros = millionths(seconds);
  if (!micros || *micros < 0) { return std::nullopt; }
  auto result = fromDays(Number(*micros / kMicrosPerDay + 1));
  if (result) { result->setTimeOf(fromMicros(*micros % kMicrosPerDay)); }
  return result;
}

std::optional<DateTime> DateTime::combine(const DateTime& date, const DateTime& time) {
  if (!date.hasDate()) { return std::nullopt; }
  std::int64_t carried = time.m_micros / kMicrosPerDay;
  if (time.m_micros % kMicrosPerDay < 0) { --carried; }
  auto result = fromDays(Number(date.m_day + carried));
  if (result) { result->setTimeOf(fromMicros(time.m_micros - carried * kMicrosPerDay)); }
  return result;
}

std::int16_t DateTime::year() const noexcept { return hasDate() ? static_cast<std::int16_t>(dateOf(m_day).year) : 0; }
std::int16_t DateTime::month() const noexcept { return hasDate() ? static_cast<std::int16_t>(dateOf(m_day).month) : 0; }
std::int16_t DateTime::day() const noexcept { return hasDate() ? static_cast<std::int16_t>(dateOf(m_day).day) : 0; }

std::int16_t DateTime::dayOfWeek() const noexcept {
  // Day 1 was a Monday.
  return hasDate() ? static_cast<std::int16_t>(m_day % 7 + 1) : 0;
}

std::int16_t DateTime::dayOfYear() const noexcept {
  return hasDate() ? static_cast<std::int16_t>(m_day - dayOf({dateOf(m_day).year, 1, 1}) + 1) : 0;
}

std::int16_t DateTime::weekOfYear() const noexcept {
  if (!hasDate()) { return 0; }
  const std::int32_t beforeFirst = m_day - dayOfYear() + 1;
  const std::int32_t daysOfWeekBefore = beforeFirst % 7;
  return static_cast<std::int16_t>((dayOfYear() - 1 + daysOfWeekBefore) / 7 + 1);
}

bool DateTime::isLeapYear() const noexcept { return hasDate() && std::chrono::year(year()).is_leap(); }

std::int32_t DateTime::hour() const noexcept { return static_cast<std::int32_t>(m_micros / kMicrosPerHour); }
std::int16_t DateTime::minute() const noexcept {
  return static_cast<std::int16_t>(m_micros % kMicrosPerHour / kMicrosPerMinute);
}
std::int16_t DateTime::second() const noexcept {
  return static_cast<std::int16_t>(m_micros % kMicrosPerMinute / kMicrosPerSecond);
}
std::int32_t DateTime::microsecond() const noexcept { return static_cast<std::int32_t>(m_micros % kMicrosPerSecond); }

Number DateTime::secondsSinceMidnight() const { return secondsOf(m_micros); }

Number DateTime::secondsSinceEpoch() const {
  const std::int64_t daysBefore = hasDate() ? m_day - 1 : 0;
  return secondsOf(daysBefore * kMicrosPerDay + m_micros);
}

void DateTime::setTimeOf(const DateTime& other) noexcept {
  m_micros = other.m_micros;
  m_hasTime = other.m_hasTime;
}

DateTime DateTime::dateOnly() const noexcept {
  DateTime result;
  result.m_day = m_day;
  return result;
}

DateTime DateTime::timeOnly() const noexcept {
  DateTime result;
  result.setTimeOf(*this);
  return result;
}

std::u16string DateTime::dateText() const {
  if (!hasDate()) { return {}; }
  const CivilDate parts = dateOf(m_day);
  std::u16string text;
  text.reserve(10);
  appendPadded(text, parts.year, 4);
  text.push_back(u'-');
  appendPadded(text, parts.month, 2);
  text.push_back(u'-');
  appendPadded(text, parts.day, 2);
  return text;
}

std::u16string DateTime::timeText() const {
  if (isEmpty()) { return {}; }
  const std::int64_t magnitude = m_micros < 0 ? -m_micros : m_micros;
  std::u16string text = m_micros < 0 ? u"-" : u"";
  text.reserve(9);
  appendPadded(text, magnitude / kMicrosPerHour, 2);
  text.push_back(u':');
  appendPadded(text, magnitude % kMicrosPerHour / kMicrosPerMinute, 2);
  text.push_back(u':');
  appendPadded(text, magnitude % kMicrosPerMinute / kMicrosPerSecond, 2);
  if (magnitude % kMicrosPerSecond != 0) {
    text.push_back(u'.');
    appendPadded(text, magnitude % kMicrosPerSecond, 6);
    text.erase(text.find_last_not_of(u'0') + 1);
  }
  return text;
}

std::u16string DateTime::timestampText() const {
  if (!hasDate()) { return timeText(); }
  return dateText() + u" " + timeText();
}

}  // namespace orlocal::host
