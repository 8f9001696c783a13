#include "platform/date.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

#include "base/civil_date.h"

namespace orlocal {
namespace {

using std::chrono::days;
using std::chrono::seconds;

constexpr std::int64_t kSecondsPerDay = 86'400;
/// Beyond it a moment in microseconds has no room.
constexpr std::int64_t kLastYear = 250'000;
constexpr std::size_t kMostYearDigits = 6;

bool isDigit(char c) { return c >= '0' && c <= '9'; }

/// Whether the text that follows a year has the marks of "-03-09 02:30:00 -0500".
bool hasMarks(std::string_view text) {
  return text.size() == 21 && text[0] == '-' && text[3] == '-' && text[6] == ' ' && text[9] == ':' && text[12] == ':' &&
         text[15] == ' ' && (text[16] == '+' || text[16] == '-');
}

/// The number that two digits make; none reads as -1.
int pairAt(std::string_view text, std::size_t at) {
  return isDigit(text[at]) && isDigit(text[at + 1]) ? (text[at] - '0') * 10 + (text[at + 1] - '0') : -1;
}

constexpr bool isWithin(int value, int low, int high) { return value >= low && value <= high; }

/// Fills a buffer that has room for every date there is: a formatted date is asked for with every property that is one.
class Writer {
 public:
  explicit Writer(char* to) : m_to(to) {}
  void put(char c) { *m_to++ = c; }
  void pair(int value) {
    put(static_cast<char>('0' + value / 10));
    put(static_cast<char>('0' + value % 10));
  }
  /// At least four digits.
  void year(std::int64_t value) {
    if (value < 0) { put('-'); }
    value = std::abs(value);
    if (value < 10000) {
      pair(static_cast<int>(value) / 100);
      pair(static_cast<int>(value) % 100);
    } else {
      m_to = std::to_chars(m_to, m_to + std::numeric_limits<std::int64_t>::digits10 + 1, value).ptr;
    }
  }
  char* end() const { return m_to; }

 private:
  char* m_to;
};

}  // namespace

Date distantPast() { return Date(days(dayNumberOf({1, 1, 1}))); }

Date distantFuture() { return Date(days(dayNumberOf({4001, 1, 1}))); }

std::optional<Date> dateWithString(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative) { text.remove_prefix(1); }
  std::int64_t year = 0;
  std::size_t digits = 0;
  for (; digits < text.size() && digits < kMostYearDigits && isDigit(text[digits]); ++digits) {
    year = year * 10 + (text[digits] - '0');
  }
  text.remove_prefix(digits);
  if (digits == 0 || year > kLastYear || !hasMarks(text)) { return std::nullopt; }
  if (negative) { year = -year; }
  const int month = pairAt(text, 1), day = pairAt(text, 4);
  if (!isWithin(month, 1, 12) || !isWithin(day, 1, monthLength(year, month))) { return std::nullopt; }
  const int hour = pairAt(text, 7), minute = pairAt(text, 10), second = pairAt(text, 13);
  if (!isWithin(hour, 0, 23) || !isWithin(minute, 0, 59) || !isWithin(second, 0, 59)) { return std::nullopt; }
  const int offsetHours = pairAt(text, 17), offsetMinutes = pairAt(text, 19);
  if (!isWithin(offsetHours, 0, 23) || !isWithin(offsetMinutes, 0, 59)) { return std::nullopt; }

  const std::int64_t offset = (offsetHours * 3600 + offsetMinutes * 60) * (text[16] == '-' ? -1 : 1);
  return Date(seconds(dayNumberOf({year, month, day}) * kSecondsPerDay + hour * 3600 + minute * 60 + second - offset));
}

std::string formatDate(Date date, int offsetSeconds) {
  const CivilDateTime local =
      civilDateTimeOf(std::chrono::floor<seconds>(date).time_since_epoch().count() + offsetSeconds);
  const int offsetMinutes = std::abs(offsetSeconds) / 60;

  std::array<char, 48> text;
  Writer out(text.data());
  out.year(local.date.year);
  out.put('-');
  out.pair(local.date.month);
  out.put('-');
  out.pair(local.date.day);
  out.put(' ');
  out.pair(local.hour);
  out.put(':');
  out.pair(local.minute);
  out.put(':');
  out.pair(local.second);
  out.put(' ');
  out.put(offsetSeconds < 0 ? '-' : '+');
  out.pair(offsetMinutes / 60);
  out.pair(offsetMinutes % 60);
  return {text.data(), out.end()};
}

}  // namespace orlocal
