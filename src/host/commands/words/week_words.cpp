#include "host/commands/words/week_words.h"

#include <algorithm>
#include <string>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/words/date_names.h"

namespace orlocal::host {
namespace {

constexpr int kDaysInWeek = 7;
constexpr std::string_view kDash = "\xe2\x80\x93";

/// "mon" or "mon-fri".
std::optional<WeekDays> daysFrom(std::string_view part, const WordsSetting& setting) {
  std::size_t dash = part.find('-');
  std::size_t dashLength = 1;
  if (dash == std::string_view::npos) {
    dash = part.find(kDash);
    dashLength = kDash.size();
  }
  const auto first = valueOf(part.substr(0, dash), Term::kWeekDay, setting);
  const auto last =
      dash == std::string_view::npos ? first : valueOf(part.substr(dash + dashLength), Term::kWeekDay, setting);
  if (!first || !last) { return std::nullopt; }
  WeekDays days;
  // Over the weekend where the last comes before the first: "fri-mon".
  for (int day = *first;; day = (day + 1) % kDaysInWeek) {
    days.set(static_cast<std::size_t>(day));
    if (day == *last) { return days; }
  }
}

/// Several in one word: "mon,wed-fri".
std::optional<WeekDays> daysInWord(std::string_view word, const WordsSetting& setting) {
  WeekDays days;
  while (!word.empty()) {
    const std::string_view part = word.substr(0, word.find(','));
    const auto some = daysFrom(part, setting);
    if (!some) { return std::nullopt; }
    days |= *some;
    word.remove_prefix(std::min(part.size() + 1, word.size()));
  }
  return days;
}

}  // namespace

std::size_t placeInWeek(store::LocalDay day) {
  // cctz counts from Monday.
  return (static_cast<std::size_t>(cctz::get_weekday(day)) + 1) % kDaysInWeek;
}

Result<WeekDays> readWeekDays(std::string_view text, const WordsSetting& setting) {
  WordCursor words(text, setting);
  WeekDays days;
  while (!words.done()) {
    if (days.any()) { words.take(Term::kAnd); }
    if (words.take(Term::kWeekdays)) {
      for (std::size_t day = 1; day <= 5; ++day) { days.set(day); }
      continue;
    }
    const auto first = daysInWord(words.next(), setting);
    if (!first || first->none()) { break; }
    words.take();
    days |= *first;
  }
  if (days.any() && words.done()) { return days; }
  return words.refused(tr("These are no weekdays; write mon-fri, mon,wed or weekdays"));
}

Result<TimeRange> readHours(std::string_view text, const WordsSetting& setting) {
  WordCursor words(text, setting);
  ORLOCAL_TRY(const auto range, takeRange(words));
  if (!range || !words.done()) { return words.refused(tr("These are no hours; write 9-17 or 9:00-12:30")); }
  if (range->start == range->end) { return words.refusedAt(0, tr("These hours end when they begin; write 9-17")); }
  return *range;
}

std::string weekDaysInWords(WeekDays days) {
  // A week begins with Monday here.
  const store::LocalDay monday(2026, 11, 2);
  const auto has = [&](int place) { return place < kDaysInWeek && days.test(placeInWeek(monday + place)); };
  const auto name = [&](int place) { return DateNames::ofUser().shortWeekday(monday + place); };
  std::string text;
  for (int first = 0; first < kDaysInWeek; ++first) {
    if (!has(first)) { continue; }
    int last = first;
    while (has(last + 1)) { ++last; }
    text += (text.empty() ? "" : ", ") + name(first);
    if (last > first) { text += (last == first + 1 ? ", " : std::string(kDash)) + name(last); }
    first = last;
  }
  return text;
}

}  // namespace orlocal::host
