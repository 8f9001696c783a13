#include "platform/date.h"

#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <iterator>

#include "base/civil_date.h"

namespace orlocal {
namespace {

using std::chrono::days;
using std::chrono::seconds;

constexpr std::int64_t kSecondsPerDay = 86'400;
/// Beyond it a moment in microseconds has no room.
constexpr std::int64_t kLastYear = 250'000;

/// Reads fields off the front of a text.
class Reader {
 public:
  explicit Reader(std::string_view text) : m_rest(text) {}

  bool literal(char c) {
    if (m_rest.empty() || m_rest.front() != c) { return false; }
    m_rest.remove_prefix(1);
    return true;
  }

  std::optional<std::int64_t> digits(std::size_t fewest, std::size_t most) {
    std::int64_t value = 0;
    std::size_t count = 0;
    for (; count < most && count < m_rest.size() && m_rest[count] >= '0' && m_rest[count] <= '9'; ++count) {
      value = value * 10 + (m_rest[count] - '0');
    }
    if (count < fewest) { return std::nullopt; }
    m_rest.remove_prefix(count);
    return value;
  }

  /// Two digits from `low` to `high`; refused when not.
  bool pair(int low, int high, int& value) {
    if (m_rest.size() < 2) { return false; }
    const int tens = m_rest[0] - '0';
    const int ones = m_rest[1] - '0';
    value = tens * 10 + ones;
    m_rest.remove_prefix(2);
    return tens >= 0 && tens <= 9 && ones >= 0 && ones <= 9 && value >= low && value <= high;
  }

  bool atEnd() const { return m_rest.empty(); }

 private:
  std::string_view m_rest;
};

/// Fills a buffer that holds every date there is: a formatted date is asked for with every property that is one.
class Writer {
 public:
  void put(char c) { m_text[m_size++] = c; }
  /// Two digits.
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
      m_size = static_cast<std::size_t>(std::to_chars(m_text + m_size, std::end(m_text), value).ptr - m_text);
    }
  }
  std::string text() const { return {m_text, m_size}; }

 private:
  char m_text[48];
  std::size_t m_size = 0;
};

}  // namespace

Date distantPast() { return Date(days(dayNumberOf({1, 1, 1}))); }

Date distantFuture() { return Date(days(dayNumberOf({4001, 1, 1}))); }

std::optional<Date> dateWithString(std::string_view text) {
  Reader in(text);
  const bool negative = in.literal('-');
  const auto digits = in.digits(1, 6);
  if (!digits || *digits > kLastYear || !in.literal('-')) { return std::nullopt; }
  const std::int64_t year = negative ? -*digits : *digits;
  int month = 0, day = 0, hour = 0, minute = 0, second = 0, offsetHours = 0, offsetMinutes = 0;
  const bool dateReads = in.pair(1, 12, month) && in.literal('-') && in.pair(1, monthLength(year, month), day);
  if (!dateReads || !in.literal(' ')) { return std::nullopt; }
  const bool timeReads =
      in.pair(0, 23, hour) && in.literal(':') && in.pair(0, 59, minute) && in.literal(':') && in.pair(0, 59, second);
  if (!timeReads || !in.literal(' ')) { return std::nullopt; }
  const bool west = in.literal('-');
  if (!west && !in.literal('+')) { return std::nullopt; }
  if (!in.pair(0, 23, offsetHours) || !in.pair(0, 59, offsetMinutes) || !in.atEnd()) { return std::nullopt; }

  const std::int64_t offset = (offsetHours * 3600 + offsetMinutes * 60) * (west ? -1 : 1);
  return Date(seconds(dayNumberOf({year, month, day}) * kSecondsPerDay + hour * 3600 + minute * 60 + second - offset));
}

std::string formatDate(Date date, int offsetSeconds) {
  const std::int64_t local =
      std::chrono::floor<seconds>(date).time_since_epoch().count() + static_cast<std::int64_t>(offsetSeconds);
  const std::int64_t dayCount = floorDiv(local, kSecondsPerDay);
  const auto ofDay = static_cast<int>(local - dayCount * kSecondsPerDay);
  const CivilDate civil = civilDateOf(dayCount);
  const int offsetMinutes = std::abs(offsetSeconds) / 60;

  Writer out;
  out.year(civil.year);
  out.put('-');
  out.pair(civil.month);
  out.put('-');
  out.pair(civil.day);
  out.put(' ');
  out.pair(ofDay / 3600);
  out.put(':');
  out.pair(ofDay / 60 % 60);
  out.put(':');
  out.pair(ofDay % 60);
  out.put(' ');
  out.put(offsetSeconds < 0 ? '-' : '+');
  out.pair(offsetMinutes / 60);
  out.pair(offsetMinutes % 60);
  return out.text();
}

}  // namespace orlocal
