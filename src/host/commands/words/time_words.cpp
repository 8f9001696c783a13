#include "host/commands/words/time_words.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using std::chrono::hours;
using std::chrono::minutes;
using store::LocalDay;

constexpr int kDaysOfWeek = 7;
constexpr int kFarthestYear = 9998;
constexpr int kHoursOfDay = 24;
constexpr int kMinutesOfHour = 60;

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// 0 Sunday to 6 Saturday.
int weekDayOf(LocalDay day) { return (static_cast<int>(cctz::get_weekday(day)) + 1) % kDaysOfWeek; }

/// None when the month has no such day.
std::optional<LocalDay> dayOf(int year, int month, int day) {
  if (year < 1 || year > kFarthestYear || month < 1 || month > 12 || day < 1) { return std::nullopt; }
  const LocalDay made(year, month, day);
  if (made.month() != month || made.day() != day) { return std::nullopt; }
  return made;
}

/// The one of this or a later year that is not over.
std::optional<LocalDay> comingDay(int month, int day, LocalDay today) {
  constexpr int kYearsToLeapDay = 8;
  for (int years = 0; years <= kYearsToLeapDay; ++years) {
    const auto made = dayOf(static_cast<int>(today.year()) + years, month, day);
    if (made && *made >= today) { return made; }
  }
  return std::nullopt;
}

struct DayParts {
  std::optional<int> year;
  int month = 0, day = 0;
};

Result<std::optional<LocalDay>> dayFrom(const WordCursor& words, const DayParts& parts, std::string_view said) {
  const LocalDay today = words.setting().today();
  const auto made = parts.year ? dayOf(*parts.year, parts.month, parts.day) : comingDay(parts.month, parts.day, today);
  if (!made) { return words.refused(tr("\"{}\" is no day of the calendar", said)); }
  return made;
}

/// "2026" or, of a short one, 2026.
std::optional<int> yearFrom(std::string_view digits) {
  constexpr int kThisCentury = 2000;
  if (!isDigits(digits) || (digits.size() != 4 && digits.size() != 2)) { return std::nullopt; }
  return digits.size() == 4 ? wholeNumber(digits) : kThisCentury + *wholeNumber(digits);
}

/// The parts of "2026-11-02" between its dashes, and the like.
std::vector<std::string_view> splitAt(std::string_view word, char separator) {
  std::vector<std::string_view> parts;
  for (;;) {
    const std::size_t end = std::min(word.find(separator), word.size());
    parts.push_back(word.substr(0, end));
    if (end == word.size()) { return parts; }
    word.remove_prefix(end + 1);
  }
}

/// "2026-11-02".
std::optional<DayParts> isoParts(std::string_view word) {
  const auto parts = splitAt(word, '-');
  if (parts.size() != 3 || parts[0].size() != 4 || parts[1].size() != 2 || parts[2].size() != 2) {
    return std::nullopt;
  }
  if (!std::all_of(parts.begin(), parts.end(), isDigits)) { return std::nullopt; }
  return DayParts{*wholeNumber(parts[0]), *wholeNumber(parts[1]), *wholeNumber(parts[2])};
}

/// "2.11.", "2.11.2026".
std::optional<DayParts> dottedParts(std::string_view word) {
  const auto parts = splitAt(word, '.');
  if (parts.size() != 3 || !isDigits(parts[0]) || !isDigits(parts[1])) { return std::nullopt; }
  if (parts[0].size() > 2 || parts[1].size() > 2) { return std::nullopt; }
  const auto year = yearFrom(parts[2]);
  if (!year && !parts[2].empty()) { return std::nullopt; }
  return DayParts{year, *wholeNumber(parts[1]), *wholeNumber(parts[0])};
}

bool isSlashed(std::string_view word) {
  const auto parts = splitAt(word, '/');
  return (parts.size() == 2 || (parts.size() == 3 && yearFrom(parts[2]))) && isDigits(parts[0]) && isDigits(parts[1]) &&
         parts[0].size() <= 2 && parts[1].size() <= 2;
}

/// "11/2", "25/12/2026".
Result<std::optional<LocalDay>> slashedDay(const WordCursor& words, std::string_view word) {
  const auto parts = splitAt(word, '/');
  const int first = *wholeNumber(parts[0]), second = *wholeNumber(parts[1]);
  const auto year = parts.size() == 3 ? yearFrom(parts[2]) : std::nullopt;
  using Slashes = WordsSetting::Slashes;
  Slashes slashes = words.setting().slashes;
  // Where only one of both can be a month, or both are the same, there is nothing to choose.
  if (first > 12 || first == second) { slashes = Slashes::kDayFirst; }
  if (second > 12) { slashes = Slashes::kMonthFirst; }
  if (slashes == Slashes::kUnknown) {
    return words.refused(
        tr("\"{}\" may be two days; write {}.{}. or {}.{}., or 2026-11-02", word, first, second, second, first));
  }
  const bool monthFirst = slashes == Slashes::kMonthFirst;
  return dayFrom(words, {year, monthFirst ? first : second, monthFirst ? second : first}, word);
}

/// "2 nov", "2. november 2026", "nov 2", "november 2nd".
std::optional<DayParts> namedParts(WordCursor& words) {
  const std::size_t begin = words.at();
  const auto takeDayNumber = [&]() -> std::optional<int> {
    std::string_view word = words.next();
    const auto number = takeNumber(word);
    constexpr std::string_view kEnds[] = {"", ".", "st", "nd", "rd", "th"};
    if (!number || std::find(std::begin(kEnds), std::end(kEnds), word) == std::end(kEnds)) { return std::nullopt; }
    words.take();
    return number;
  };
  auto day = takeDayNumber();
  const auto month = words.take(Term::kMonth);
  if (month && !day) { day = takeDayNumber(); }
  if (!month || !day) {
    words.moveTo(begin);
    return std::nullopt;
  }
  DayParts parts{std::nullopt, *month, *day};
  if (const std::string_view year = words.next(); year.size() == 4 && isDigits(year)) {
    parts.year = wholeNumber(year);
    words.take();
  }
  return parts;
}

/// "three", "3".
std::optional<int> takeCount(WordCursor& words) {
  if (const auto number = wholeNumber(words.next())) {
    words.take();
    return number;
  }
  return words.take(Term::kNumber);
}

/// "in 3 days", "next friday", "this friday", "next week".
std::optional<LocalDay> relativeDay(WordCursor& words) {
  const std::size_t begin = words.at();
  const LocalDay today = words.setting().today();
  const int sinceMonday = (weekDayOf(today) + kDaysOfWeek - 1) % kDaysOfWeek;
  if (words.take(Term::kIn)) {
    const auto count = takeCount(words);
    const auto unit = count ? words.take(Term::kUnit) : std::nullopt;
    if (unit && *unit >= static_cast<int>(Unit::kDay)) { return later(today, *count, static_cast<Unit>(*unit)); }
  } else if (words.take(Term::kNext)) {
    if (const auto weekDay = words.take(Term::kWeekDay)) {
      return today - sinceMonday + kDaysOfWeek + (*weekDay + kDaysOfWeek - 1) % kDaysOfWeek;
    }
    const auto unit = words.take(Term::kUnit);
    if (unit && *unit >= static_cast<int>(Unit::kDay)) { return later(today, 1, static_cast<Unit>(*unit)); }
  } else {
    words.take(Term::kThis);
    if (const auto weekDay = words.take(Term::kWeekDay)) {
      return today + (*weekDay - weekDayOf(today) + kDaysOfWeek) % kDaysOfWeek;
    }
  }
  words.moveTo(begin);
  return std::nullopt;
}

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

/// Of a whole text; `refusal` tells of the words that were not understood.
template <class Value, class Refusal, class Take>
Result<Value> readAll(std::string_view text, const WordsSetting& setting, Refusal refusal, Take take) {
  WordCursor words(text, setting);
  ORLOCAL_TRY(const auto value, take(words));
  if (value && words.done()) { return *value; }
  return words.refused(refusal(text.substr(std::min(words.place(), text.size()))));
}

}  // namespace

LocalDay later(LocalDay day, int count, Unit unit) {
  switch (unit) {
    case Unit::kWeek:
      return day + count * kDaysOfWeek;
    case Unit::kMonth:
    case Unit::kYear: {
      const cctz::civil_month month = cctz::civil_month(day) + (unit == Unit::kYear ? count * 12 : count);
      const int lastDay = (LocalDay(month + 1) - 1).day();
      return LocalDay(month) + std::min(day.day(), lastDay) - 1;
    }
    default:
      return day + count;
  }
}

Result<std::optional<LocalDay>> takeDay(WordCursor& words) {
  const std::size_t begin = words.at();
  const LocalDay today = words.setting().today();
  if (const auto named = words.take(Term::kDayFromToday)) { return today + *named; }
  const std::string_view word = words.next();
  if (word.size() > 1 && (word.front() == '+' || word.front() == '-') && isDigits(word.substr(1))) {
    const auto found = dayFromWords(word, today);
    if (!found) { return words.refused(tr("\"{}\" is too far away", word)); }
    words.take();
    return found;
  }
  auto parts = isoParts(word);
  if (!parts) { parts = dottedParts(word); }
  if (parts) {
    ORLOCAL_TRY(const auto day, dayFrom(words, *parts, word));
    words.take();
    return day;
  }
  if (isSlashed(word)) {
    ORLOCAL_TRY(const auto day, slashedDay(words, word));
    words.take();
    return day;
  }
  if (const auto named = namedParts(words)) {
    const std::size_t end = words.at();
    words.moveTo(begin);
    const std::size_t from = words.place(), to = words.words()[end - 1].end;
    ORLOCAL_TRY(const auto day, dayFrom(words, *named, words.text().substr(from, to - from)));
    words.moveTo(end);
    return day;
  }
  return relativeDay(words);
}

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

Result<LocalDay> readDay(std::string_view text, const WordsSetting& setting) {
  return readAll<LocalDay>(
      text, setting,
      [](std::string_view said) {
        return tr("\"{}\" is no day; write 2026-11-02, 2.11., 2 nov, monday, tomorrow, in 3 days or +7", said);
      },
      takeDay);
}

Result<TimeOfDay> readTime(std::string_view text, const WordsSetting& setting) {
  return readAll<TimeOfDay>(
      text, setting,
      [](std::string_view said) { return tr("\"{}\" is no time of day; write 12:30, 9am, noon or 14h", said); },
      [](WordCursor& words) {
        words.take(Term::kAt);
        return takeTime(words, true);
      });
}

Result<Length> readLength(std::string_view text, const WordsSetting& setting) {
  return readAll<Length>(
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
  return isoParts(whole) || dottedParts(whole) || isSlashed(whole);
}

}  // namespace orlocal::host
