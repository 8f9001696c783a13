#include "bridge/conversions.h"

#include <charconv>
#include <cstdlib>
#include <limits>
#include <string>
#include <system_error>

#include "backend/value_texts.h"
#include "platform/eventkit.h"
#include "platform/exception.h"
#include "platform/platform.h"
#include "platform/plugin_settings.h"
#include "platform/zone.h"

namespace orlocal {
namespace {

constexpr int kSecondsPerMinute = 60;
constexpr int kSecondsPerHour = 3600;
constexpr char kHostLineEnd = '\r';
constexpr std::size_t kDaysExpected = 8;
constexpr std::size_t kNumbersExpected = 31;

/// The moment that a host's wall clock means `offset` seconds east of Greenwich.
std::optional<Date> dateAtOffset(const HostDateTimeParts& parts, int offset) {
  const char sign = offset > 0 ? '+' : '-';
  const int hours = std::abs(offset / kSecondsPerHour);
  // What is left after whole hours stands where minutes belong, in seconds. Such a text does not parse, and solutions
  // in those zones have come to rely on dates that do not arrive; they come in only where that was asked for.
  const int seconds = std::abs(offset - offset / kSecondsPerHour * kSecondsPerHour);
  const int rest = platform().settings().datesInPartHourZones ? seconds / kSecondsPerMinute : seconds;
  std::string text = std::to_string(parts.year);
  // By hand: a date is set with every event that is saved, and a formatter would be most of the work.
  const auto put = [&text](char before, int number) {
    text += before;
    if (number >= 0 && number < 10) { text += '0'; }
    text += std::to_string(number);
  };
  put('-', parts.month);
  put('-', parts.day);
  put(' ', parts.hour);
  put(':', parts.minute);
  put(':', parts.second);
  text += ' ';
  put(sign, hours);
  if (rest < 10) { text += '0'; }
  text += std::to_string(rest);
  return dateWithString(text);
}

/// Calls `use` with each line of a host list.
template <class Use>
void forEachLine(std::string_view list, const Use& use) {
  for (std::size_t begin = 0; begin <= list.size();) {
    const auto end = std::min(list.find(kHostLineEnd, begin), list.size());
    use(list.substr(begin, end - begin));
    begin = end + 1;
  }
}

void logEmptyObject() { platform().log("Empty object"); }

/// `text` when all of it is a whole number, blanks around it aside; the nearest limit when it is too large to hold.
std::optional<long> wholeNumber(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) { text.remove_prefix(1); }
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) { text.remove_suffix(1); }
  long number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (end != text.data() + text.size()) { return std::nullopt; }
  if (failure == std::errc::result_out_of_range) {
    return text.front() == '-' ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
  }
  return failure == std::errc() ? std::optional(number) : std::nullopt;
}

}  // namespace

OptionalText textArgument(const HostArguments& arguments, std::uint32_t position) {
  return position < arguments.size() ? textOf(arguments.textAt(position)) : std::nullopt;
}

std::int32_t numberArgument(const HostArguments& arguments, std::uint32_t position) {
  return position < arguments.size() ? numberOf(arguments.numberAt(position)) : 0;
}

std::optional<Date> dateArgument(const HostArguments& arguments, std::uint32_t position) {
  if (position >= arguments.size() || isEmpty(arguments.textAt(position))) { return std::nullopt; }
  const fmx::DateTime* timeStamp = arguments.timeStampAt(position);
  if (timeStamp == nullptr) { return std::nullopt; }
  const TimeZone& zone = platform().defaultTimeZone();
  // Today's offset gives a moment near the one that is meant; the offset in force then gives the one that is.
  const auto near = dateAtOffset(partsOf(timeStamp), zone.secondsFromGMT());
  if (!near) { return std::nullopt; }
  return dateAtOffset(partsOf(timeStamp), zone.secondsFromGMTForDate(*near));
}

void AssignStringResult(std::string_view text, fmx::Data* result) {
  HostText hostText;
  hostText.assignUnicode(text);
  setText(result, hostText);
}

std::optional<std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>>> NSStringToNSArrayDOW(const OptionalText& text) {
  if (!text) { return std::nullopt; }
  std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> days;
  days.reserve(kDaysExpected);
  forEachLine(*text, [&days](std::string_view line) {
    try {
      auto day = platform().eventKit().dayOfWeek(integerValue(line), 0);
      if (day) {
        days.push_back(std::move(day));
      } else {
        logEmptyObject();
      }
    } catch (const Exception&) { logEmptyObject(); }
  });
  return days;
}

std::optional<std::vector<long>> NSStringToNSArrayInts(const OptionalText& text) {
  if (!text) { return std::nullopt; }
  std::vector<long> numbers;
  numbers.reserve(kNumbersExpected);
  forEachLine(*text, [&numbers](std::string_view line) {
    if (const auto number = wholeNumber(line)) { numbers.push_back(*number); }
  });
  return numbers;
}

}  // namespace orlocal
