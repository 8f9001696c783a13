#include "store/time/time_text.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include <fmt/format.h>

#include "base/text.h"
#include "store/time/civil_days.h"
#include "store/time/zone.h"

namespace orlocal::store {

namespace {

bool allDigits(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

int numberOf(std::string_view digits) {
  int value = 0;
  for (char c : digits) { value = value * 10 + (c - '0'); }
  return value;
}

}  // namespace

std::optional<CalendarTime> parseTime(std::string_view text) {
  text = trimmed(text);
  CalendarTime time;
  if (text.size() < 8 || !allDigits(text.substr(0, 8))) { return std::nullopt; }
  const int year = numberOf(text.substr(0, 4)), month = numberOf(text.substr(4, 2)), day = numberOf(text.substr(6, 2));
  if (year < 1 || month < 1 || month > 12 || day < 1 || day > monthLength(year, month)) { return std::nullopt; }
  if (text.size() == 8) {
    time.local = LocalTime(year, month, day);
    return time;
  }
  const bool utc = text.size() == 16 && (text[15] == 'Z' || text[15] == 'z');
  if ((text.size() != 15 && !utc) || (text[8] != 'T' && text[8] != 't') || !allDigits(text.substr(9, 6))) {
    return std::nullopt;
  }
  const int hour = numberOf(text.substr(9, 2)), minute = numberOf(text.substr(11, 2));
  const int second = numberOf(text.substr(13, 2));
  if (hour > 23 || minute > 59 || second > 60) { return std::nullopt; }
  time.local = LocalTime(year, month, day, hour, minute, std::min(second, 59));  // a leap second is the one before it
  time.kind = utc ? CalendarTime::Kind::kUtc : CalendarTime::Kind::kFloating;
  return time;
}

std::string timeText(const CalendarTime& time) {
  const LocalTime& at = time.local;
  // Every item of a file is written with some of these: a general formatter would be most of the work.
  std::array<char, sizeof "20261121T090000Z"> text;
  std::size_t size = 0;
  const auto two = [&](std::int64_t value) {
    text[size++] = static_cast<char>('0' + value / 10);
    text[size++] = static_cast<char>('0' + value % 10);
  };
  const bool fourDigits = at.year() >= 0 && at.year() <= 9999;
  if (fourDigits) {
    two(at.year() / 100);
    two(at.year() % 100);
  }
  two(at.month());
  two(at.day());
  if (time.kind != CalendarTime::Kind::kDate) {
    text[size++] = 'T';
    two(at.hour());
    two(at.minute());
    two(at.second());
    if (time.kind == CalendarTime::Kind::kUtc) { text[size++] = 'Z'; }
  }
  return (fourDigits ? std::string() : fmt::format("{:04}", at.year())).append(text.data(), size);
}

std::string momentText(Moment moment) { return timeText({CalendarTime::Kind::kUtc, Zone().toLocal(moment), ""}); }

std::optional<Duration> parseDuration(std::string_view text) {
  text = trimmed(text);
  std::int64_t sign = 1;
  if (text.starts_with('+') || text.starts_with('-')) {
    sign = text.front() == '-' ? -1 : 1;
    text.remove_prefix(1);
  }
  if (text.empty() || (text.front() != 'P' && text.front() != 'p')) { return std::nullopt; }
  text.remove_prefix(1);
  Duration made;
  bool inTime = false, any = false;
  while (!text.empty()) {
    if (text.front() == 'T' || text.front() == 't') {
      if (inTime) { return std::nullopt; }
      inTime = true;
      text.remove_prefix(1);
      continue;
    }
    std::size_t digits = 0;
    while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9') { ++digits; }
    if (digits == 0 || digits > 9 || digits == text.size()) { return std::nullopt; }
    const std::int64_t number = numberOf(text.substr(0, digits));
    switch (asciiLower(text[digits])) {
      case 'w':
        made.days += number * 7;
        break;
      case 'd':
        made.days += number;
        break;
      case 'h':
        made.seconds += number * 3600;
        break;
      case 'm':
        made.seconds += number * 60;
        break;
      case 's':
        made.seconds += number;
        break;
      default:
        return std::nullopt;
    }
    any = true;
    text.remove_prefix(digits + 1);
  }
  // A bare "P" or "PT" is written by some for no length at all.
  if (!any && !inTime) { return std::nullopt; }
  return Duration{sign * made.days, sign * made.seconds};
}

std::string durationText(std::chrono::seconds length) {
  std::int64_t rest = length.count();
  std::string text = rest < 0 ? "-P" : "P";
  rest = rest < 0 ? -rest : rest;
  if (rest != 0 && rest % (7 * kSecondsPerDay) == 0) { return text + fmt::format("{}W", rest / (7 * kSecondsPerDay)); }
  if (rest >= kSecondsPerDay) { text += fmt::format("{}D", rest / kSecondsPerDay); }
  rest %= kSecondsPerDay;
  if (rest == 0 && text.back() == 'D') { return text; }
  text += 'T';
  if (rest >= 3600) { text += fmt::format("{}H", rest / 3600); }
  if (rest % 3600 >= 60) { text += fmt::format("{}M", rest % 3600 / 60); }
  if (rest % 60 != 0 || text.back() == 'T') { text += fmt::format("{}S", rest % 60); }
  return text;
}

std::optional<int> parseOffset(std::string_view text) {
  text = trimmed(text);
  if (text.empty() || (text.front() != '+' && text.front() != '-')) { return std::nullopt; }
  const int sign = text.front() == '-' ? -1 : 1;
  std::string digits;
  for (char c : text.substr(1)) {
    if (c != ':') { digits += c; }
  }
  if (!allDigits(digits) || (digits.size() != 4 && digits.size() != 6)) { return std::nullopt; }
  const int minutes = numberOf(digits.substr(2, 2));
  const int seconds = digits.size() == 6 ? numberOf(digits.substr(4, 2)) : 0;
  const int total = numberOf(digits.substr(0, 2)) * 3600 + minutes * 60 + seconds;
  if (minutes > 59 || seconds > 59 || total >= kSecondsPerDay) { return std::nullopt; }
  return sign * total;
}

std::string offsetText(int seconds) {
  const int size = std::abs(seconds);
  std::string text = fmt::format("{}{:02}{:02}", seconds < 0 ? '-' : '+', size / 3600, size / 60 % 60);
  return size % 60 != 0 ? text + fmt::format("{:02}", size % 60) : text;
}

}  // namespace orlocal::store
