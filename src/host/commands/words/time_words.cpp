#include "host/commands/words/time_words.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/words/date_words.h"

namespace orlocal::host {
namespace {

using std::chrono::hours;
using std::chrono::minutes;

constexpr int kHoursOfDay = 24;
constexpr int kMinutesOfHour = 60;

/// "12:30", "9", "14h", "9am", "9:30pm" of one word.
struct ClockWord {
  int hour = 0, minute = 0;
  bool withMinutes = false, withHours = false;  ///< "12:30"; "14h"
  std::optional<int> half;                      ///< am: 0, pm: 12
};

std::optional<ClockWord> clockWord(std::string_view word, const WordsSetting& setting) {
  ClockWord clock;
  const auto hour = takeNumber(word);
  if (!hour) { return std::nullopt; }
  clock.hour = *hour;
  if (word.starts_with(':')) {
    word.remove_prefix(1);
    const std::size_t before = word.size();
    const auto minute = takeNumber(word);
    if (!minute || before - word.size() != 2) { return std::nullopt; }
    clock.minute = *minute;
    clock.withMinutes = true;
  } else if (word == "h") {
    clock.withHours = true;
    return clock;
  }
  if (!word.empty()) {
    WordsSetting english = setting;
    english.german = false;
    clock.half = valueOf(word, Term::kHalfOfDay, english);
    if (!clock.half) { return std::nullopt; }
  }
  return clock;
}

Result<TimeOfDay> timeFrom(const WordCursor& words, std::size_t word, const ClockWord& clock) {
  const std::string_view said = words.words()[word].folded;
  const bool isMidnight = clock.hour == kHoursOfDay && clock.minute == 0;
  const bool hourFits = clock.half ? clock.hour >= 1 && clock.hour <= 12 : clock.hour < kHoursOfDay || isMidnight;
  if (!hourFits || clock.minute >= kMinutesOfHour) {
    return words.refusedAt(word, tr("\"{}\" is no time of day", said));
  }
  const int hour = clock.half ? clock.hour % 12 + *clock.half : clock.hour;
  return TimeOfDay(hours(hour) + minutes(clock.minute));
}

/// The length that one word says: "1h30m", "90m", "1h", "2d".
std::optional<Length> lengthWord(std::string_view word, const WordsSetting& setting) {
  Length length;
  if (word.empty()) { return std::nullopt; }
  while (!word.empty()) {
    const auto number = takeNumber(word);
    if (!number || *number > 100'000) { return std::nullopt; }
    const std::size_t end = std::min(word.find_first_of("0123456789"), word.size());
    const auto unit = valueOf(word.substr(0, end), Term::kUnit, setting);
    if (!unit) { return std::nullopt; }
    switch (static_cast<Unit>(*unit)) {
      case Unit::kMinute:
        length.minutes += minutes(*number);
        break;
      case Unit::kHour:
        length.minutes += hours(*number);
        break;
      case Unit::kDay:
        length.days += *number;
        break;
      case Unit::kWeek:
        length.days += *number * kDaysOfWeek;
        break;
      default:
        return std::nullopt;
    }
    word.remove_prefix(end);
  }
  return length;
}

}  // namespace

Result<std::optional<TimeOfDay>> takeTime(WordCursor& words, bool afterAt) {
  if (const auto named = words.take(Term::kTimeOfDay)) { return TimeOfDay(*named); }
  const std::size_t begin = words.at();
  auto clock = clockWord(words.next(), words.setting());
  if (!clock) { return std::nullopt; }
  words.take();
  if (!clock->half && !clock->withHours) {
    if (words.take(Term::kClock)) {
      clock->withHours = true;
    } else if (const auto half =
                   words.next() == "am" || words.next() == "pm" ? words.take(Term::kHalfOfDay) : std::nullopt) {
      clock->half = half;
    }
  }
  // "1h" by itself is a length.
  const bool twoDigits = words.words()[begin].folded.size() >= 3;
  const bool isTime =
      clock->withMinutes || clock->half || afterAt || (clock->withHours && (words.at() > begin + 1 || twoDigits));
  if (!isTime) {
    words.moveTo(begin);
    return std::nullopt;
  }
  ORLOCAL_TRY(const TimeOfDay time, timeFrom(words, begin, *clock));
  return time;
}

Result<std::optional<TimeRange>> takeRange(WordCursor& words) {
  const std::size_t begin = words.at();
  // In one word.
  std::string_view word = words.next();
  std::size_t dash = word.find('-');
  std::size_t dashLength = 1;
  if (dash == std::string_view::npos) {
    dash = word.find("\xe2\x80\x93");
    dashLength = 3;
  }
  if (dash != std::string_view::npos && dash > 0) {
    const auto from = clockWord(word.substr(0, dash), words.setting());
    const auto to = clockWord(word.substr(dash + dashLength), words.setting());
    if (!from || !to) { return std::nullopt; }
    ClockWord start = *from;
    // "2-3pm": both in the afternoon.
    if (to->half && !start.half && !start.withMinutes && start.hour < to->hour) { start.half = to->half; }
    ORLOCAL_TRY(const TimeOfDay first, timeFrom(words, begin, start));
    ORLOCAL_TRY(const TimeOfDay last, timeFrom(words, begin, *to));
    words.take();
    words.take(Term::kClock);
    return TimeRange{first, last};
  }
  // In several: after "from" numbers alone are hours.
  const bool marked = words.take(Term::kFrom).has_value();
  ORLOCAL_TRY(const auto start, takeTime(words, marked));
  if (start && words.take(Term::kTo)) {
    ORLOCAL_TRY(const auto end, takeTime(words, true));
    if (end) { return TimeRange{*start, *end}; }
  }
  words.moveTo(begin);
  return std::nullopt;
}

Result<std::optional<Length>> takeLength(WordCursor& words) {
  const std::size_t begin = words.at();
  Length length;
  bool any = false;
  for (;;) {
    std::string one(words.next());
    std::size_t taken = 1;
    if (!lengthWord(one, words.setting())) {
      // "2 hours", "an hour".
      auto number = wholeNumber(one);
      if (!number) { number = valueOf(one, Term::kNumber, words.setting()); }
      if (!number) { break; }
      one = std::to_string(*number) + std::string(words.next(1));
      taken = 2;
    }
    const auto read = lengthWord(one, words.setting());
    if (!read) { break; }
    length.days += read->days;
    length.minutes += read->minutes;
    words.take(taken);
    any = true;
  }
  if (!any) {
    words.moveTo(begin);
    return std::nullopt;
  }
  return length;
}

Result<TimeOfDay> readTime(std::string_view text, const WordsSetting& setting) {
  return readWhole<TimeOfDay>(
      text, setting,
      [](std::string_view said) { return tr("\"{}\" is no time of day; write 12:30, 9am, noon or 14h", said); },
      [](WordCursor& words) {
        words.take(Term::kAt);
        return takeTime(words, true);
      });
}

Result<Length> readLength(std::string_view text, const WordsSetting& setting) {
  return readWhole<Length>(
      text, setting,
      [](std::string_view said) { return tr("\"{}\" is no length; write 1h, 1h30m, 90m or 2 days", said); },
      takeLength);
}

bool isShapedLikeTime(std::string_view word) {
  const std::string_view whole = word;
  const auto number = takeNumber(word);
  if (!number) { return false; }
  if (word.starts_with(':')) {
    word.remove_prefix(1);
    return takeNumber(word).has_value();
  }
  return isShapedLikeDate(whole);
}

}  // namespace orlocal::host
