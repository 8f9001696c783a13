// Reading the dates and times that users type.
#include <algorithm>
#include <optional>

#include "base/civil_date.h"
#include "base/text.h"
#include "host/fmwrapper/date_time.h"

namespace orlocal::host {

namespace {

bool isBlank(char16_t unit) {
  // Systems put a narrow no-break space before AM and PM.
  return unit == u' ' || unit == u'\t' || unit == u'\r' || unit == u'\n' || unit == u'\u00A0' || unit == u'\u202F';
}

/// Walks a text from the front; what cannot be read is left where it is.
class Scanner {
 public:
  explicit Scanner(std::u16string_view text) : m_rest(text) { skipBlanks(); }

  bool atEnd() const { return m_rest.empty(); }
  char16_t peek() const { return m_rest.empty() ? u'\0' : m_rest.front(); }

  void skipBlanks() {
    while (!m_rest.empty() && isBlank(m_rest.front())) { m_rest.remove_prefix(1); }
  }

  bool accept(char16_t unit) {
    if (peek() != unit || m_rest.empty()) { return false; }
    m_rest.remove_prefix(1);
    return true;
  }

  /// A word in small ASCII letters, in whatever case it stands there.
  bool acceptWord(std::u16string_view word) {
    if (m_rest.size() < word.size()) { return false; }
    if (!std::equal(word.begin(), word.end(), m_rest.begin(),
                    [](char16_t w, char16_t t) { return w == asciiLower(t); })) {
      return false;
    }
    m_rest.remove_prefix(word.size());
    return true;
  }

  /// Digits up to a length that no part of a date exceeds; `length` tells how many there were.
  std::optional<std::int64_t> number(std::size_t* length = nullptr) {
    constexpr std::size_t kLongest = 9;
    std::size_t count = 0;
    std::int64_t value = 0;
    while (count < m_rest.size() && m_rest[count] >= u'0' && m_rest[count] <= u'9') {
      if (count == kLongest) { return std::nullopt; }
      value = value * 10 + (m_rest[count++] - u'0');
    }
    if (count == 0) { return std::nullopt; }
    m_rest.remove_prefix(count);
    if (length != nullptr) { *length = count; }
    return value;
  }

  /// Digits behind a decimal point as microseconds; those past the sixth are dropped.
  std::optional<std::int64_t> fraction() {
    std::int64_t micros = 0;
    std::int64_t weight = 100'000;
    bool any = false;
    for (; peek() >= u'0' && peek() <= u'9'; m_rest.remove_prefix(1), weight /= 10, any = true) {
      micros += (peek() - u'0') * weight;
    }
    return any ? std::optional(micros) : std::nullopt;
  }

 private:
  std::u16string_view m_rest;
};

/// Two digits name the year of that ending from 70 years back to 30 ahead.
std::int64_t fullYear(std::int64_t ending) {
  const std::int64_t current = DateTime::now().year();
  std::int64_t year = current / 100 * 100 + ending;
  if (year > current + 30) { year -= 100; }
  if (year < current - 70) { year += 100; }
  return year;
}

std::optional<DateTime> existingDate(std::int64_t year, std::int64_t month, std::int64_t day) {
  if (year < 1 || year > 4000 || month < 1 || month > 12) { return std::nullopt; }
  if (day < 1 || day > monthLength(year, static_cast<int>(month))) { return std::nullopt; }
  return DateTime::fromDate(year, month, day);
}

/// Three numbers between equal separators, the year first when it has more than two digits; or month and day.
std::optional<DateTime> scanDate(Scanner& scanner) {
  std::size_t length = 0;
  const auto first = scanner.number(&length);
  const char16_t separator = scanner.peek();
  if (!first || (separator != u'-' && separator != u'/' && separator != u'.')) { return std::nullopt; }
  scanner.accept(separator);
  const auto second = scanner.number();
  if (!second) { return std::nullopt; }
  const bool yearLeads = length > 2;
  if (!scanner.accept(separator)) {
    // A point between two numbers is a decimal's, not a date's.
    if (yearLeads || separator == u'.') { return std::nullopt; }
    return existingDate(DateTime::now().year(), *first, *second);
  }
  const auto third = scanner.number(&length);
  if (!third) { return std::nullopt; }
  if (yearLeads) { return existingDate(*first, *second, *third); }
  return existingDate(length <= 2 ? fullYear(*third) : *third, *first, *second);
}

/// Hours, minutes, seconds, a fraction, AM or PM; only the hours must be there.
std::optional<DateTime> scanTime(Scanner& scanner) {
  const bool negative = scanner.accept(u'-');
  const auto hours = scanner.number();
  if (!hours) { return std::nullopt; }
  std::int64_t minutes = 0;
  std::int64_t seconds = 0;
  std::int64_t micros = 0;
  if (scanner.accept(u':')) {
    const auto read = scanner.number();
    if (!read || *read > 59) { return std::nullopt; }
    minutes = *read;
    if (scanner.accept(u':')) {
      const auto readSeconds = scanner.number();
      if (!readSeconds || *readSeconds > 59) { return std::nullopt; }
      seconds = *readSeconds;
      if (scanner.accept(u'.') || scanner.accept(u',')) {
        const auto fraction = scanner.fraction();
        if (!fraction) { return std::nullopt; }
        micros = *fraction;
      }
    }
  }
  std::int64_t hour = *hours;
  Scanner behind = scanner;
  behind.skipBlanks();
  const bool morning = behind.acceptWord(u"am");
  if (morning || behind.acceptWord(u"pm")) {
    if (negative || hour < 1 || hour > 12) { return std::nullopt; }
    hour = hour % 12 + (morning ? 0 : 12);
    scanner = behind;
  }
  const DateTime time = DateTime::fromTime(hour, minutes, seconds, micros);
  return negative ? DateTime::fromMicros(-time.micros()) : time;
}

/// "Z", "+0100", "-05:00": the zone that a text was written in.
bool skipOffset(Scanner& scanner) {
  if (scanner.accept(u'Z') || scanner.accept(u'z')) { return true; }
  if (!scanner.accept(u'+') && !scanner.accept(u'-')) { return false; }
  std::size_t length = 0;
  if (!scanner.number(&length)) { return false; }
  if (length == 4) { return true; }
  return length == 2 && (!scanner.accept(u':') || (scanner.number(&length) && length == 2));
}

}  // namespace

std::optional<DateTime> DateTime::parseTimestamp(std::u16string_view text) {
  Scanner scanner(text);
  const auto date = scanDate(scanner);
  if (!date) { return std::nullopt; }
  const bool marked = scanner.accept(u'T') || scanner.accept(u't');
  scanner.skipBlanks();
  if (scanner.atEnd() && !marked) { return combine(*date, fromMicros(0)); }
  if (scanner.peek() == u'-') { return std::nullopt; }
  const auto time = scanTime(scanner);
  if (!time || time->micros() > kMicrosPerDay) { return std::nullopt; }
  scanner.skipBlanks();
  if (!scanner.atEnd() && !skipOffset(scanner)) { return std::nullopt; }
  scanner.skipBlanks();
  if (!scanner.atEnd()) { return std::nullopt; }
  return combine(*date, *time);
}

std::optional<DateTime> DateTime::parseDate(std::u16string_view text) { return parseTimestamp(text); }

std::optional<DateTime> DateTime::parseTime(std::u16string_view text) {
  Scanner scanner(text);
  const auto time = scanTime(scanner);
  scanner.skipBlanks();
  if (time && scanner.atEnd()) { return time; }
  auto timestamp = parseTimestamp(text);
  if (!timestamp) { return std::nullopt; }
  return timestamp->timeOnly();
}

}  // namespace orlocal::host
