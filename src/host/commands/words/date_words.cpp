#include "host/commands/words/date_words.h"

#include <algorithm>
#include <string>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;

constexpr int kFarthestYear = 9998;

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

Result<LocalDay> readDay(std::string_view text, const WordsSetting& setting) {
  return readWhole<LocalDay>(
      text, setting,
      [](std::string_view said) {
        return tr("\"{}\" is no day; write 2026-11-02, 2.11., 2 nov, monday, tomorrow, in 3 days or +7", said);
      },
      takeDay);
}

bool isShapedLikeDate(std::string_view word) { return isoParts(word) || dottedParts(word) || isSlashed(word); }

}  // namespace orlocal::host
