#include "host/commands/describing/time_format.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include <fmt/format.h>

#include "base/translation.h"
#include "host/commands/words/date_locale.h"
#include "host/commands/words/date_names.h"
#include "host/commands/words/day_words.h"
#include "store/time/time.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

struct ReadTime {
  LocalTime local;
  std::string_view offset;  ///< "+01:00"; of a day empty
};

int hourOfTwelve(const LocalTime& time) { return (time.hour() + 11) % 12 + 1; }

struct Conversion {
  char letter;
  std::string (*write)(const ReadTime& time);
};
constexpr Conversion kConversions[] = {
    {'Y', [](const ReadTime& time) { return fmt::format("{:04}", time.local.year()); }},
    {'y', [](const ReadTime& time) { return fmt::format("{:02}", (time.local.year() % 100 + 100) % 100); }},
    {'m', [](const ReadTime& time) { return fmt::format("{:02}", time.local.month()); }},
    {'d', [](const ReadTime& time) { return fmt::format("{:02}", time.local.day()); }},
    {'e', [](const ReadTime& time) { return fmt::format("{:2}", time.local.day()); }},
    {'j', [](const ReadTime& time) { return fmt::format("{:03}", cctz::get_yearday(LocalDay(time.local))); }},
    {'V', [](const ReadTime& time) { return fmt::format("{:02}", weekNumber(LocalDay(time.local))); }},
    {'u',
     [](const ReadTime& time) {
       return std::to_string(static_cast<int>(cctz::get_weekday(LocalDay(time.local))) + 1);
     }},
    {'a', [](const ReadTime& time) { return DateNames::ofUser().shortWeekday(LocalDay(time.local)); }},
    {'A', [](const ReadTime& time) { return DateNames::ofUser().weekday(LocalDay(time.local)); }},
    {'b', [](const ReadTime& time) { return DateNames::ofUser().shortMonth(time.local.month()); }},
    {'B', [](const ReadTime& time) { return DateNames::ofUser().month(time.local.month()); }},
    {'H', [](const ReadTime& time) { return fmt::format("{:02}", time.local.hour()); }},
    {'I', [](const ReadTime& time) { return fmt::format("{:02}", hourOfTwelve(time.local)); }},
    {'M', [](const ReadTime& time) { return fmt::format("{:02}", time.local.minute()); }},
    {'S', [](const ReadTime& time) { return fmt::format("{:02}", time.local.second()); }},
    {'p', [](const ReadTime& time) { return std::string(time.local.hour() < 12 ? "AM" : "PM"); }},
    {'F', [](const ReadTime& time) { return isoDay(LocalDay(time.local)); }},
    {'R', [](const ReadTime& time) { return clockTime(time.local); }},
    {'T', [](const ReadTime& time) { return fmt::format("{}:{:02}", clockTime(time.local), time.local.second()); }},
    {'z', [](const ReadTime& time) { return std::string(time.offset); }},
    {'%', [](const ReadTime&) { return std::string("%"); }}};

const Conversion* conversionOf(char letter) {
  const auto* found = std::find_if(std::begin(kConversions), std::end(kConversions),
                                   [&](const Conversion& each) { return each.letter == letter; });
  return found == std::end(kConversions) ? nullptr : found;
}

/// The number at the beginning, which is taken off, and the character `end` behind it.
template <class Number>
bool takeNumber(std::string_view& text, Number& number, char end) {
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) { return false; }
  text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
  if (end == '\0') { return true; }
  if (!text.starts_with(end)) { return false; }
  text.remove_prefix(1);
  return true;
}

std::optional<ReadTime> readTime(std::string_view text) {
  std::int64_t year = 0;
  int month = 0, day = 0, hour = 0, minute = 0, second = 0;
  if (!takeNumber(text, year, '-') || !takeNumber(text, month, '-') || !takeNumber(text, day, '\0')) {
    return std::nullopt;
  }
  if (text.empty()) { return ReadTime{LocalTime(year, month, day), {}}; }
  if (!text.starts_with('T')) { return std::nullopt; }
  text.remove_prefix(1);
  if (!takeNumber(text, hour, ':') || !takeNumber(text, minute, ':') || !takeNumber(text, second, '\0')) {
    return std::nullopt;
  }
  return ReadTime{LocalTime(year, month, day, hour, minute, second), text};
}

}  // namespace

Status checkTimeFormat(std::string_view format) {
  for (std::size_t at = format.find('%'); at < format.size(); at = format.find('%', at + 2)) {
    if (at + 1 < format.size() && conversionOf(format[at + 1]) != nullptr) { continue; }
    std::string known;
    for (const Conversion& each : kConversions) {
      known += fmt::format("{}%{}", known.empty() ? "" : " ", each.letter);
    }
    return failure(ErrorCode::kInvalid, tr("\"{}\" is none of {}", format.substr(at, 2), known));
  }
  return {};
}

std::string formattedTime(std::string_view time, std::string_view format) {
  const auto read = readTime(time);
  if (!read) { return std::string(time); }
  std::string text;
  for (std::size_t at = 0; at < format.size(); ++at) {
    const bool converts = format[at] == '%' && at + 1 < format.size();
    const Conversion* conversion = converts ? conversionOf(format[at + 1]) : nullptr;
    if (conversion == nullptr) {
      text += format[at];
      continue;
    }
    text += conversion->write(*read);
    ++at;
  }
  return text;
}

}  // namespace orlocal::host
